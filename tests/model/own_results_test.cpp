// Results of a host's own classes are filled in place.
#include <gtest/gtest.h>

#include "tests/model/model_fixture.h"

namespace {

using namespace svmscore_test;  // NOLINT

class OwnCategory : public ScoreClsResult {
 public:
  void SetPrediction(ScoreValue* value) override {
    prediction = value;
    percents.clear();
  }
  ScoreValue* GetPrediction() const override { return prediction; }
  const ScoreDictVar* GetTarget() const override { return nullptr; }
  void SetConfidence(double value) override { confidence = value; }
  double GetConfidence() const override { return confidence; }
  ScoreResultType GetScoreResultType() const override { return kSVMClassificationResult; }
  bool AddValuePercent(ScoreValue* value, double percent) override {
    percents.emplace_back(value, percent);
    return true;
  }
  double GetPercent(const ScoreValue*) const override { return -1.0; }
  const std::vector<std::pair<ScoreValue*, double>>& GetAllValuePercent() const override {
    return percents;
  }

  ScoreValue* prediction = nullptr;
  double confidence = -1.0;
  std::vector<std::pair<ScoreValue*, double>> percents;
};

class OwnNumber : public ScoreRegResult, public ScoreIntervalResult {
 public:
  void SetPrediction(ScoreValue* value) override { prediction.reset(value); }
  ScoreValue* GetPrediction() const override { return prediction.get(); }
  const ScoreDictVar* GetTarget() const override { return nullptr; }
  void SetConfidence(double) override {}
  double GetConfidence() const override { return -1.0; }
  ScoreResultType GetScoreResultType() const override { return kSVMRegressionResult; }
  void SetStdDev(double value) override { std_dev = value; }
  double GetStdDev() const override { return std_dev; }
  bool GetInterval(double&, double&) const override { return false; }
  void SetInterval(double low, double high) override { interval = {low, high}; }

  std::unique_ptr<ScoreValue> prediction = std::make_unique<NumericValue>(-7);
  double std_dev = -1.0;
  std::pair<double, double> interval;
};

TEST(OwnResults, OfAClassification) {
  const auto model = Classifier(3).AddPairs(3).Model();
  OwnCategory result;
  for (const double decision : {1.0, -1.0}) {
    EXPECT_FALSE(Score(*model, CaseOf({decision, decision, decision}), result).IsError());
    EXPECT_EQ(result.prediction, model->GetTargetCategories()[decision > 0 ? 0 : 2]);
    EXPECT_EQ(result.confidence, 2.0 / 3);
    ASSERT_EQ(result.percents.size(), 3u);
    EXPECT_EQ(result.percents[1],
              (std::pair{const_cast<ScoreValue*>(model->GetTargetCategories()[1]), 1.0 / 3}));
  }
  EXPECT_TRUE(Score(*model, CaseOf({1}), result).IsError());
  EXPECT_EQ(result.prediction->GetText(), "")
      << "the missing prediction, which the model owns like a category";
}

TEST(OwnResults, OfARegression) {
  auto dictionary = std::make_unique<BaseDictionary>();
  dictionary->AddVar(NumberVar("y"));
  dictionary->AddVar(NumberVar("x0"));
  auto data = std::make_unique<SVMModelData>();
  data->AddFieldRef("x0", "");
  data->SetAppendProbability(true);
  Extend(EchoMachine(*data, 0, -1, -1, 2), 0, 0)->standard_deviation = 0.0;
  const auto model = Assemble(std::move(dictionary), std::move(data));
  OwnNumber result;
  const ScoreValue* before = result.prediction.get();
  EXPECT_FALSE(Score(*model, CaseOf({8}), result).IsError());
  EXPECT_EQ(result.prediction.get(), before) << "its own value, changed";
  EXPECT_EQ(before->GetDouble(), 10.0);
  EXPECT_EQ(result.std_dev, 0.0);
  EXPECT_EQ(result.interval, (std::pair{10.0, 10.0}));
  EXPECT_TRUE(Score(*model, CaseOf({}), result).IsError());
  EXPECT_TRUE(result.prediction->IsMissing());
  EXPECT_FALSE(Score(*model, CaseOf({1}), result).IsError());
  EXPECT_EQ(result.prediction->GetDouble(), 3.0);
}

}  // namespace
