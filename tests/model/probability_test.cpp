// Pairwise sigmoids, their coupling, and the decisions made from them.
#include <gtest/gtest.h>

#include <cmath>
#include <numeric>
#include <thread>

#include "tests/model/model_fixture.h"

namespace {

using namespace svmscore_test;  // NOLINT
using Doubles = std::vector<double>;
using Rows = std::vector<Doubles>;

// Every machine has A = -1, B = 0: its pairwise probability is the logistic function of its value.
Classifier Pairs(const std::vector<std::string>& categories) {
  Classifier classifier(categories);
  classifier.data->SetVEMAExtension(true);
  const auto count = static_cast<int>(categories.size());
  for (int i = 0; i < count; ++i) {
    for (int j = i + 1; j < count; ++j) Extend(classifier.Add(i, j), -1, 0, i, j);
  }
  return classifier;
}

double Logistic(double x) {
  return 1 / (1 + std::exp(-x));
}

TEST(Sigmoid, DoesNotOverflow) {
  SVMModel model;
  EXPECT_EQ(model.ComputeVEMAZValue(0, 5, 0), 0.5);
  EXPECT_EQ(model.ComputeVEMAZValue(1, -1000, 0), 1.0);
  EXPECT_EQ(model.ComputeVEMAZValue(1, 1000, 0), 0.0);
  EXPECT_DOUBLE_EQ(model.ComputeVEMAZValue(2, -1.5, 0.25), 1 / (1 + std::exp(-2.75)));
  EXPECT_DOUBLE_EQ(model.ComputeVEMAZValue(2, 1.5, 0.25), 1 / (1 + std::exp(3.25)));
  EXPECT_TRUE(std::isnan(model.ComputeVEMAZValue(kNaN, 1, 0)));
}

TEST(Pairwise, FilledPairByPairAndClamped) {
  Classifier classifier = Pairs({"a", "b", "c"});
  classifier.data->GetSupportVectorMachines()[1]->extension->a = -100;
  const auto model = classifier.Model();
  Rows r(3, Doubles(3, 9.0));
  EXPECT_FALSE(model->CalculateClassProbabilites({0, 1, -1e300}, r).IsError());
  EXPECT_EQ(r[0], (Doubles{0, 0.5, 0.9999999}));
  EXPECT_EQ(r[1], (Doubles{0.5, 0, 1e-7}));
  EXPECT_EQ(r[2], (Doubles{1 - 0.9999999, 1 - 1e-7, 0}));
  Rows ragged{{}, {1, 2, 3, 4}};
  EXPECT_FALSE(model->CalculateClassProbabilites({1}, ragged).IsError());
  EXPECT_EQ(ragged[1].size(), 2u);
  Rows none;
  EXPECT_EQ(model->CalculateClassProbabilites({1}, none).GetErrorCode(), 90027);
}

// The pair without parameters takes none from its neighbours and uses up no machine, so that the
// pairs after it stay empty too.
TEST(Pairwise, AMachineWithoutItsExtensionAmongMachinesWithOne) {
  Classifier classifier = Pairs({"a", "b", "c"});
  Machine* second = classifier.data->GetSupportVectorMachines()[1];
  delete second->extension;
  second->extension = nullptr;
  const auto model = classifier.Model();
  Rows r(3, Doubles(3, 0.0));
  EXPECT_FALSE(model->CalculateClassProbabilites({1, 1, 1}, r).IsError());
  EXPECT_EQ(r[0], (Doubles{0, Logistic(1), 0}));
  EXPECT_EQ(r[1], (Doubles{1 - Logistic(1), 0, 0}));
  const Decided decided = Decide(*model, {1, 1, 1});
  EXPECT_EQ(decided.code, 0);
  EXPECT_EQ(decided.percents.size(), 3u)
      << "zero diagonals couple to NaN, and that is the end of it";
  EXPECT_EQ(decided.category, "a");
}

TEST(Pairwise, AnAbsentMachineBorrowsTheParametersBeforeIt) {
  Classifier classifier = Pairs({"a", "b", "c"});
  auto& machines = const_cast<std::vector<Machine*>&>(classifier.data->GetSupportVectorMachines());
  delete machines[1];
  machines[1] = nullptr;
  const auto model = classifier.Model();
  Rows r(3, Doubles(3, 0.0));
  EXPECT_FALSE(model->CalculateClassProbabilites({1, 2, 3}, r).IsError());
  EXPECT_EQ(r[0][2], Logistic(2));
  EXPECT_EQ(r[1][2], Logistic(3));
}

TEST(BinaryProbability, ResponseKeepsEqualProbabilities) {
  const auto model = Pairs({"yes", "no"}).Model();
  EXPECT_EQ(Decide(*model, {0}).category, "yes");
  const Decided yes = Decide(*model, {0.75});
  EXPECT_EQ(yes.category, "yes");
  EXPECT_EQ(yes.confidence, Logistic(0.75));
  EXPECT_EQ(yes.percents, (Doubles{Logistic(0.75), 1 - Logistic(0.75)}));
  const Decided no = Decide(*model, {-0.75});
  EXPECT_EQ(no.category, "no");
  EXPECT_EQ(no.confidence, no.percents[1]);
  EXPECT_EQ(DecideUnchecked(*model, {kNaN}).category, "no");
}

TEST(BinaryProbability, OddExtensions) {
  Classifier no_other({"yes", "no"});
  no_other.data->SetVEMAExtension(true);
  Extend(no_other.Add(0, 1), -1, 0, 1, -1);
  const Decided response = Decide(*no_other.Model(), {-5});
  EXPECT_EQ(response.category, "no") << "the response category, whatever the value";
  EXPECT_EQ(response.percents, Doubles(2, 0.0));

  Classifier outside({"yes", "no"});
  outside.data->SetVEMAExtension(true);
  Extend(outside.Add(0, 1), -1, 0, 7, 8);
  const auto model = outside.Model();
  EXPECT_EQ(Decide(*model, {5}).code, 90027);
  EXPECT_EQ(Decide(*model, {-5}).code, 90027);

  Classifier bare({"yes", "no"});
  bare.data->SetVEMAExtension(true);
  bare.Add(0, 1);
  EXPECT_EQ(Decide(*bare.Model(), {-5}).category, "yes");
}

TEST(Coupling, DecidesWhateverTheMethodSays) {
  Classifier classifier = Pairs({"a", "b", "c"});
  classifier.data->SetClassificationMethod(true);
  const Doubles decisions{1, 2, -1};
  EXPECT_EQ(Decide(*classifier.Model(), decisions).percents,
            Decide(*Pairs({"a", "b", "c"}).Model(), decisions).percents);
}

TEST(Coupling, TheCountOfTheDataMayDifferFromTheTargetsList) {
  for (const std::size_t listed : {2u, 4u}) {
    const std::vector<std::string> names{"a", "b", "c", "d"};
    Classifier classifier(std::vector<std::string>(
        names.begin(), names.begin() + static_cast<std::ptrdiff_t>(listed)));
    classifier.data->SetVEMAExtension(true);
    classifier.data->SetCateNumOfTarget(3);
    for (const auto& [i, j] : {std::pair{0, 1}, {0, 2}, {1, 2}}) {
      Extend(classifier.Add(i, j), -1, 0, i, j);
    }
    const Decided decided = Decide(*classifier.Model(), {-1, -1, -1});
    EXPECT_EQ(decided.code, 0);
    EXPECT_EQ(decided.category, "a") << "no percentage belongs to a category";
    EXPECT_EQ(decided.percents, listed == 2 ? Doubles(2, 0.0) : Doubles());
  }
}

// Pairwise probabilities that come from class probabilities are coupled back to them: the minimum
// of the quadratic form is then exactly there.
TEST(Coupling, GivesBackConsistentProbabilities) {
  const Doubles truth{0.5, 0.3, 0.15, 0.05};
  Doubles decisions;
  for (std::size_t i = 0; i < truth.size(); ++i) {
    for (std::size_t j = i + 1; j < truth.size(); ++j) {
      decisions.push_back(std::log(truth[i] / truth[j]));
    }
  }
  const auto model = Pairs({"a", "b", "c", "d"}).Model();
  const Decided decided = Decide(*model, decisions);
  EXPECT_EQ(decided.category, "a");
  EXPECT_EQ(decided.confidence, decided.percents[0]);
  for (std::size_t i = 0; i < truth.size(); ++i) EXPECT_NEAR(decided.percents[i], truth[i], 5e-3);
  EXPECT_NEAR(std::accumulate(decided.percents.begin(), decided.percents.end(), 0.0), 1.0, 1e-14);
}

TEST(Coupling, FirstOfEqualProbabilitiesWins) {
  const auto model = Pairs({"a", "b", "c"}).Model();
  const Decided decided = Decide(*model, {0, 0, 0});
  EXPECT_EQ(decided.category, "a");
  EXPECT_EQ(decided.percents, Doubles(3, 1.0 / 3));
}

TEST(Coupling, NaNAndMismatchesHaveADefinedEnd) {
  const auto model = Pairs({"a", "b", "c"}).Model();
  const Decided nan = DecideUnchecked(*model, {kNaN, 1, 1});
  EXPECT_EQ(nan.code, 0);
  EXPECT_EQ(nan.category, "a");
  EXPECT_EQ(nan.confidence, 0.0);
  for (const int count : {1, 2, 3, 4}) {
    for (const std::size_t listed : {0u, 1u, 2u, 3u, 5u}) {
      const std::vector<std::string> names{"a", "b", "c", "d", "e"};
      Classifier classifier(std::vector<std::string>(
          names.begin(), names.begin() + static_cast<std::ptrdiff_t>(listed)));
      classifier.data->SetCateNumOfTarget(count);
      classifier.data->SetVEMAExtension(true);
      for (int m = 0; m < (count == 2 ? 1 : 3); ++m)
        Extend(classifier.Add(m, m + 1), -1, 0, m, m + 1);
      const Decided decided = Decide(*classifier.Model(), {1, 2, 3});
      EXPECT_EQ(decided.code, listed == 0 ? 90027 : 0) << count << " " << listed;
    }
  }
}

// Everything a case yields, in bits; every seventh case lacks an input.
TEST(Coupling, EightThreadsScoreAsOneDoes) {
  const auto model = Pairs({"a", "b", "c", "d", "e"}).Model();
  constexpr std::size_t kCases = 400;
  const auto score = [&model](std::size_t c) {
    Doubles decisions(c % 7 == 6 ? 9 : 10);
    for (std::size_t m = 0; m < decisions.size(); ++m) {
      decisions[m] = std::sin(static_cast<double>(10 * c + m));
    }
    const Decided decided = Decide(*model, decisions);
    Doubles numbers = decided.percents;
    numbers.insert(numbers.end(), {decided.confidence, static_cast<double>(decided.code)});
    return numbers;
  };
  std::vector<Doubles> alone(kCases);
  for (std::size_t c = 0; c < kCases; ++c) alone[c] = score(c);
  std::vector<Doubles> together(kCases);
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < 8; ++t) {
    threads.emplace_back([&, t] {
      for (std::size_t c = t; c < kCases; c += 8) together[c] = score(c);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(together, alone);
  EXPECT_EQ(alone[0].size(), 5u + 2);
  EXPECT_EQ(alone[6].back(), 90029.0);
}

}  // namespace
