// Batches against single cases and the plain definition, to the last bit.
#include <algorithm>
#include <limits>
#include <numeric>
#include <random>

#include <gtest/gtest.h>

#include "host/model/instruction_set.h"
#include "tests/model/model_fixture.h"

namespace {

using namespace svmscore_test;  // NOLINT
using Columns = std::vector<double>;

enum class Scheme { kRegression, kBinary, kSigmoid, kVotes, kCoupled, kOneAgainstAll };

// Models of 40 random vectors in which every machine uses most of them.
struct Random {
  std::unique_ptr<SVMModel> Model(Scheme scheme, SVMConst::KernelFunctionType kernel) {
    const int categories = scheme <= Scheme::kSigmoid ? 2 : 4;
    Classifier classifier(static_cast<std::size_t>(categories));
    SVMModelData& data = *classifier.data;
    if (scheme == Scheme::kOneAgainstAll) {
      for (int i = 0; i < categories; ++i) classifier.Add(i, -1);
    } else {
      classifier.AddPairs(categories, scheme == Scheme::kSigmoid || scheme == Scheme::kCoupled);
    }
    while (data.GetVectorFields().size() < 5) {
      const std::string name = Numbered("x", data.GetVectorFields().size());
      classifier.dictionary->AddVar(NumberVar(name));
      data.AddFieldRef(name, "");
    }
    data.SetFunctionName(scheme != Scheme::kRegression);
    data.SetClassificationMethod(scheme == Scheme::kOneAgainstAll);
    data.SetAppendProbability(true);
    data.SetSVMKernelType(kernel);
    data.SetSVMKernelTypeGamma(0.3);
    data.SetSVMKernelTypeCoef0(0.7);
    data.SetSVMKernelTypeDegree(3);
    for (std::size_t v = 0; v < 40; ++v) AddVector(data, Numbered("random", v));
    for (Machine* machine : data.GetSupportVectorMachines()) Fill(*machine, data);
    last = &data;
    return classifier.Model();
  }
  SVMModelData* last = nullptr;  // of the last model
  double Number() { return std::normal_distribution<>()(generator); }

 private:
  void AddVector(SVMModelData& data, const std::string& id) {
    std::vector<int> indices;
    Columns values;
    for (int f = 1; f <= static_cast<int>(data.GetVectorFields().size()); ++f) {
      if (f > 1 && generator() % 3 == 0) continue;
      indices.push_back(f);
      values.push_back(Number());
    }
    data.AddVectorInstance(id, indices, values);
  }
  void Fill(Machine& machine, const SVMModelData& data) {
    machine.absolute_value = Number();
    if (machine.extension != nullptr) machine.extension->standard_deviation = 0.25;
    for (std::size_t v = 0; v < 40; ++v) {
      if (generator() % 4 == 0) continue;
      machine.coefficients.push_back(Number());
      machine.support_vectors.push_back(data.GetVectorInstance(Numbered("random", v)));
    }
  }

  std::mt19937_64 generator{7};
};

void ExpectBatch(SVMModel& model, const std::vector<Columns>& cases) {
  const std::size_t count = cases.size();
  Columns entries(count * model.EntryCount());
  std::vector<int> fields(model.EntryCount());
  std::iota(fields.begin(), fields.end(), 0);
  for (std::size_t c = 0; c < count; ++c) {
    ASSERT_FALSE(model.ReadCase(CaseOf(cases[c]), false, &entries[c], count).IsError());
  }
  std::vector<long> status(count);
  std::vector<int> category(count);
  const std::unique_ptr<bool[]> has_interval(new bool[count]);
  Columns numbers((9 + model.DecisionCount()) * count);
  svmscore::BatchResults batch;
  batch.status = status.data();
  batch.category = category.data();
  batch.has_interval = has_interval.get();
  batch.stride = count;
  double* next = numbers.data();
  for (double** column : {&batch.value, &batch.confidence, &batch.std_dev, &batch.lower,
                          &batch.upper, &batch.percents}) {
    *column = next;
    next += count;
  }
  batch.decisions = batch.percents + 4 * count;
  model.ScoreBatch({entries.data(), count, count}, batch);
  for (std::size_t c = 0; c < count; ++c) {
    SCOPED_TRACE(testing::Message() << "case " << c << " of " << count);
    const MapRecord record = CaseOf(cases[c]);
    ScoreResult* raw = nullptr;
    ASSERT_EQ(status[c], model.GetScore(&record, raw, false).GetErrorCode());
    const std::unique_ptr<ScoreResult> result(raw);
    Columns expected;
    Columns found;
    if (const auto* cls = dynamic_cast<const SVMClsResult*>(raw)) {
      const auto at = static_cast<std::size_t>(category[c]);
      EXPECT_EQ(model.GetTargetCategories().at(at), cls->GetPrediction());
      expected = {cls->GetConfidence()};
      found = {batch.confidence[c]};
      for (const auto& [value, percent] : cls->GetAllValuePercent()) {
        found.push_back(batch.percents[(expected.size() - 1) * count + c]);
        expected.push_back(percent);
      }
    } else {
      const auto& reg = dynamic_cast<const SVMRegResult&>(*raw);
      double lower = 0.0;
      double upper = 0.0;
      EXPECT_EQ(has_interval[c], reg.GetInterval(lower, upper));
      expected = {reg.GetPrediction()->GetDouble(), reg.GetStdDev(), lower, upper};
      found = {batch.value[c], batch.std_dev[c], batch.lower[c], batch.upper[c]};
    }
    for (std::size_t m = 0; m < model.DecisionCount(); ++m) {
      expected.push_back(0.0);
      model.ScoreSVMByKernelType(fields, cases[c], static_cast<int>(m), expected.back());
      found.push_back(batch.decisions[m * count + c]);
    }
    EXPECT_EQ(Bits(expected), Bits(found));
  }
}

TEST(Batch, HasTheBitsOfSingleCasesAndOfTheDefinition) {
  Random random;
  const svmscore::Isa best = svmscore::ChooseIsa(nullptr).isa;
  for (const svmscore::Isa isa : {svmscore::Isa::kPlain, svmscore::Isa::kSse2, best}) {
    svmscore::UseIsa(isa);
    for (const Scheme scheme : {Scheme::kRegression, Scheme::kBinary, Scheme::kSigmoid,
                                Scheme::kVotes, Scheme::kCoupled, Scheme::kOneAgainstAll}) {
      for (const auto kernel :
           {SVMConst::kLinear, SVMConst::kPolynomial, SVMConst::kRadialBasis, SVMConst::kSigmoid}) {
        SCOPED_TRACE(testing::Message() << NameOf(isa) << static_cast<int>(scheme) << kernel);
        const auto model = random.Model(scheme, kernel);
        for (const std::size_t count : {1U, 7U, 70U}) {
          std::vector<Columns> cases(count, Columns(model->EntryCount()));
          for (Columns& values : cases) {
            for (double& value : values) value = random.Number();
          }
          cases.back().back() = 1e200;  // overflows in every kernel
          if (count > 1) cases[count / 2][0] = -0.0;
          ExpectBatch(*model, cases);
        }
      }
    }
  }
}

struct Categories {
  std::vector<int> category;
  Columns percents;  // [4][count]
};

// By exact decision values, by votes that need not be exact, or by winners that need not.
enum class By { kDecisions, kVotes, kWinners };

Categories CategoriesOf(SVMModel& model, const Columns& entries, std::size_t count, By by) {
  Categories found{std::vector<int>(count), Columns(4 * count)};
  std::vector<long> status(count);
  Columns decisions(model.DecisionCount() * count);
  svmscore::BatchResults results;
  results.status = status.data();
  results.category = found.category.data();
  results.stride = count;
  if (by != By::kWinners) results.percents = found.percents.data();
  if (by == By::kDecisions) results.decisions = decisions.data();
  model.ScoreBatch({entries.data(), count, count}, results);
  EXPECT_EQ(status, std::vector<long>(count));
  return found;
}

// Each time some machines have a case exactly on their threshold, which no estimate can settle.
TEST(Batch, CertifiesTheVotesAndWinnersOfExactDecisionValues) {
  constexpr std::size_t kCases = 40;
  Random random;
  std::mt19937_64 choice(3);
  for (int trial = 0; trial < 200; ++trial) {
    const Scheme scheme = trial % 4 == 0 ? Scheme::kOneAgainstAll : Scheme::kVotes;
    const auto model = random.Model(scheme, SVMConst::kRadialBasis);
    std::vector<int> fields(model->EntryCount());
    std::iota(fields.begin(), fields.end(), 0);
    Columns entries(fields.size() * kCases);
    for (double& entry : entries) entry = random.Number();
    random.last->SetMaxWins(trial % 2 == 0);
    for (Machine* machine : random.last->GetSupportVectorMachines()) {
      Columns chosen;
      const std::size_t c = choice() % 4;
      for (std::size_t f = 0; f < fields.size(); ++f) chosen.push_back(entries[f * kCases + c]);
      const auto& machines = random.last->GetSupportVectorMachines();
      const auto m = std::find(machines.begin(), machines.end(), machine) - machines.begin();
      machine->threshold = 0;
      model->ScoreSVMByKernelType(fields, chosen, static_cast<int>(m), machine->threshold);
    }
    model->SetSupportVectorMachineModel(random.last);
    const Categories exact = CategoriesOf(*model, entries, kCases, By::kDecisions);
    const Categories votes = CategoriesOf(*model, entries, kCases, By::kVotes);
    EXPECT_EQ(exact.category, votes.category) << trial;
    EXPECT_EQ(exact.percents, votes.percents) << trial;
    EXPECT_EQ(exact.category, CategoriesOf(*model, entries, kCases, By::kWinners).category)
        << trial;
  }
}

// The packed engine must not be used once the data have changed after the set-up.
TEST(Batch, HasTheBitsOfSingleCasesWithoutTheEngine) {
  Classifier classifier(3);
  for (const int target : {0, 1}) classifier.Add(target, -1);
  SVMModelData& data = *classifier.data;
  data.SetClassificationMethod(true);
  const auto model = classifier.Model();
  EchoMachine(data, 0, 2, -1, 0.1);
  ExpectBatch(*model, {{0.1, 0.2}, {-0.3, 0.7}, {-0.0, 1e200}});
}

TEST(Batch, FixesPositionsWithoutACase) {
  const auto model = Classifier(2).AddPairs(2).Model();
  InputCaseRecord record({model->GetDictionary()->FindVar("x0")}, true, false);
  double entry = 0;
  model->FixPositions(record);
  record.SetNumber(0, 5);
  EXPECT_FALSE(model->ReadCase(record, false, &entry, 1).IsError());
  EXPECT_EQ(entry, 5.0);
}

TEST(Batch, TellsWhichCasesCannotBeScored) {
  const auto model = Classifier(3).AddPairs(3).Model();
  double entries[3];
  const MapRecord invalid = CaseOf({1, std::numeric_limits<double>::infinity(), 3});
  EXPECT_EQ(model->ReadCase(CaseOf({1, 2}), false, entries, 1).GetErrorCode(), 90029);
  EXPECT_EQ(model->ReadCase(invalid, false, entries, 1).GetErrorCode(), 90027);
  EXPECT_EQ(SVMModel().ReadCase(invalid, false, entries, 1).GetErrorCode(), 90029);
  EXPECT_EQ(model->DecisionCategories(1), std::make_pair(0, 2));
  EXPECT_EQ(model->DecisionCategories(3), std::make_pair(-1, -1));
}

TEST(Batch, UnwantedColumnsAreLeftOut) {
  const double entries[] = {1, 2, 3, 4, 5, 6};
  std::vector<long> status(2, -1);
  svmscore::BatchResults results;
  results.status = status.data();
  Classifier(3).AddPairs(3, true).Model()->ScoreBatch({entries, 2, 2}, results);
  EXPECT_EQ(status, std::vector<long>(2, 0));
  // Failures of whole batches: no data, no target, a coefficient without a vector.
  SVMModel without_data;
  SVMModel without_target;
  without_target.SetSupportVectorMachineModel(new SVMModelData);
  Classifier broken(3);
  broken.AddPairs(3).data->GetSupportVectorMachines()[1]->coefficients.push_back(1.0);
  const auto without_vector = broken.Model();
  for (SVMModel* model : {&without_data, &without_target, without_vector.get()}) {
    status.assign(2, -1);
    model->ScoreBatch({entries, 2, 2}, results);
    EXPECT_EQ(status, std::vector<long>(2, 90029));
  }
}

}  // namespace
