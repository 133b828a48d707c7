#include "tools/calibrate/sigmoid_fit.h"

#include <chrono>
#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>

#include <gtest/gtest.h>

namespace svmscore::tools {
namespace {

// make_reference.py makes the same cases.
struct Set {
  const char* name;
  int count;
  int share;
  double separation;
  double scale;
  double offset;
  double steps;
  double a;  // by scikit-learn
  double b;
};
const Set kSets[] = {
#include "tests/calibrate/sigmoid_reference.inc"
};

SigmoidCases CasesOf(const Set& set) {
  SigmoidCases cases;
  std::uint64_t state = 1;
  const auto uniform = [&state] {
    state = state * 6364136223846793005U + 1442695040888963407U;
    return std::ldexp(static_cast<double>(state >> 11U), -53);
  };
  for (int i = 0; i < set.count; ++i) {
    const bool positive = static_cast<std::int64_t>(i) * set.share / 1000 !=
                          static_cast<std::int64_t>(i + 1) * set.share / 1000;
    double f = uniform();
    for (int more = 0; more < 3; ++more) f += uniform();
    f -= 2.0;
    f += positive ? set.separation / 2.0 : -set.separation / 2.0;
    if (set.steps != 0.0) f = std::floor(f * set.steps) / set.steps;
    cases.Add(f * set.scale + set.offset, positive);
  }
  return cases;
}

// The larger derivative of the objective in A and B, a case, in another arithmetic than the fit's.
double SlopeAt(const SigmoidCases& cases, Sigmoid at) {
  long double pro = 0.0L;
  for (const unsigned char positive : cases.positive) pro += positive;
  const auto count = static_cast<long double>(cases.positive.size());
  long double da = 0.0L;
  long double db = 0.0L;
  for (std::size_t i = 0; i < cases.positive.size(); ++i) {
    const long double target =
        cases.positive[i] != 0 ? (pro + 1.0L) / (pro + 2.0L) : 1.0L / (count - pro + 2.0L);
    const long double f = cases.decisions[i];
    const long double p = 1.0L / (1.0L + std::exp(f * at.a + at.b));
    da += f * (target - p);
    db += target - p;
  }
  return static_cast<double>(std::max(std::fabs(da), std::fabs(db)) / count);
}

TEST(SigmoidFit, IsTheOptimumThatScikitLearnComesNear) {
  for (const Set& set : kSets) {
    SCOPED_TRACE(set.name);
    const SigmoidCases cases = CasesOf(set);
    const Sigmoid fitted = FitSigmoid(cases);
    EXPECT_LT(SlopeAt(cases, fitted), 1e-9);
    if (set.scale == 0.0) {  // one of many: only the probability is determined
      EXPECT_NEAR(fitted.a * set.offset + fitted.b, set.a * set.offset + set.b, 1e-4);
      continue;
    }
    EXPECT_NEAR(fitted.a, set.a, 1e-4 * std::max(1.0, std::fabs(set.a)));
    EXPECT_NEAR(fitted.b, set.b, 1e-4 * std::max(1.0, std::fabs(set.b)));
  }
}

TEST(SigmoidFit, DoesNotDependOnTheScaleOfDecisionValues) {
  const SigmoidCases cases = CasesOf(kSets[0]);
  const Sigmoid fitted = FitSigmoid(cases);
  for (const double scale : {1e-300, 1e-9, 1e9, 1e300}) {
    SigmoidCases scaled = cases;
    for (double& f : scaled.decisions) f *= scale;
    const Sigmoid other = FitSigmoid(scaled);
    EXPECT_NEAR(other.a * scale / fitted.a, 1.0, 1e-9) << scale;
    EXPECT_NEAR(other.b / fitted.b, 1.0, 1e-9) << scale;
  }
}

TEST(SigmoidFit, ExpectsTheCategoryThatAllCasesAreOf) {
  for (const bool positive : {false, true}) {
    SigmoidCases cases;
    for (int i = 0; i < 8; ++i) cases.Add(i, positive);
    const Sigmoid fitted = FitSigmoid(cases);
    EXPECT_NEAR(1.0 / (1.0 + std::exp(fitted.a * 3.0 + fitted.b)), positive ? 0.9 : 0.1, 1e-9);
  }
}

TEST(SigmoidFit, RefusesWhatNumbersCannotHold) {
  SigmoidCases cases;
  for (int i = 0; i < 20; ++i) {
    cases.Add(i * std::numeric_limits<double>::denorm_min(), i % 3 == 0 || i > 14);
  }
  EXPECT_THROW(FitSigmoid(cases), std::domain_error);
}

}  // namespace
}  // namespace svmscore::tools
