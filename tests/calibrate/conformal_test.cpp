#include "tools/calibrate/conformal.h"

#include <cmath>
#include <random>

#include <gtest/gtest.h>

namespace svmscore::tools {
namespace {

TEST(Conformal, NeedsAsManyCasesAsTheConfidenceTakes) {
  const std::pair<double, std::size_t> kNeeded[] = {{0.5, 1},   {0.8, 4},   {0.9, 9},
                                                    {0.95, 19}, {0.99, 99}, {0.999, 999}};
  for (const auto& [confidence, cases] : kNeeded) {
    EXPECT_EQ(CasesNeeded(confidence), cases) << confidence;
    EXPECT_EQ(ConformalRank(cases, confidence), cases) << confidence;
    EXPECT_GT(ConformalRank(cases - 1, confidence), cases - 1) << confidence;
  }
}

// Over many draws of cases and one more: at least the confidence, and at most two ranks more.
TEST(Conformal, CoversWhatWasAskedFor) {
  constexpr int kDraws = 1000;
  constexpr int kFurther = 20;
  std::mt19937_64 random(1);
  // Errors with heavy tails, that grow with the value.
  const auto draw = [&random] {
    const auto uniform = [&random] {
      return std::ldexp(static_cast<double>(random() >> 11U), -53);
    };
    const double value = 10.0 * uniform();
    const double error = -std::log(1.0 - uniform()) * (uniform() < 0.5 ? -1.0 : 1.0);
    return IntervalCase{value, 3.0 - 2.0 * value + error * (1.0 + value)};
  };
  const Rescale rescale = [](double value) { return 3.0 - 2.0 * value; };
  for (const auto& [count, confidence] :
       {std::pair(19, 0.95), std::pair(100, 0.9), std::pair(250, 0.5)}) {
    double covered = 0.0;
    double squares = 0.0;
    for (int i = 0; i < kDraws; ++i) {
      std::vector<IntervalCase> cases;
      std::vector<double> residuals;
      for (int c = 0; c < count; ++c) {
        cases.push_back(draw());
        residuals.push_back(std::fabs(cases.back().observed - rescale(cases.back().value)));
      }
      const double quantile = QuantileOf(residuals, ConformalRank(cases.size(), confidence));
      const double deviation = DeviationFor(quantile, -2.0, cases, rescale);
      double share = 0.0;
      for (int c = 0; c < kFurther; ++c) {
        const IntervalCase further = draw();
        const auto [lower, upper] = IntervalOf(further.value, deviation, rescale);
        share += lower <= further.observed && further.observed <= upper ? 1.0 / kFurther : 0.0;
      }
      covered += share / kDraws;
      squares += share * share / kDraws;
    }
    const double error = std::sqrt((squares - covered * covered) / kDraws);
    EXPECT_GE(covered, confidence - 3.0 * error) << count;
    EXPECT_LE(covered, confidence + 2.0 / (count + 1.0) + 3.0 * error) << count;
  }
}

// The case at the edge stays in its interval whatever is rounded on the way.
TEST(Conformal, RoundsOutward) {
  std::mt19937_64 random(2);
  const auto uniform = [&random] { return std::ldexp(static_cast<double>(random() >> 11U), -53); };
  for (const double factor : {1.0, -3.0, 1e-7, 12345.678}) {
    for (const double constant : {0.0, 0.1, 1e9}) {
      const Rescale rescale = [=](double value) { return value * factor + constant; };
      for (int i = 0; i < 200; ++i) {
        const double value = uniform() * 1e3;
        const IntervalCase one{value, rescale(value) + uniform() - 0.5};
        const double quantile = std::fabs(one.observed - rescale(value));
        const double deviation = DeviationFor(quantile, factor, {one}, rescale);
        const auto [lower, upper] = IntervalOf(value, deviation, rescale);
        EXPECT_TRUE(lower <= one.observed && one.observed <= upper);
        const double largest = std::fabs(constant) + std::fabs(factor * value) + 1.0;
        EXPECT_NEAR(upper - lower, 2.0 * quantile, 1e-14 * largest);
      }
    }
  }
}

}  // namespace
}  // namespace svmscore::tools
