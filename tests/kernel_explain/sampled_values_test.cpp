// Shapley values estimated from orders of the players.
#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "tests/kernel_explain/explained.h"
#include "tests/model/model_fixture.h"

namespace {

using explained::ExpectSound;
using explained::Found;
using explained::Kernel;
using explained::kSigmoid;
using explained::Polynomial;
using explained::RandomSample;
using explained::Row;
using explained::Sample;
using explained::ScaleOf;
using svmscore_test::Bits;

TEST(SampledValues, CoverTheTruth) {
  for (const Kernel& kernel : {kSigmoid, Polynomial(2.5), Polynomial(-1), Polynomial(40)}) {
    SCOPED_TRACE(testing::Message() << kernel.type << " " << kernel.degree);
    Sample sample = RandomSample(kernel, 7, 30, 6, 2, 12, 0.9);
    sample.kernel.gamma = 0.04;
    sample.kernel.coef0 = 1.0;
    sample.players = {{0}, {1, 2}, {3}, {4}, {5}, {6}};
    sample.orders = 40;
    const Row truth = explained::ByDefinition(sample);
    std::size_t within_two = 0;
    std::size_t all = 0;
    Row last;
    for (sample.seed = 1; sample.seed <= 10; ++sample.seed) {
      const Found found = explained::Explain(sample);
      EXPECT_TRUE(found.sampled);
      ExpectSound(sample, found);
      EXPECT_NE(Bits(last), Bits(found.values));
      last = found.values;
      for (std::size_t i = 0; i < truth.size(); ++i, ++all) {
        const double distance = std::abs(truth[i] - found.values[i]);
        EXPECT_LE(distance, 6 * found.errors[i] + 1e-13) << i;
        within_two += distance <= 2 * found.errors[i] ? 1 : 0;
      }
    }
    EXPECT_GE(within_two, all * 90 / 100);
    EXPECT_LE(within_two, all * 99 / 100);
  }
}

TEST(SampledValues, ServeMorePlayersThanExactOnes) {
  Sample sample = RandomSample({SVMConst::kRadialBasis, 1e-3}, 4001, 3, 1, 1, 4);
  sample.cases.resize(1);
  sample.orders = 4;
  const Found found = explained::Explain(sample);
  EXPECT_TRUE(found.sampled);
  ExpectSound(sample, found);
  // An order and its reverse leave no error where players act in pairs.
  sample.kernel = Polynomial(2);
  const Found pairs = explained::Explain(sample);
  EXPECT_TRUE(pairs.sampled);
  EXPECT_LE(*std::max_element(pairs.errors.begin(), pairs.errors.end()),
            1e-12 * ScaleOf(sample, 0));
  sample.kernel.type = SVMConst::kLinear;
  EXPECT_FALSE(explained::Explain(sample).sampled);
}

}  // namespace
