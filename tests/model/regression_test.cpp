#include <gtest/gtest.h>

#include "tests/model/model_fixture.h"

namespace {

using namespace svmscore_test;  // NOLINT

struct Regression {
  Regression(double std_dev, bool append, bool prediction_only = false) {
    auto dictionary = std::make_unique<BaseDictionary>();
    dictionary->AddVar(NumberVar("y"));
    dictionary->AddVar(NumberVar("x0"));
    auto data = std::make_unique<SVMModelData>();
    data->AddFieldRef("x0", "");
    data->SetAppendProbability(append);
    Machine* machine = EchoMachine(*data, 0, -1, -1, 2);
    machine->extension = new ST_MACHINEEXTENSION;
    machine->extension->standard_deviation = std_dev;
    model = Assemble(std::move(dictionary), std::move(data));
    model->SetPredictionOnly(prediction_only);
    ScoreResult* raw = nullptr;
    const MapRecord record = CaseOf({8});
    EXPECT_FALSE(model->GetScore(&record, raw, false).IsError());
    result.reset(dynamic_cast<SVMRegResult*>(raw));
  }
  std::unique_ptr<SVMModel> model;
  std::unique_ptr<SVMRegResult> result;
};

TEST(Regression, ValueDeviationAndInterval) {
  const Regression one(1.0, true);
  double lower = 0;
  double upper = 0;
  EXPECT_EQ(one.result->GetPrediction()->GetDouble(), 10.0);
  EXPECT_EQ(one.result->GetStdDev(), 1.0);
  ASSERT_TRUE(one.result->GetInterval(lower, upper));
  EXPECT_EQ(lower, 10 - 2.99573227355399);
  EXPECT_EQ(upper, 10 + 2.99573227355399);

  const Regression not_asked_for(1.0, false);
  EXPECT_EQ(not_asked_for.result->GetStdDev(), 0.0);
  ASSERT_TRUE(not_asked_for.result->GetInterval(lower, upper));
  EXPECT_EQ(lower, 10.0);
  EXPECT_EQ(upper, 10.0);
}

TEST(Regression, NoIntervalWithoutADeviation) {
  double lower = 0;
  double upper = 0;
  const Regression missing(NumericValue::GetSysmisValue(), true);
  EXPECT_EQ(missing.result->GetStdDev(), -1.0);
  EXPECT_FALSE(missing.result->GetInterval(lower, upper));
  const Regression prediction_only(1.0, true, true);
  EXPECT_EQ(prediction_only.result->GetPrediction()->GetDouble(), 10.0);
  EXPECT_EQ(prediction_only.result->GetStdDev(), -1.0);
  EXPECT_FALSE(prediction_only.result->GetInterval(lower, upper));
}

TEST(Regression, NeverWritesToACategory) {
  const Regression regression(1.0, true);
  NumericValue category(3);
  SVMClsResult wrong(nullptr);
  wrong.SetPrediction(&category);
  ScoreResult* base = &wrong;
  EXPECT_FALSE(regression.model->FillSVMRegResult(10, base).IsError());
  EXPECT_EQ(category.GetDouble(), 3.0);
}

}  // namespace
