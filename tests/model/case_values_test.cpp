// From a case record to the input vector: missing and invalid values, categories, positions.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <stdexcept>

#include "host/model/scoring_log.h"
#include "host/transform/transformation_dictionary.h"
#include "host/translate/translator.h"
#include "host/xml/document.h"
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
    data->AddCategoricalPredictor("c", "green", 2.5);  // the coefficient changes no entry
    data->AddCategoricalPredictor("c", "blue", 1);
    data->AddFieldRef("unknown", "");
    EchoMachine(*data, 0, 0, 1);
    model = Assemble(std::move(dictionary), std::move(data));
    model->SetMissingValuePolicy(policy);
  }
  ~Inputs() { delete result; }

  long Score(const ScoreCaseRecord& record) {
    return model->GetScore(&record, result, false).GetErrorCode();
  }

  std::unique_ptr<SVMModel> model;
  ScoreResult* result = nullptr;
};

MapRecord Case(double n, const char* c) {
  return MapRecord({{"n", n}, {"c", c}});
}

using Doubles = std::vector<double>;

// The entries of a case, one for each field.
Doubles Entries(SVMModel& model, const ScoreCaseRecord& record, bool flag = false) {
  ScoreResult* none = nullptr;
  std::vector<int> idx;
  Doubles val;
  EXPECT_FALSE(model.FillCaseRecord(none, &record, flag, idx, val).IsError());
  EXPECT_EQ(idx.size(), val.size());
  for (std::size_t i = 0; i < idx.size(); ++i) EXPECT_EQ(idx[i], static_cast<int>(i));
  return val;
}

TEST(CaseValues, EveryFieldGetsAnEntry) {
  const Inputs inputs(true);
  EXPECT_EQ(Entries(*inputs.model, Case(0, "green")), (Doubles{0, 1, 0, 0}));
  EXPECT_EQ(Entries(*inputs.model, Case(2.5, "red")), (Doubles{2.5, 0, 0, 0}));
  // A value outside the categories that is let through does not equal an unknown category.
  FieldTreatment as_is;
  as_is.invalid = FieldTreatment::Invalid::kAsIs;
  inputs.model->GetDictionary()->FindVar("c")->SetTreatment(as_is);
  EXPECT_EQ(Entries(*inputs.model, Case(2.5, "purple")), (Doubles{2.5, 0, 0, 0}));
}

TEST(CaseValues, TheFirstBadFieldDecides) {
  Inputs inputs(true);
  EXPECT_EQ(inputs.Score(MapRecord({{"n", kNaN}})), 90027);
  EXPECT_EQ(inputs.Score(MapRecord({MapRecord::Cell("c", "blue")})), 90029);
  EXPECT_EQ(inputs.Score(Case(1, "blue")), 90027);
  inputs.model->GetDictionary()->FindVar("n")->DeclareMissing("-99");
  EXPECT_EQ(inputs.Score(Case(-99, "red")), 90029);
  inputs.model->GetDictionary()->FindVar("c")->DeclareMissing("none");
  EXPECT_EQ(inputs.Score(Case(1, "none")), 90029) << "missing, although it is invalid as well";
}

TEST(CaseValues, NoRecordNoDataOrNoTargetCannotBeScored) {
  Inputs inputs(true);
  ScoreResult* result = nullptr;
  const MapRecord record = Case(1, "red");
  EXPECT_EQ(inputs.model->GetScore(nullptr, result, false).GetErrorCode(), 90029);
  EXPECT_EQ(SVMModel().GetScore(&record, result, true).GetErrorCode(), 90029);
  inputs.model->SetTargetVar(nullptr);
  EXPECT_EQ(inputs.model->GetScore(&record, result, false).GetErrorCode(), 90029);
  EXPECT_EQ(result, nullptr);
}

// Nothing is scored and nothing fails.
TEST(CaseValues, WithoutEntriesTheResultStaysAsItIs) {
  const Inputs classification(false);
  SVMClsResult category(nullptr);
  ScoreResult* result = &category;
  EXPECT_FALSE(classification.model->ScoreSVMClsModel({}, {}, result).IsError());
  EXPECT_EQ(category.GetPrediction(), nullptr);
  SVMRegResult number(nullptr);
  result = &number;
  EXPECT_FALSE(Inputs(true).model->ScoreSVMRegModel({}, {}, result).IsError());
  EXPECT_TRUE(number.GetPrediction()->IsMissing());
}

TEST(CaseValues, ReplacementsAreWhatThePolicySays) {
  const MapRecord empty({});
  for (const auto policy : {ScoreModel::kReplaceMissing, ScoreModel::kPredictMissing}) {
    Inputs inputs(true, policy);
    const auto replace = [&inputs](const char* name, const ScoreValue& value) {
      auto* stats = new VarStats;
      stats->SetMissingReplacement(&value);
      inputs.model->GetDictionary()->FindVar(name)->SetVarStats(stats);
    };
    replace("n", NumericValue(7));
    replace("c", StringValue("green"));
    if (policy == ScoreModel::kReplaceMissing) {
      EXPECT_EQ(inputs.Score(empty), 0);
      EXPECT_EQ(inputs.result->GetPrediction()->GetDouble(), 7.0);
      EXPECT_EQ(inputs.result->GetTarget(), inputs.model->GetTargetVar());
      EXPECT_EQ(Entries(*inputs.model, empty), (Doubles{7, 1, 0, 0}));
    } else {
      EXPECT_EQ(inputs.Score(empty), 90029);
      EXPECT_TRUE(inputs.result->GetPrediction()->IsMissing());
    }
  }
}

// The result keeps its value over failing and good cases in turn; a sanitizer run finds what leaks
// or is deleted twice.
TEST(CaseValues, MissingPredictionsOfRegressionBelongToTheResult) {
  const MapRecord empty({});
  const MapRecord good = Case(3, "red");
  for (const bool numeric : {true, false}) {
    for (const auto policy : {ScoreModel::kReplaceMissing, ScoreModel::kPredictMissing}) {
      Inputs inputs(true, policy);
      ScoreDictVar* target = inputs.model->GetDictionary()->FindVar("y");
      if (!numeric) target->SetOpType(svmscore::OpType::kCategorical);
      for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(inputs.Score(empty), 90029);
        EXPECT_EQ(inputs.result->GetPrediction()->IsNumeric(), numeric);
        EXPECT_TRUE(inputs.result->GetPrediction()->IsMissing() || !numeric);
        EXPECT_EQ(inputs.Score(good), 0);
        EXPECT_EQ(inputs.result->GetPrediction()->GetDouble(), 3.0);
      }
    }
  }
}

TEST(CaseValues, MissingPredictionsOfClassificationBelongToTheModel) {
  Inputs inputs(false);
  const MapRecord empty({});
  EXPECT_EQ(inputs.Score(empty), 90029);
  EXPECT_EQ(inputs.result->GetTarget(), inputs.model->GetTargetVar());
  ScoreValue* first = inputs.result->GetPrediction();
  EXPECT_FALSE(first->IsNumeric());
  EXPECT_EQ(first->GetText(), "");
  SVMClsResult other(nullptr);
  EXPECT_TRUE(Score(*inputs.model, empty, other).IsError());
  EXPECT_EQ(other.GetPrediction(), first);
  inputs.model->GetDictionary()->FindVar("y")->SetOpType(svmscore::OpType::kContinuous);
  EXPECT_EQ(inputs.Score(empty), 90029);
  EXPECT_EQ(inputs.result->GetPrediction()->GetDouble(), NumericValue::GetSysmisValue());
  Inputs failing(false, ScoreModel::kFailOnMissing);
  EXPECT_EQ(failing.Score(empty), 90029);
  EXPECT_EQ(failing.result->GetPrediction(), nullptr);
}

TEST(CaseValues, PositionsAreThoseOfTheFirstRecord) {
  Inputs inputs(true);
  for (const auto& [first, second] : {std::pair{"other", "n"}, {"n", "other"}}) {
    EXPECT_EQ(inputs.Score(MapRecord({{first, 9}, {second, 4}, {"c", "red"}}, true)), 0);
    EXPECT_EQ(inputs.result->GetPrediction()->GetDouble(), 4.0);
  }
}

// Inputs n and h, derived fields d = 10 n and h = 100 n; the vector fields are d and h.
TEST(CaseValues, DerivedFieldsAndTheInputsTheyHide) {
  const auto times = [](const std::string& name, const std::string& factor) {
    return "<DerivedField optype='continuous' dataType='double' name='" + name +
           "'><NormContinuous field='n'><LinearNorm orig='0' norm='0'/><LinearNorm norm='" +
           factor + "' orig='1'/></NormContinuous></DerivedField>";
  };
  const auto document = svmscore::PmmlDocument::FromText(
      "<Transformations>" + times("d", "10") + times("h", "100") + "</Transformations>", "derived");
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

    SCOPED_TRACE(by_position);
    // The first value is where a derived field's own position would point.
    const MapRecord record({{"h", 7}, {"n", 0.5}}, by_position);
    model.SetUpDictVarIndex(&record, false);
    EXPECT_EQ(Entries(model, record), (Doubles{5, 7}));
    EXPECT_EQ(Entries(model, record, true), (Doubles{5, 50}));
    InputCaseRecord inputs(
        {model.GetDictionary()->FindVar("h"), model.GetDictionary()->FindVar("n")}, by_position,
        false);
    inputs.SetText(0, "7");
    inputs.SetText(1, "0.5");
    EXPECT_EQ(Entries(model, inputs), (Doubles{5, 7}));
    EXPECT_EQ(Entries(model, inputs, true), (Doubles{5, 50}));
    const MapRecord given({{"h", 7}, {"n", 0.5}, {"d", 6}}, by_position);
    EXPECT_EQ(Entries(model, given)[0], by_position ? 5.0 : 6.0)
        << "a derived value that the case brings along";
  }
}

TEST(CaseValues, FieldsOfAnUnknownKindAreInvalid) {
  Classifier classifier(2);
  classifier.Add(0, 1);
  classifier.data->AddCategoricalPredictor("x0", "1", 1);
  classifier.data->GetVectorFieldTypes()[1] = static_cast<VectorFieldType>(2);
  EXPECT_EQ(Decide(*classifier.Model(), {1}).code, 90027);
}

// Even a failure by an exception, which must not leave GetScore.
TEST(CaseValues, EveryFailureLeavesItsLine) {
  const std::string path = testing::TempDir() + "svmscore_model_test.log";
  std::remove(path.c_str());
  ScoringLog& log = ScoringLog::GetInstance();
  ASSERT_TRUE(log.SetFile(path));
  log.SetLevel(1);
  Inputs inputs(false);
  EXPECT_EQ(inputs.Score(ThrowingRecord()), 90029);
  EXPECT_EQ(inputs.Score(MapRecord({{"n", kNaN}})), 90027);
  double entries[4];
  EXPECT_TRUE(inputs.model->ReadCase(MapRecord({}), false, entries, 1).IsError());
  EXPECT_EQ(inputs.Score(Case(1, "red")), 0);
  log.SetLevel(0);
  std::string codes;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) codes += line.substr(line.rfind("MCStatus"));
  const std::string text = "MCStatus error code is :";
  EXPECT_EQ(codes, text + "90029" + text + "90027" + text + "90029");
}

}  // namespace
