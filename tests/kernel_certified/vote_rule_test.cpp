// What FindUnsure calls sure must hold for all values that the bounds allow.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "tests/kernel_certified/comparison.h"

namespace {

using MCSVM_700::certified::VoteRule;
using sample::Random;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kLeast = std::numeric_limits<double>::denorm_min();
constexpr double kMost = std::numeric_limits<double>::max();

template <class List>
double Pick(const List& list, Random& random) {
  return list[random.Below(std::size(list))];
}

// The ends of what |value - d| <= error allows, or doubles next to them and inside.
std::vector<double> Allowed(double value, double error) {
  std::vector<double> allowed = {value};
  for (const double sign : {-1.0, 1.0}) {
    double end = value + sign * error;
    if (!std::isfinite(end)) end = sign * kMost;
    const auto beyond = [&] {
      const long double difference = static_cast<long double>(end) - value;
      const long double size = difference < 0 ? -difference : difference;
      return size > static_cast<long double>(error);
    };
    while (end != value && beyond()) end = std::nextafter(end, value);
    allowed.push_back(end);
  }
  return allowed;
}

TEST(VoteRule, IsSureOnlyOfWhatTheBoundsLeaveNoDoubtAbout) {
  constexpr double kValues[] = {-2,     -1,    -0.0,   0.0,       0x1p-52, 1,         1 + 0x1p-52,
                                1.0625, 2,     kLeast, -kLeast,   1e300,   kMost,     -kMost,
                                kNan,   -0.25, 0.5,    kInfinity, 3,       -kInfinity};
  constexpr double kErrors[] = {0,    0,   kLeast, 0x1p-53, 0x1p-52, 0.0625,    0.25, 0.25,
                                0.25, 0.5, 1,      2,       kMost,   kInfinity, kNan, 1e-9};
  Random random(1);
  std::size_t sure_cases = 0;
  for (int i = 0; i < 40000; ++i) {
    const std::size_t machines = 1 + random.Below(3);
    const bool ordinary = random.Chance(0.7);  // else too few would be sure
    VoteRule rule;
    rule.kind = static_cast<VoteRule::Kind>(random.Below(3));
    std::vector<double> values;
    std::vector<double> errors;
    for (std::size_t m = 0; m < machines; ++m) {
      values.push_back(ordinary ? random.Within(-2, 2) : Pick(kValues, random));
      errors.push_back(ordinary ? random.Within(0, 0.5) : Pick(kErrors, random));
      if (std::isinf(values[m])) errors[m] = kNan;  // as all levels give them
      rule.thresholds.push_back(Pick(kValues, random));
    }
    std::uint8_t unsure = 7;
    std::uint32_t best = 0;
    double low = 0;
    FindUnsure(rule, machines, {values.data(), errors.data(), 1, 1}, 1, &unsure, &best, &low);
    ASSERT_LE(unsure, 1);
    if (unsure == 1) continue;
    ++sure_cases;
    std::vector<std::vector<double>> allowed;
    for (std::size_t m = 0; m < machines; ++m) {
      ASSERT_TRUE(std::isfinite(values[m]) && std::isfinite(errors[m])) << i;
      allowed.push_back(Allowed(values[m], errors[m]));
    }
    const std::vector<int> vote = hard::VoteOf(rule, values);
    for (std::size_t choice = 0; choice < 27; ++choice) {
      std::vector<double> others;
      for (std::size_t m = 0, rest = choice; m < machines; ++m, rest /= 3) {
        others.push_back(allowed[m][rest % 3]);
      }
      ASSERT_EQ(vote, hard::VoteOf(rule, others)) << "case " << i << ", choice " << choice;
    }
  }
  EXPECT_GT(sure_cases, 4000U);
}

TEST(VoteRule, IsSureWhereBoundsAreFarFromAnyDoubt) {
  std::vector<double> values = {1.5, -1, 0.25};
  std::vector<double> errors = {0.25, 0.25, 0.125};
  for (const VoteRule::Kind kind :
       {VoteRule::Kind::kThresholds, VoteRule::Kind::kLargest, VoteRule::Kind::kSmallest}) {
    std::uint8_t unsure = 1;
    std::uint32_t best = 0;
    double low = 0;
    MCSVM_700::certified::FindUnsure({kind, {1, 0, 0}}, 3, {values.data(), errors.data(), 1, 1}, 1,
                                     &unsure, &best, &low);
    EXPECT_EQ(unsure, 0) << static_cast<int>(kind);
  }
}

// Machines for the pairs of four categories, some of which vote for a category outside the list.
TEST(VoteRule, IsSureOfAWinnerThatNoOpenVoteCanChange) {
  Random random(2);
  int sure_ones = 0;
  for (int i = 0; i < 20000; ++i) {
    VoteRule rule;
    rule.categories = 4;
    for (int a = 0; a < 4; ++a) {
      for (int b = a + 1; b < 4; ++b) {
        rule.votes.emplace_back(random.Chance(0.05) ? 9 : a, random.Chance(0.05) ? -1 : b);
      }
    }
    std::vector<double> values;
    std::vector<double> errors;
    std::vector<std::size_t> open;
    for (std::size_t m = 0; m < rule.votes.size(); ++m) {
      rule.thresholds.push_back(random.Chance(0.5) ? 0 : 0.25);
      values.push_back(random.Within(-2, 2));
      errors.push_back(random.Chance(0.01) ? kInfinity : random.Within(0, 1));
      if (std::fabs(values[m] - rule.thresholds[m]) <= errors[m]) open.push_back(m);
    }
    std::vector<int> certain;
    std::vector<int> possible;
    if (!IsWinnerSure(rule, {values.data(), errors.data(), 1, 1}, certain, possible)) continue;
    sure_ones += open.empty() ? 0 : 1;
    long winner = -1;
    for (std::size_t choice = 0; choice < std::size_t{1} << open.size(); ++choice) {
      std::vector<double> chosen = values;
      for (std::size_t o = 0; o < open.size(); ++o) {
        chosen[open[o]] = rule.thresholds[open[o]] + ((choice >> o & 1) == 0 ? -1 : 1);
      }
      std::vector<int> tickets(4, 0);
      for (std::size_t m = 0; m < rule.votes.size(); ++m) {
        const auto [above, other] = rule.votes[m];
        const int vote = chosen[m] > rule.thresholds[m] ? above : other;
        if (vote >= 0 && vote < 4) ++tickets[static_cast<std::size_t>(vote)];
      }
      const long first = std::max_element(tickets.begin(), tickets.end()) - tickets.begin();
      if (winner == -1) winner = first;
      ASSERT_EQ(winner, first) << i;
    }
  }
  EXPECT_GT(sure_ones, 1000);
}

}  // namespace
