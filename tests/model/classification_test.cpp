// From decision values to a category: votes, ties, and what a document can get wrong.
#include <gtest/gtest.h>

#include "tests/model/model_fixture.h"

namespace {

using namespace svmscore_test;  // NOLINT
using Doubles = std::vector<double>;

std::unique_ptr<SVMModel> OneAgainstAll(bool max_wins) {
  Classifier classifier(3);
  classifier.data->SetClassificationMethod(true);
  classifier.data->SetMaxWins(max_wins);
  for (int m = 0; m < 3; ++m) classifier.Add(m, -1);
  return classifier.Model();
}

TEST(OneAgainstAll, SmallestValueWinsUnlessMaxWins) {
  EXPECT_EQ(Decide(*OneAgainstAll(false), {0.3, -1.2, -1.2}).category, "b");
  const Decided decided = Decide(*OneAgainstAll(true), {0.3, -1.2, 0.3});
  EXPECT_EQ(decided.category, "a");
  EXPECT_EQ(decided.percents, Doubles(3, 0.0));
  EXPECT_EQ(decided.confidence, 0.0);
  for (const bool max_wins : {false, true}) {
    const auto model = OneAgainstAll(max_wins);
    EXPECT_EQ(DecideUnchecked(*model, {kNaN, 2, kNaN}).category, "b") << "NaN never wins";
    EXPECT_EQ(DecideUnchecked(*model, {2, kNaN, 2}).category, "a");
    EXPECT_EQ(DecideUnchecked(*model, {kNaN, kNaN, kNaN}).category, "a") << "the starting winner";
  }
}

TEST(Binary, ThresholdGoesToTheAlternate) {
  for (const bool max_wins : {false, true}) {
    Classifier classifier(2);
    classifier.data->SetMaxWins(max_wins);
    classifier.Add(0, 1)->threshold = 0.5;
    const auto model = classifier.Model();
    EXPECT_EQ(Decide(*model, {0.5}).category, "b");
    EXPECT_EQ(Decide(*model, {0.6}).category, max_wins ? "a" : "b");
    EXPECT_EQ(Decide(*model, {0.4}).category, max_wins ? "b" : "a");
    EXPECT_EQ(DecideUnchecked(*model, {kNaN}).category, "b");
    EXPECT_EQ(Decide(*model, {0.5}).percents, Doubles(2, 0.0));
  }
}

TEST(Binary, UnknownCategoriesAreRefused) {
  Classifier classifier(2);
  classifier.Add(0, -1);
  const auto model = classifier.Model();
  EXPECT_EQ(Decide(*model, {1}).category, "a");
  const Decided refused = Decide(*model, {-1});
  EXPECT_EQ(refused.code, 90027);
  EXPECT_EQ(refused.category, "");
  Classifier beyond(2);
  beyond.Add(2, 1000000);
  EXPECT_EQ(Decide(*beyond.Model(), {1}).code, 90027);
}

TEST(Votes, AreSharesOfTheMachines) {
  const auto four = Classifier(4).AddPairs(4).Model();
  const Decided clear = Decide(*four, Doubles(6, 1));
  EXPECT_EQ(clear.category, "a");
  EXPECT_EQ(clear.confidence, 0.5);
  EXPECT_EQ(clear.percents, (Doubles{3.0 / 6, 2.0 / 6, 1.0 / 6, 0}));
  EXPECT_EQ(Decide(*four, Doubles(6, -1)).category, "d");
  EXPECT_EQ(DecideUnchecked(*four, Doubles(6, kNaN)).category, "d") << "NaN votes for alternates";
}

TEST(Votes, ForUnknownCategoriesAreNotCounted) {
  Classifier classifier(3);
  classifier.Add(-1, 1);
  classifier.Add(3, 2);
  classifier.Add(1, 2147483647);
  const auto model = classifier.Model();
  const Decided one = Decide(*model, {1, 1, 1});
  EXPECT_EQ(one.category, "b");
  EXPECT_EQ(one.percents, (Doubles{0, 1.0 / 3, 0}));
  const Decided none = Decide(*model, {1, 1, -1});
  EXPECT_EQ(none.category, "a");
  EXPECT_EQ(none.confidence, 0.0);
  EXPECT_EQ(none.percents, Doubles(3, 0.0));
}

TEST(Votes, MachinesThatAreNotThePairsDecideNothing) {
  Classifier two_of_three(3);
  two_of_three.Add(0, 1);
  two_of_three.Add(0, 2);
  EXPECT_EQ(Decide(*two_of_three.Model(), {1, 1}).code, 90027);
  Classifier many(3);
  many.Add(0, 1);
  many.data->SetCateNumOfTarget(2147483647);  // k(k-1)/2 beyond the range of int
  EXPECT_EQ(Decide(*many.Model(), {1}).code, 90027);
}

TEST(Results, PredictionOnlyHoldsThePredictionAndNothingElse) {
  const auto model = Classifier(3).AddPairs(3).Model();
  model->SetPredictionOnly(true);
  const Decided decided = Decide(*model, {1, 1, 1});
  EXPECT_EQ(decided.category, "a");
  EXPECT_EQ(decided.confidence, -1.0);
  EXPECT_TRUE(decided.percents.empty());
}

TEST(Results, HandedBackResultsAreFilledAnew) {
  const auto model = Classifier(3).AddPairs(3).Model();
  SVMClsResult result(model->GetTargetVar());
  // A result of the other kind would take ownership of the category.
  SVMRegResult wrong(nullptr);
  for (const double decision : {1.0, -1.0}) {
    const MapRecord record = CaseOf(Doubles(3, decision));
    const Decided decided = Read(Score(*model, record, result), result);
    EXPECT_EQ(decided.code, 0);
    EXPECT_EQ(decided.category, decision > 0 ? "a" : "c");
    EXPECT_EQ(decided.percents.size(), 3u);
    EXPECT_EQ(Score(*model, record, wrong).GetErrorCode(), 90027);
  }
}

}  // namespace
