#include "svm/kernel/certified/vote_rule.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace MCSVM_700::certified {
namespace {

// Makes up for the rounding of d~ - t, of a bound's ends, and of this product.
constexpr double kWider = 1 + 0x1p-48;

// An end of [d~ - E, d~ + E], moved outwards by more than it was rounded. Not a number, or
// infinite, where E is.
double Low(double decision, double error) {
  return decision - (error * kWider + std::fabs(decision) * 0x1p-50);
}

double High(double decision, double error) {
  return decision + (error * kWider + std::fabs(decision) * 0x1p-50);
}

void ByThresholds(const std::vector<double>& thresholds, const Estimates& estimates,
                  std::size_t count, std::uint8_t* unsure) {
  for (std::size_t m = 0; m < thresholds.size(); ++m) {
    const double* decisions = estimates.decisions + m * estimates.stride;
    const double* errors = estimates.errors + m * estimates.error_stride;
    const double threshold = thresholds[m];
    const auto sure = [&](std::size_t c) {
      return std::fabs(decisions[c] - threshold) > errors[c] * kWider;
    };
    // Nearly always all of a stretch are sure, and counting them is quick.
    constexpr std::size_t kStretch = 64;
    for (std::size_t begin = 0; begin < count; begin += kStretch) {
      const std::size_t end = begin + kStretch < count ? begin + kStretch : count;
      std::size_t sure_ones = 0;
      for (std::size_t c = begin; c < end; ++c) sure_ones += sure(c) ? 1 : 0;
      if (sure_ones == end - begin) continue;
      for (std::size_t c = begin; c < end; ++c) {
        if (!sure(c)) unsure[c] = 1;
      }
    }
  }
}

// Values are those of `sign` times the machines': the largest wins, surely where its low end is
// above every other's high end.
void ByLargest(double sign, std::size_t machines, const Estimates& estimates, std::size_t count,
               std::uint8_t* unsure, std::uint32_t* best, double* best_low) {
  for (std::size_t c = 0; c < count; ++c) {
    best[c] = 0;
    best_low[c] = -std::numeric_limits<double>::infinity();
  }
  for (std::uint32_t m = 0; m < machines; ++m) {
    const double* decisions = estimates.decisions + m * estimates.stride;
    const double* errors = estimates.errors + m * estimates.error_stride;
    for (std::size_t c = 0; c < count; ++c) {
      const double low = Low(sign * decisions[c], errors[c]);
      if (low > best_low[c]) {
        best_low[c] = low;
        best[c] = m;
      }
    }
  }
  for (std::uint32_t m = 0; m < machines; ++m) {
    const double* decisions = estimates.decisions + m * estimates.stride;
    const double* errors = estimates.errors + m * estimates.error_stride;
    for (std::size_t c = 0; c < count; ++c) {
      const double high = High(sign * decisions[c], errors[c]);
      const bool below = high < best_low[c];
      const bool itself = m == best[c] && std::isfinite(high);
      if (!below && !itself) unsure[c] = 1;
    }
  }
}

}  // namespace

bool IsWinnerSure(const VoteRule& rule, const Estimates& estimates, std::vector<int>& certain,
                  std::vector<int>& possible) {
  if (rule.votes.empty()) return false;
  certain.assign(rule.categories, 0);
  possible.assign(rule.categories, 0);
  const auto add = [&rule](std::vector<int>& tickets, int category) {
    const auto position = static_cast<std::size_t>(category);
    if (category >= 0 && position < rule.categories) ++tickets[position];
  };
  for (std::size_t m = 0; m < rule.votes.size(); ++m) {
    const double decision = estimates.decisions[m * estimates.stride];
    const double error = estimates.errors[m * estimates.error_stride];
    if (!std::isfinite(error)) return false;
    const auto [above, other] = rule.votes[m];
    const double distance = decision - rule.thresholds[m];
    const bool sure = std::fabs(distance) > error * kWider;
    const int vote = distance > 0 ? above : other;
    if (sure) add(certain, vote);
    add(possible, sure ? vote : above);
    if (!sure && other != above) add(possible, other);
  }
  const auto winner = std::max_element(certain.begin(), certain.end());  // the first of the largest
  if (winner == certain.end() || *winner == 0) return false;
  for (std::size_t k = 0; k < rule.categories; ++k) {
    const auto best = static_cast<std::size_t>(winner - certain.begin());
    if (k == best) continue;
    if (k < best ? possible[k] >= *winner : possible[k] > *winner) return false;
  }
  return true;
}

void FindUnsure(const VoteRule& rule, std::size_t machines, const Estimates& estimates,
                std::size_t count, std::uint8_t* unsure, std::uint32_t* best, double* best_low) {
  for (std::size_t c = 0; c < count; ++c) unsure[c] = 0;
  if (rule.kind == VoteRule::Kind::kThresholds) {
    ByThresholds(rule.thresholds, estimates, count, unsure);
  } else {
    const double sign = rule.kind == VoteRule::Kind::kLargest ? 1.0 : -1.0;
    ByLargest(sign, machines, estimates, count, unsure, best, best_low);
  }
}

}  // namespace MCSVM_700::certified
