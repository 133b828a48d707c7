// Pairwise sigmoids, their coupling, and the decisions made from them.
#include <gtest/gtest.h>

#include <cmath>

#include "tests/model/model_fixture.h"

namespace {

using namespace svmscore_test;  // NOLINT
using Doubles = std::vector<double>;
using Rows = std::vector<Doubles>;

double Logistic(double x) {
  return 1 / (1 + std::exp(-x));
}

struct ExactSigmoid {
  double f, a, b, expected;
};
struct ExactPercents {
  Doubles decisions;
  Doubles expected;
};
#include "tests/model/exact_probabilities.inc"

TEST(Exact, SigmoidsVoteSharesAndCoupledProbabilities) {
  for (const auto& [f, a, b, expected] : kSigmoids) {
    EXPECT_EQ(Bits({SVMModel().ComputeVEMAZValue(f, a, b)}), Bits({expected})) << f;
  }
  for (const auto& [decisions, expected] : kShares) {
    const auto classes = expected.size();
    const auto model = Classifier(classes).AddPairs(static_cast<int>(classes)).Model();
    EXPECT_EQ(Bits(Decide(*model, decisions).percents), Bits(expected)) << classes;
  }
  for (const auto& [decisions, expected] : kCoupled) {
    Classifier classifier(expected.size());
    classifier.AddPairs(static_cast<int>(expected.size()), true);
    double m = 0;
    for (Machine* machine : classifier.data->GetSupportVectorMachines()) {
      machine->extension->a = -(1 + m / 8);
      machine->extension->b = m++ / 16 - 0.25;
    }
    EXPECT_EQ(Bits(Decide(*classifier.Model(), decisions).percents), Bits(expected))
        << expected.size();
  }
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
  Classifier classifier(3);
  classifier.AddPairs(3).data->GetSupportVectorMachines()[1]->extension->a = -100;
  const auto model = classifier.Model();
  Rows r(3, Doubles(3, 9.0));
  EXPECT_FALSE(model->CalculateClassProbabilites({0, 1, -1e300}, r).IsError());
  EXPECT_EQ(r, (Rows{{0, 0.5, 0.9999999}, {0.5, 0, 1e-7}, {1 - 0.9999999, 1 - 1e-7, 0}}));
  Rows ragged{{}, {1, 2, 3, 4}};
  EXPECT_FALSE(model->CalculateClassProbabilites({1}, ragged).IsError());
  EXPECT_EQ(ragged[1].size(), 2u);
  Rows none;
  EXPECT_EQ(model->CalculateClassProbabilites({1}, none).GetErrorCode(), 90027);
}

// The pair without parameters takes none from its neighbours and does not consume a machine, so
// that the pairs after it stay empty too.
TEST(Pairwise, AMachineWithoutItsExtensionAmongMachinesWithOne) {
  Classifier classifier(3);
  Machine* second = classifier.AddPairs(3, true).data->GetSupportVectorMachines()[1];
  delete second->extension;
  second->extension = nullptr;
  const auto model = classifier.Model();
  Rows r(3, Doubles(3, 0.0));
  EXPECT_FALSE(model->CalculateClassProbabilites({1, 1, 1}, r).IsError());
  EXPECT_EQ(r, (Rows{{0, Logistic(1), 0}, {1 - Logistic(1), 0, 0}, {0, 0, 0}}));
  const Decided decided = Decide(*model, {1, 1, 1});
  EXPECT_EQ(decided.code, 0);
  EXPECT_EQ(decided.percents.size(), 3u)
      << "zero diagonals couple to NaN, and that is the end of it";
  EXPECT_EQ(decided.category, "a");
}

// The previous vote counts once more, and the previous parameters are used for its pair.
TEST(Pairwise, AnAbsentMachineRepeatsTheOneBefore) {
  Classifier classifier(3);
  classifier.AddPairs(3);
  auto& machines = const_cast<std::vector<Machine*>&>(classifier.data->GetSupportVectorMachines());
  delete machines[1];
  machines[1] = nullptr;
  machines[0]->extension->a = -2;
  const auto model = classifier.Model();
  EXPECT_EQ(Decide(*model, {-1, 0, -1}).percents, (Doubles{0, 2.0 / 3, 1.0 / 3}));
  Rows r(3, Doubles(3, 0.0));
  EXPECT_FALSE(model->CalculateClassProbabilites({1, 2, 3}, r).IsError());
  EXPECT_EQ(r[0][2], Logistic(4));
  EXPECT_EQ(r[1][2], Logistic(3));
}

TEST(Pairwise, TheCountOfTheDataMayDifferFromTheTargetsList) {
  for (const std::size_t listed : {0u, 1u, 2u, 3u, 5u}) {
    const long code = listed == 0 ? 90027 : 0;
    for (const double decision : {1.0, -1.0}) {  // the latter for c, which the short lists lack
      const Decided votes = Decide(*Classifier(listed).AddPairs(3).Model(), Doubles(3, decision));
      EXPECT_EQ(votes.code, code) << listed;
      EXPECT_EQ(votes.percents.size(), listed);
    }
    for (const int count : {1, 2, 3, 4}) {
      Classifier coupled(listed);
      coupled.AddPairs(count == 2 ? 2 : 3, true).data->SetCateNumOfTarget(count);
      const Decided decided = Decide(*coupled.Model(), {count == 2 ? 1.0 : -1.0, -1, -1});
      EXPECT_EQ(decided.code, code) << count << " " << listed;
      if (count != 3 || listed == 0 || listed == 3) continue;
      EXPECT_EQ(decided.category, "a") << "no percentage belongs to a category";
      EXPECT_EQ(decided.percents, listed < 3 ? Doubles(listed, 0.0) : Doubles());
    }
  }
}

TEST(BinaryProbability, OddNumbersAndExtensions) {
  const auto plain = Classifier(2).AddPairs(2, true).Model();
  EXPECT_EQ(Decide(*plain, {0}).category, "a") << "the response, where both are equal";
  EXPECT_EQ(DecideUnchecked(*plain, {kNaN}).category, "b");
  const auto decide = [](int response, int non_response, double decision) {
    Classifier classifier(2);
    Extend(classifier.Add(0, 1), -1, 0, response, non_response);
    classifier.data->SetVEMAExtension(true);
    return Decide(*classifier.Model(), {decision});
  };
  const Decided no_other = decide(1, -1, -5);
  EXPECT_EQ(no_other.category, "b") << "the response category, whatever the value";
  EXPECT_EQ(no_other.percents, Doubles(2, 0.0));
  EXPECT_EQ(decide(7, 8, 5).code, 90027);
  EXPECT_EQ(decide(7, 8, -5).code, 90027);
  Classifier bare(2);
  bare.data->SetVEMAExtension(true);
  bare.Add(0, 1);
  EXPECT_EQ(Decide(*bare.Model(), {-5}).category, "a");
}

TEST(Coupling, DecidesWhateverTheMethodSays) {
  Classifier classifier(3);
  classifier.AddPairs(3, true).data->SetClassificationMethod(true);
  const Doubles decisions{1, 2, -1};
  EXPECT_EQ(Decide(*classifier.Model(), decisions).percents,
            Decide(*Classifier(3).AddPairs(3, true).Model(), decisions).percents);
}

TEST(Coupling, FirstOfEqualProbabilitiesWinsAndNaNDoesNot) {
  const auto model = Classifier(3).AddPairs(3, true).Model();
  const Decided equal = Decide(*model, {0, 0, 0});
  EXPECT_EQ(equal.category, "a");
  EXPECT_EQ(equal.confidence, 1.0 / 3);
  EXPECT_EQ(equal.percents, Doubles(3, 1.0 / 3));
  const Decided nan = DecideUnchecked(*model, {kNaN, 1, 1});
  EXPECT_EQ(nan.code, 0);
  EXPECT_EQ(nan.category, "a");
  EXPECT_EQ(nan.confidence, 0.0);
}

}  // namespace
