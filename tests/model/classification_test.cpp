// From decision values to a category: votes, ties, and what a document can get wrong.
#include <gtest/gtest.h>

#include <cmath>

#include "tests/model/model_fixture.h"

namespace {

using namespace svmscore_test;  // NOLINT
using Doubles = std::vector<double>;

std::unique_ptr<SVMModel> OneAgainstAll(bool max_wins) {
  Classifier classifier({"a", "b", "c"});
  classifier.data->SetClassificationMethod(true);
  classifier.data->SetMaxWins(max_wins);
  for (int m = 0; m < 3; ++m) classifier.Add(m, -1);
  return classifier.Model();
}

// Pairs (0,1), (0,2), (1,2), ...; a positive value votes for the first of the pair.
Classifier OneAgainstOne(const std::vector<std::string>& categories) {
  Classifier classifier(categories);
  const auto count = static_cast<int>(categories.size());
  for (int i = 0; i < count; ++i) {
    for (int j = i + 1; j < count; ++j) classifier.Add(i, j);
  }
  return classifier;
}

TEST(OneAgainstAll, SmallestValueWinsUnlessMaxWins) {
  const auto smallest = OneAgainstAll(false);
  EXPECT_EQ(Decide(*smallest, {0.3, -1.2, -1.2}).category, "b");
  const auto largest = OneAgainstAll(true);
  const Decided decided = Decide(*largest, {0.3, -1.2, 0.3});
  EXPECT_EQ(decided.category, "a");
  EXPECT_EQ(decided.percents, Doubles(3, 0.0));
  EXPECT_EQ(decided.confidence, 0.0);
}

TEST(OneAgainstAll, NaNNeverWins) {
  for (const bool max_wins : {false, true}) {
    const auto model = OneAgainstAll(max_wins);
    EXPECT_EQ(DecideUnchecked(*model, {kNaN, 2, kNaN}).category, "b");
    EXPECT_EQ(DecideUnchecked(*model, {2, kNaN, 2}).category, "a");
    EXPECT_EQ(DecideUnchecked(*model, {kNaN, kNaN, kNaN}).category, "a") << "the starting winner";
  }
}

TEST(Binary, ThresholdGoesToTheAlternate) {
  for (const bool max_wins : {false, true}) {
    Classifier classifier({"yes", "no"});
    classifier.data->SetMaxWins(max_wins);
    classifier.Add(0, 1)->threshold = 0.5;
    const auto model = classifier.Model();
    EXPECT_EQ(Decide(*model, {0.5}).category, "no");
    EXPECT_EQ(Decide(*model, {0.6}).category, max_wins ? "yes" : "no");
    EXPECT_EQ(Decide(*model, {0.4}).category, max_wins ? "no" : "yes");
    EXPECT_EQ(DecideUnchecked(*model, {kNaN}).category, "no");
    EXPECT_EQ(Decide(*model, {0.5}).percents, Doubles(2, 0.0));
  }
}

TEST(Binary, UnknownCategoriesAreRefused) {
  Classifier classifier({"yes", "no"});
  classifier.Add(0, -1);
  const auto model = classifier.Model();
  EXPECT_EQ(Decide(*model, {1}).category, "yes");
  const Decided refused = Decide(*model, {-1});
  EXPECT_EQ(refused.code, 90027);
  EXPECT_EQ(refused.category, "");
  Classifier beyond({"yes", "no"});
  beyond.Add(2, 1000000);
  EXPECT_EQ(Decide(*beyond.Model(), {1}).code, 90027);
}

TEST(Votes, SharesAndTies) {
  const auto three = OneAgainstOne({"a", "b", "c"}).Model();
  const Decided tie = Decide(*three, {-1, 1, -1});  // b, a, c
  EXPECT_EQ(tie.category, "a");
  EXPECT_EQ(tie.percents, Doubles(3, 1.0 / 3));
  EXPECT_EQ(tie.confidence, 1.0 / 3);

  const auto four = OneAgainstOne({"a", "b", "c", "d"}).Model();
  const Decided clear = Decide(*four, {1, 1, 1, 1, 1, 1});
  EXPECT_EQ(clear.category, "a");
  EXPECT_EQ(clear.percents, (Doubles{3.0 / 6, 2.0 / 6, 1.0 / 6, 0}));
  EXPECT_EQ(Decide(*four, {-1, -1, -1, -1, -1, -1}).category, "d");
  EXPECT_EQ(DecideUnchecked(*four, Doubles(6, kNaN)).category, "d") << "NaN votes for alternates";
}

TEST(Votes, ForUnknownCategoriesAreNotCounted) {
  Classifier classifier({"a", "b", "c"});
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

TEST(Votes, AnAbsentMachineRepeatsTheVoteBeforeIt) {
  Classifier classifier = OneAgainstOne({"a", "b", "c"});
  auto& machines = const_cast<std::vector<Machine*>&>(classifier.data->GetSupportVectorMachines());
  delete machines[1];
  machines[1] = nullptr;
  const auto model = classifier.Model();
  EXPECT_EQ(Decide(*model, {-1, 0, -1}).percents, (Doubles{0, 2.0 / 3, 1.0 / 3}));
}

TEST(Votes, MachinesThatAreNotThePairsDecideNothing) {
  Classifier two_of_three({"a", "b", "c"});
  two_of_three.Add(0, 1);
  two_of_three.Add(0, 2);
  EXPECT_EQ(Decide(*two_of_three.Model(), {1, 1}).code, 90027);
  // k(k-1)/2 beyond the range of int.
  Classifier many({"a", "b", "c"});
  many.Add(0, 1);
  many.data->SetCateNumOfTarget(2147483647);
  EXPECT_EQ(Decide(*many.Model(), {1}).code, 90027);
}

TEST(Votes, TheCountOfTheDataMayDifferFromTheTargetsList) {
  for (const std::size_t listed : {0u, 1u, 2u, 5u}) {
    const std::vector<std::string> names{"a", "b", "c", "d", "e"};
    Classifier classifier(std::vector<std::string>(
        names.begin(), names.begin() + static_cast<std::ptrdiff_t>(listed)));
    classifier.data->SetCateNumOfTarget(3);
    classifier.Add(0, 1);
    classifier.Add(0, 2);
    classifier.Add(1, 2);
    const auto model = classifier.Model();
    const Decided decided = Decide(*model, {1, 1, 1});
    EXPECT_EQ(decided.code, listed == 0 ? 90027 : 0);
    EXPECT_EQ(decided.percents.size(), listed);
    // Every vote for c, which the short lists lack.
    EXPECT_EQ(Decide(*model, {-1, -1, -1}).code, listed == 0 ? 90027 : 0);
  }
}

TEST(Results, PredictionOnlyHoldsThePredictionAndNothingElse) {
  const auto model = OneAgainstOne({"a", "b", "c"}).Model();
  model->SetPredictionOnly(true);
  const Decided decided = Decide(*model, {1, 1, 1});
  EXPECT_EQ(decided.category, "a");
  EXPECT_EQ(decided.confidence, -1.0);
  EXPECT_TRUE(decided.percents.empty());
}

TEST(Results, HandedBackResultsAreFilledAnew) {
  const auto model = OneAgainstOne({"a", "b", "c"}).Model();
  ScoreResult* result = nullptr;
  for (const double decision : {1.0, -1.0}) {
    const MapRecord record = CaseOf({decision, decision, decision});
    EXPECT_FALSE(model->GetScore(&record, result, false).IsError());
    const Decided decided = Read(MCStatus(), result);
    EXPECT_EQ(decided.category, decision > 0 ? "a" : "c");
    EXPECT_EQ(decided.percents.size(), 3u);
  }
  delete result;
  // A result of the other kind would own the category it is given.
  SVMRegResult wrong(nullptr);
  ScoreResult* base = &wrong;
  const MapRecord record = CaseOf({1, 1, 1});
  EXPECT_EQ(model->GetScore(&record, base, false).GetErrorCode(), 90027);
}

}  // namespace
