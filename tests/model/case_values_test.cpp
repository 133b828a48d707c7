// From a case record to the input vector: missing and invalid values, categories, positions.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "host/pmml/document.h"
#include "host/scoring_log.h"
#include "host/transformation_dictionary.h"
#include "host/translator.h"
#include "tests/model/model_fixture.h"

namespace {

using namespace svmscore_test;  // NOLINT

class ThrowingRecord : public MapRecord {
 public:
  ThrowingRecord() : MapRecord({}) {}
  const ScoreValue* GetValue(const std::string&) const override {
    throw std::runtime_error("no value today");
  }
};

// Inputs n (number), c (red, green), then a field that no dictionary knows.
struct Inputs {
  explicit Inputs(bool regression, ScoreModel::MVPolicy policy = ScoreModel::kPredictMissing) {
    auto dictionary = std::make_unique<BaseDictionary>();
    dictionary->AddVar(regression ? NumberVar("y") : TextVar("y", {"a", "b"}));
    dictionary->AddVar(NumberVar("n"));
    dictionary->AddVar(TextVar("c", {"red", "green"}));
    auto data = std::make_unique<SVMModelData>();
    data->SetFunctionName(!regression);
    data->SetCateNumOfTarget(regression ? 1 : 2);
    data->AddFieldRef("n", "");
    data->AddCategoricalPredictor("c", "green", 1);
    data->AddCategoricalPredictor("c", "blue", 1);
    data->AddFieldRef("unknown", "");
    EchoMachine(*data, 0, 0, 1);
    model = Assemble(std::move(dictionary), std::move(data));
    model->SetMissingValuePolicy(policy);
  }
  ~Inputs() { delete result; }

  MCStatus Fill(const ScoreCaseRecord& record) {
    idx.clear();
    val.clear();
    bool flag = false;
    return model->FillCaseRecord(result, &record, flag, idx, val);
  }
  long Score(const ScoreCaseRecord* record) {
    return model->GetScore(record, result, false).GetErrorCode();
  }

  std::unique_ptr<SVMModel> model;
  ScoreResult* result = nullptr;
  std::vector<int> idx;
  std::vector<double> val;
};

MapRecord Case(double n, const char* c) {
  MapRecord record({{"n", n}});
  record.Set("c", std::make_unique<StringValue>(c));
  return record;
}

std::unique_ptr<VarStats> Replacement(std::unique_ptr<ScoreValue> value) {
  auto stats = std::make_unique<VarStats>();
  stats->SetMissingReplacement(value.get());
  return stats;
}

TEST(CaseValues, EveryFieldGetsAnEntry) {
  Inputs inputs(true);
  EXPECT_FALSE(inputs.Fill(Case(0, "green")).IsError());
  EXPECT_EQ(inputs.idx, (std::vector<int>{0, 1, 2, 3}));
  EXPECT_EQ(inputs.val, (std::vector<double>{0, 1, 0, 0}));
  EXPECT_FALSE(inputs.Fill(Case(2.5, "red")).IsError());
  EXPECT_EQ(inputs.val, (std::vector<double>{2.5, 0, 0, 0}));
  // A value that is no category, let through, is not the category that is none either.
  FieldTreatment as_is;
  as_is.invalid = FieldTreatment::Invalid::kAsIs;
  inputs.model->GetDictionary()->FindVar("c")->SetTreatment(as_is);
  EXPECT_FALSE(inputs.Fill(Case(2.5, "purple")).IsError());
  EXPECT_EQ(inputs.val, (std::vector<double>{2.5, 0, 0, 0}));
}

TEST(CaseValues, TheFirstBadFieldDecides) {
  Inputs inputs(true);
  MapRecord invalid_first({{"n", std::nan("")}});
  EXPECT_EQ(inputs.Score(&invalid_first), 90027);
  MapRecord missing_first({});
  missing_first.Set("c", std::make_unique<StringValue>("blue"));
  EXPECT_EQ(inputs.Score(&missing_first), 90029);
  EXPECT_EQ(inputs.Score(std::make_unique<MapRecord>(Case(1, "blue")).get()), 90027);
  inputs.model->GetDictionary()->FindVar("n")->DeclareMissing("-99");
  EXPECT_EQ(inputs.Score(std::make_unique<MapRecord>(Case(-99, "red")).get()), 90029);
}

TEST(CaseValues, NoRecordNoDataOrNoTargetCannotBeScored) {
  Inputs inputs(true);
  EXPECT_EQ(inputs.Score(nullptr), 90029);
  EXPECT_EQ(inputs.result, nullptr);
  inputs.model->SetTargetVar(nullptr);
  const MapRecord record = Case(1, "red");
  EXPECT_EQ(inputs.Score(&record), 90029);
  SVMModel bare;
  ScoreResult* result = nullptr;
  EXPECT_EQ(bare.GetScore(&record, result, true).GetErrorCode(), 90029);
  EXPECT_EQ(result, nullptr);
}

TEST(CaseValues, ReplacementsAreWhatThePolicySays) {
  const MapRecord empty({});
  for (const auto policy : {ScoreModel::kReplaceMissing, ScoreModel::kPredictMissing}) {
    Inputs inputs(true, policy);
    ScoreDictionary* dictionary = inputs.model->GetDictionary();
    dictionary->FindVar("n")->SetVarStats(Replacement(std::make_unique<NumericValue>(7)).release());
    dictionary->FindVar("c")->SetVarStats(
        Replacement(std::make_unique<StringValue>("green")).release());
    const long code = inputs.Score(&empty);
    if (policy == ScoreModel::kReplaceMissing) {
      EXPECT_EQ(code, 0);
      EXPECT_EQ(inputs.result->GetPrediction()->GetDouble(), 7.0);
      inputs.Fill(empty);
      EXPECT_EQ(inputs.val, (std::vector<double>{7, 1, 0, 0}));
    } else {
      EXPECT_EQ(code, 90029);
      EXPECT_TRUE(inputs.result->GetPrediction()->IsMissing());
    }
  }
}

// The result keeps its value over failing and good cases in turn; a sanitizer run finds what leaks
// or is deleted twice.
TEST(CaseValues, MissingPredictionsOfRegressionBelongToTheResult) {
  for (const auto policy : {ScoreModel::kReplaceMissing, ScoreModel::kPredictMissing}) {
    Inputs inputs(true, policy);
    const MapRecord empty({});
    const MapRecord good = Case(3, "red");
    for (int i = 0; i < 3; ++i) {
      EXPECT_EQ(inputs.Score(&empty), 90029);
      EXPECT_EQ(inputs.result->GetPrediction()->GetDouble(), NumericValue::GetSysmisValue());
      EXPECT_EQ(inputs.Score(&good), 0);
      EXPECT_EQ(inputs.result->GetPrediction()->GetDouble(), 3.0);
    }
  }
  Inputs text_target(true);
  text_target.model->GetDictionary()->FindVar("y")->SetOpType(svmscore::OpType::kCategorical);
  const MapRecord empty({});
  const MapRecord good = Case(3, "red");
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(text_target.Score(&empty), 90029);
    EXPECT_FALSE(text_target.result->GetPrediction()->IsNumeric());
    EXPECT_EQ(text_target.Score(&good), 0);
    EXPECT_EQ(text_target.result->GetPrediction()->GetDouble(), 3.0);
  }
}

TEST(CaseValues, MissingPredictionsOfClassificationBelongToTheModel) {
  Inputs inputs(false);
  const MapRecord empty({});
  EXPECT_EQ(inputs.Score(&empty), 90029);
  ScoreValue* first = inputs.result->GetPrediction();
  EXPECT_FALSE(first->IsNumeric());
  EXPECT_EQ(first->GetText(), "");
  ScoreResult* other = new SVMClsResult(nullptr);
  EXPECT_TRUE(inputs.model->GetScore(&empty, other, false).IsError());
  EXPECT_EQ(other->GetPrediction(), first);
  delete other;
  inputs.model->GetDictionary()->FindVar("y")->SetOpType(svmscore::OpType::kContinuous);
  EXPECT_EQ(inputs.Score(&empty), 90029);
  EXPECT_EQ(inputs.result->GetPrediction()->GetDouble(), NumericValue::GetSysmisValue());
  Inputs failing(false, ScoreModel::kFailOnMissing);
  EXPECT_EQ(failing.Score(&empty), 90029);
  EXPECT_EQ(failing.result->GetPrediction(), nullptr);
}

TEST(CaseValues, PositionsAreThoseOfTheFirstRecord) {
  Inputs inputs(true);
  MapRecord first({{"other", 9}, {"n", 4}}, true);
  first.Set("c", std::make_unique<StringValue>("red"));
  EXPECT_EQ(inputs.Score(&first), 0);
  EXPECT_EQ(inputs.result->GetPrediction()->GetDouble(), 4.0);
  MapRecord swapped({{"n", 5}, {"other", 6}}, true);
  swapped.Set("c", std::make_unique<StringValue>("red"));
  EXPECT_EQ(inputs.Score(&swapped), 0);
  EXPECT_EQ(inputs.result->GetPrediction()->GetDouble(), 6.0);
}

// Inputs n and h, derived fields d = 10 n and h = 100 n; the vector fields are d and h.
TEST(CaseValues, DerivedFieldsAndTheInputsTheyHide) {
  const auto document = svmscore::PmmlDocument::FromText(
      R"(<TransformationDictionary>
           <DerivedField name="d" optype="continuous" dataType="double">
             <NormContinuous field="n">
               <LinearNorm orig="0" norm="0"/><LinearNorm orig="1" norm="10"/>
             </NormContinuous>
           </DerivedField>
           <DerivedField name="h" optype="continuous" dataType="double">
             <NormContinuous field="n">
               <LinearNorm orig="0" norm="0"/><LinearNorm orig="1" norm="100"/>
             </NormContinuous>
           </DerivedField>
         </TransformationDictionary>)",
      "derived");
  for (const bool by_position : {false, true}) {
    auto dictionary = std::make_unique<BaseDictionary>();
    for (const char* name : {"y", "h", "n"}) dictionary->AddVar(NumberVar(name));
    PMMLTranslator translator("");
    translator.CreateTranscoder("UTF-8");
    auto* derived = translator.HandleTransformationDictionary(document.Dom()->getDocumentElement(),
                                                              dictionary.get());
    ASSERT_NE(derived, nullptr);
    derived->SetUpDerivedCaseRecord();
    dictionary->FindVar("h")->SetHiddenByDerived(true);
    SVMModel model;
    model.SetScoreDictionary(dictionary.release());
    model.SetTransformationScoreDictionary(derived);
    auto* data = new SVMModelData;
    data->AddFieldRef("d", "");
    data->AddFieldRef("h", "");
    model.SetSupportVectorMachineModel(data);

    // The first value stands where a derived field's own position would point.
    const MapRecord record({{"h", 7}, {"n", 0.5}}, by_position);
    model.SetUpDictVarIndex(&record, false);
    ScoreResult* none = nullptr;
    for (bool flag : {false, true}) {
      std::vector<int> idx;
      std::vector<double> val;
      EXPECT_FALSE(model.FillCaseRecord(none, &record, flag, idx, val).IsError());
      EXPECT_EQ(val, (std::vector<double>{5, flag ? 50.0 : 7.0})) << by_position << flag;
    }
    const MapRecord given({{"h", 7}, {"n", 0.5}, {"d", 6}}, by_position);
    bool flag = false;
    std::vector<int> idx;
    std::vector<double> val;
    EXPECT_FALSE(model.FillCaseRecord(none, &given, flag, idx, val).IsError());
    EXPECT_EQ(val[0], by_position ? 5.0 : 6.0) << "a derived value that the case brings along";
  }
}

TEST(CaseValues, FieldsOfAnUnknownKindAreInvalid) {
  auto dictionary = std::make_unique<BaseDictionary>();
  dictionary->AddVar(NumberVar("y"));
  dictionary->AddVar(NumberVar("n"));
  auto data = std::make_unique<SVMModelData>();
  data->AddFieldRef("n", "");
  data->AddCategoricalPredictor("n", "1", 1);
  data->GetVectorFieldTypes()[1] = static_cast<VectorFieldType>(2);
  EchoMachine(*data, 0, -1, -1);
  const auto model = Assemble(std::move(dictionary), std::move(data));
  const MapRecord record({{"n", 1}});
  ScoreResult* result = nullptr;
  EXPECT_EQ(model->GetScore(&record, result, false).GetErrorCode(), 90027);
  delete result;
}

TEST(CaseValues, NothingThatThrowsLeavesGetScore) {
  Inputs inputs(false);
  const std::string log = testing::TempDir() + "svmscore_model_test.log";
  std::remove(log.c_str());
  ASSERT_TRUE(ScoringLog::GetInstance().SetFile(log));
  ScoringLog::GetInstance().SetLevel(1);
  const ThrowingRecord record;
  MCStatus status;
  EXPECT_NO_THROW(status = inputs.model->GetScore(&record, inputs.result, false));
  ScoringLog::GetInstance().SetLevel(0);
  EXPECT_TRUE(status.IsError());
  EXPECT_EQ(status.GetErrorCode(), 90029);
  std::ifstream file(log);
  const std::string text((std::istreambuf_iterator<char>(file)), {});
  EXPECT_NE(text.find("MCStatus error code is :90029\n"), std::string::npos) << text;
}

}  // namespace
