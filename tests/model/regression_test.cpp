#include <gtest/gtest.h>

#include "tests/model/model_fixture.h"

namespace {

using namespace svmscore_test;  // NOLINT

// The value of an input x0, plus 2.
std::unique_ptr<SVMModel> Regression(double std_dev, bool append) {
  auto dictionary = std::make_unique<BaseDictionary>();
  dictionary->AddVar(NumberVar("y"));
  dictionary->AddVar(NumberVar("x0"));
  auto data = std::make_unique<SVMModelData>();
  data->AddFieldRef("x0", "");
  data->SetAppendProbability(append);
  Extend(EchoMachine(*data, 0, -1, -1, 2), 0, 0)->standard_deviation = std_dev;
  return Assemble(std::move(dictionary), std::move(data));
}

TEST(Regression, ValueDeviationAndInterval) {
  const struct {
    double std_dev;
    bool append, prediction_only;
    double expected, half_width;  // -1: none
  } rows[] = {{1.0, true, false, 1.0, 2.99573227355399},
              {1.0, false, false, 0.0, 0.0},
              {NumericValue::GetSysmisValue(), true, false, -1.0, -1.0},
              {1.0, true, true, -1.0, -1.0}};
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    const auto model = Regression(row.std_dev, row.append);
    model->SetPredictionOnly(row.prediction_only);
    SVMRegResult result(nullptr);
    EXPECT_FALSE(Score(*model, CaseOf({8}), result).IsError());
    EXPECT_EQ(result.GetPrediction()->GetDouble(), 10.0);
    EXPECT_EQ(result.GetStdDev(), row.expected);
    double lower = 0;
    double upper = 0;
    ASSERT_EQ(result.GetInterval(lower, upper), row.half_width >= 0);
    if (row.half_width < 0) continue;
    EXPECT_EQ(lower, 10 - row.half_width);
    EXPECT_EQ(upper, 10 + row.half_width);
  }
}

TEST(Regression, NeverWritesToACategory) {
  NumericValue category(3);
  SVMClsResult wrong(nullptr);
  wrong.SetPrediction(&category);
  ScoreResult* base = &wrong;
  EXPECT_FALSE(Regression(1.0, true)->FillSVMRegResult(10, base).IsError());
  EXPECT_EQ(category.GetDouble(), 3.0);
}

}  // namespace
