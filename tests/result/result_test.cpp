#include <gtest/gtest.h>

#include "host/model/score_value.h"
#include "svm/result/cls_result.h"
#include "svm/result/reg_result.h"
#include "tests/slot_order.h"

namespace {

using namespace MCZandor_850;  // NOLINT: what is tested

// Reports when it is deleted.
class Watched : public NumericValue {
 public:
  explicit Watched(int& deleted) : NumericValue(1), deleted_(deleted) {}
  ~Watched() override { ++deleted_; }

 private:
  int& deleted_;
};

TEST(ClsResult, StartsEmptyAndKeepsItsListInOrder) {
  StringValue a("a");
  StringValue b("b");
  SVMClsResult result(nullptr);
  EXPECT_EQ(result.GetPrediction(), nullptr);
  EXPECT_EQ(result.GetConfidence(), -1.0);
  EXPECT_TRUE(result.GetAllValuePercent().empty());
  EXPECT_EQ(result.GetPercent(&a), -1.0);
  EXPECT_EQ(static_cast<int>(result.GetScoreResultType()), 18);

  EXPECT_TRUE(result.AddValuePercent(&b, 0.25));
  EXPECT_TRUE(result.AddValuePercent(&a, 0.5));
  EXPECT_TRUE(result.AddValuePercent(&b, 0.75));
  const StringValue another_b("b");
  EXPECT_EQ(result.GetPercent(&another_b), 0.25) << "the first of two";
  EXPECT_EQ(result.GetPercent(nullptr), -1.0);
  EXPECT_EQ(result.GetAllValuePercent().size(), 3u);
  EXPECT_EQ(result.GetAllValuePercent()[1].first, &a);
  result.RemoveValuePercent();
  EXPECT_EQ(result.GetPercent(&b), -1.0);
}

TEST(RegResult, StartsMissingAndHasNoConfidence) {
  SVMRegResult result(nullptr);
  const double missing = NumericValue::GetSysmisValue();
  EXPECT_EQ(result.GetPrediction()->GetDouble(), missing);
  EXPECT_EQ(result.GetStdDev(), -1.0);
  result.SetConfidence(0.9);
  EXPECT_EQ(result.GetConfidence(), -1.0);
  EXPECT_EQ(static_cast<int>(result.GetScoreResultType()), 19);
}

TEST(RegResult, ShowsItsIntervalToHostsOnceItIsSet) {
  SVMRegResult result(nullptr);
  const auto* host_view =
      dynamic_cast<const ScoreIntervalResult*>(static_cast<ScoreResult*>(&result));
  ASSERT_NE(host_view, nullptr);
  double lower = 1;
  double upper = 2;
  EXPECT_FALSE(host_view->GetInterval(lower, upper));
  EXPECT_EQ(lower, 1.0);
  result.GetCI(lower, upper);
  EXPECT_EQ(lower, NumericValue::GetSysmisValue());
  EXPECT_EQ(upper, NumericValue::GetSysmisValue());
  result.SetCI(-3, 4);
  EXPECT_TRUE(host_view->GetInterval(lower, upper));
  EXPECT_EQ(lower, -3.0);
  EXPECT_EQ(upper, 4.0);
}

TEST(RegResult, DeletesEachPredictionOnce) {
  int deleted = 0;
  ScoreResult* result = new SVMRegResult(nullptr);
  auto* first = new Watched(deleted);
  result->SetPrediction(first);
  result->SetPrediction(first);
  EXPECT_EQ(deleted, 0);
  result->SetPrediction(new Watched(deleted));
  EXPECT_EQ(deleted, 1);
  delete result;
  EXPECT_EQ(deleted, 2);
}

TEST(Results, SlotOrder) {
  using svmscore_test::SlotOf;
  EXPECT_EQ(SlotOf(&SVMClsResult::GetScoreResultType), 7u);
  EXPECT_EQ(SlotOf(&SVMClsResult::AddValuePercent), 8u);
  EXPECT_EQ(SlotOf(&SVMClsResult::GetAllValuePercent), 10u);
  EXPECT_EQ(SlotOf(&SVMRegResult::GetStdDev), 9u);
}

}  // namespace
