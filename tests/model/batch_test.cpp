// Batches against single cases and the plain definition, to the last bit.
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "host/message_codes.h"
#include "host/ss_exception.h"
#include "svm/kernel/packed/operations.h"
#include "tests/model/model_fixture.h"

namespace {

using namespace svmscore_test;  // NOLINT
using Columns = std::vector<double>;

constexpr int kFields = 5;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Sets SVMSCORE_ISA for as long as it lives.
class ForcedIsa {
 public:
  explicit ForcedIsa(const char* name) { setenv("SVMSCORE_ISA", name, 1); }
  ~ForcedIsa() { unsetenv("SVMSCORE_ISA"); }
};

enum class Scheme { kRegression, kBinary, kSigmoid, kVotes, kCoupled, kOneAgainstAll };
const Scheme kSchemes[] = {Scheme::kRegression, Scheme::kBinary,  Scheme::kSigmoid,
                           Scheme::kVotes,      Scheme::kCoupled, Scheme::kOneAgainstAll};

// A model of 40 random vectors in which every machine uses most of them.
struct Random {
  std::unique_ptr<SVMModel> Model(Scheme scheme, SVMConst::KernelFunctionType kernel) {
    auto dictionary = std::make_unique<BaseDictionary>();
    auto data = std::make_unique<SVMModelData>();
    const bool regression = scheme == Scheme::kRegression;
    const int categories = scheme <= Scheme::kSigmoid ? 2 : 4;
    if (regression) {
      dictionary->AddVar(NumberVar("y"));
    } else {
      dictionary->AddVar(
          TextVar("y", categories == 2 ? Texts{"a", "b"} : Texts{"a", "b", "c", "d"}));
      data->SetCateNumOfTarget(categories);
    }
    data->SetFunctionName(!regression);
    data->SetClassificationMethod(scheme == Scheme::kOneAgainstAll);
    data->SetMaxWins(true);
    data->SetVEMAExtension(scheme == Scheme::kSigmoid || scheme == Scheme::kCoupled);
    data->SetAppendProbability(true);
    data->SetSVMKernelType(kernel);
    data->SetSVMKernelTypeGamma(0.3);
    data->SetSVMKernelTypeCoef0(0.7);
    data->SetSVMKernelTypeDegree(3);
    for (int f = 0; f < kFields; ++f) {
      dictionary->AddVar(NumberVar(Numbered("x", static_cast<std::size_t>(f))));
      data->AddFieldRef(Numbered("x", static_cast<std::size_t>(f)), "");
    }
    for (std::size_t v = 0; v < 40; ++v) AddVector(*data, Numbered("v", v));
    if (scheme == Scheme::kOneAgainstAll) {
      for (int i = 0; i < categories; ++i) AddMachine(*data, i, -1);
    }
    for (int i = 0; i < categories && scheme != Scheme::kOneAgainstAll; ++i) {
      for (int j = i + 1; j < categories; ++j) AddMachine(*data, i, j);
    }
    return Assemble(std::move(dictionary), std::move(data));
  }
  double Number() { return std::normal_distribution<>()(generator); }

 private:
  using Texts = std::vector<std::string>;

  void AddVector(SVMModelData& data, const std::string& id) {
    std::vector<int> indices;
    Columns values;
    for (int f = 1; f <= kFields; ++f) {
      if (f > 1 && generator() % 3 == 0) continue;
      indices.push_back(f);
      values.push_back(Number());
    }
    data.AddVectorInstance(id, indices, values);
  }
  void AddMachine(SVMModelData& data, int target, int alternate) {
    auto* machine = new Machine;
    machine->target_index = target;
    machine->alternate_target_index = alternate;
    machine->absolute_value = Number();
    for (std::size_t v = 0; v < 40; ++v) {
      if (generator() % 4 == 0) continue;
      machine->coefficients.push_back(Number());
      machine->support_vectors.push_back(data.GetVectorInstance(Numbered("v", v)));
    }
    Extend(machine, -1.5, 0.1, 0, 1)->standard_deviation = 0.25;
    data.AddSupportVectorMachine(machine);
  }

  std::mt19937_64 generator{7};
};

std::uint64_t Bits(double number) {
  return std::bit_cast<std::uint64_t>(number);
}

// The columns of a batch.
struct Batch {
  explicit Batch(std::size_t cases, std::size_t decisions)
      : status(cases),
        category(cases),
        numbers((9 + decisions) * cases),
        interval(new bool[cases]) {
    results.status = status.data();
    results.category = category.data();
    results.has_interval = interval.get();
    double* next = numbers.data() - cases;
    for (double** column : {&results.value, &results.confidence, &results.std_dev, &results.lower,
                            &results.upper, &results.percents}) {
      *column = next += cases;
    }
    results.decisions = next + 4 * cases;
    results.stride = cases;
  }
  std::vector<long> status;
  std::vector<int> category;
  Columns numbers;
  std::unique_ptr<bool[]> interval;
  svmscore::BatchResults results;
};

void ExpectCase(const SVMModel& model, const Batch& batch, std::size_t c, const MCStatus& status,
                const ScoreResult* result) {
  ASSERT_EQ(batch.status[c], status.GetErrorCode());
  if (const auto* cls = dynamic_cast<const SVMClsResult*>(result)) {
    const auto& categories = model.GetTargetCategories();
    ASSERT_GE(batch.category[c], 0);
    EXPECT_EQ(categories[static_cast<std::size_t>(batch.category[c])], cls->GetPrediction());
    EXPECT_EQ(Bits(batch.results.confidence[c]), Bits(cls->GetConfidence()));
    for (std::size_t k = 0; k < cls->GetAllValuePercent().size(); ++k) {
      EXPECT_EQ(Bits(batch.results.percents[k * batch.results.stride + c]),
                Bits(cls->GetAllValuePercent()[k].second));
    }
    return;
  }
  const auto& reg = dynamic_cast<const SVMRegResult&>(*result);
  double lower = 0.0;
  double upper = 0.0;
  EXPECT_EQ(Bits(batch.results.value[c]), Bits(reg.GetPrediction()->GetDouble()));
  EXPECT_EQ(batch.results.std_dev[c], reg.GetStdDev());
  EXPECT_EQ(batch.interval[c], reg.GetInterval(lower, upper));
  EXPECT_EQ(Bits(batch.results.lower[c]), Bits(lower));
  EXPECT_EQ(Bits(batch.results.upper[c]), Bits(upper));
}

void ExpectBatch(SVMModel& model, const std::vector<Columns>& cases) {
  const std::size_t count = cases.size();
  Columns entries(count * kFields);
  Batch batch(count, model.DecisionCount());
  std::vector<int> idx = {0, 1, 2, 3, 4};
  for (std::size_t c = 0; c < count; ++c) {
    ASSERT_FALSE(model.ReadCase(CaseOf(cases[c]), false, &entries[c], count).IsError());
  }
  model.ScoreBatch({entries.data(), count, count}, batch.results);
  for (std::size_t c = 0; c < count; ++c) {
    const MapRecord record = CaseOf(cases[c]);
    ScoreResult* raw = nullptr;
    const MCStatus status = model.GetScore(&record, raw, false);
    const std::unique_ptr<ScoreResult> result(raw);
    ExpectCase(model, batch, c, status, raw);
    for (std::size_t m = 0; m < model.DecisionCount(); ++m) {
      double plain = 0.0;
      model.ScoreSVMByKernelType(idx, cases[c], static_cast<int>(m), plain);
      EXPECT_EQ(Bits(batch.results.decisions[m * count + c]), Bits(plain)) << c << " " << m;
    }
  }
}

TEST(Batch, HasTheBitsOfSingleCasesAndOfTheDefinition) {
  Random random;
  for (const char* isa : {"plain", "sse2", "avx2", "avx512"}) {
    if (MCSVM_700::packed::ChooseIsa(isa).error != nullptr) continue;
    const ForcedIsa forced(isa);
    for (const Scheme scheme : kSchemes) {
      for (const auto kernel :
           {SVMConst::kLinear, SVMConst::kPolynomial, SVMConst::kRadialBasis, SVMConst::kSigmoid}) {
        const auto model = random.Model(scheme, kernel);
        for (const std::size_t count : {1U, 7U, 70U}) {
          std::vector<Columns> cases(count, Columns(kFields));
          for (Columns& values : cases) {
            for (double& value : values) value = random.Number();
          }
          cases.back()[2] = 1e200;  // overflows in every kernel
          if (count > 1) cases[count / 2][0] = -0.0;
          SCOPED_TRACE(isa);
          ExpectBatch(*model, cases);
        }
      }
    }
  }
}

TEST(Batch, TellsWhichCasesCannotBeScored) {
  const auto model = Random().Model(Scheme::kVotes, SVMConst::kLinear);
  double entries[kFields];
  MapRecord missing({{"x0", 1}, {"x1", 2}});
  EXPECT_EQ(model->ReadCase(missing, false, entries, 1).GetErrorCode(), 90029);
  const MapRecord invalid = CaseOf({1, 2, kInfinity, 3, 4});
  EXPECT_EQ(model->ReadCase(invalid, false, entries, 1).GetErrorCode(), 90027);
  EXPECT_EQ(model->DecisionCount(), 6u);
  EXPECT_EQ(model->DecisionCategories(1), std::make_pair(0, 2));
  EXPECT_EQ(model->DecisionCategories(6), std::make_pair(-1, -1));
  EXPECT_EQ(SVMModel().ReadCase(invalid, false, entries, 1).GetErrorCode(), 90029);
}

TEST(Batch, UnwantedColumnsAreLeftOut) {
  const auto model = Random().Model(Scheme::kCoupled, SVMConst::kLinear);
  const double entries[kFields * 2] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
  long status[2] = {-1, -1};
  svmscore::BatchResults results;
  results.status = status;
  model->ScoreBatch({entries, 2, 2}, results);
  EXPECT_EQ(status[0], 0);
  EXPECT_EQ(status[1], 0);
}

TEST(Engine, AnUnknownInstructionSetIsAnError) {
  const ForcedIsa forced("avx3");
  try {
    Random().Model(Scheme::kBinary, SVMConst::kLinear);
    FAIL() << "no exception";
  } catch (const SSException& error) {
    EXPECT_EQ(error.GetErrorCode(), svmscore::code::kInstructionSet);
    EXPECT_NE(std::string(error.what()).find("sse2, avx2, avx512 or plain"), std::string::npos);
  }
}

}  // namespace
