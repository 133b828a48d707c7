#include "tools/report/chosen_cases.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace svmscore::tools {
namespace {

constexpr double kNone = -std::numeric_limits<double>::infinity();

// The position with the largest merit, the first of several; none has the merit kNone.
template <typename Merit>
void Choose(CaseChoice choice, std::size_t count, Merit merit,
            std::vector<std::pair<CaseChoice, std::size_t>>& chosen) {
  std::size_t best = count;
  double most = kNone;
  for (std::size_t at = 0; at < count; ++at) {
    const double value = merit(at);
    if (!(value > most)) continue;
    most = value;
    best = at;
  }
  const bool is_there = std::any_of(chosen.begin(), chosen.end(),
                                    [best](const auto& other) { return other.second == best; });
  if (best < count && !is_there) chosen.emplace_back(choice, best);
}

// The upper median of the numbers that are not NaN; NaN without one.
template <typename Number>
double Middle(std::size_t count, Number number) {
  std::vector<double> numbers;
  for (std::size_t at = 0; at < count; ++at) {
    const double value = number(at);
    if (!std::isnan(value)) numbers.push_back(value);
  }
  if (numbers.empty()) return std::numeric_limits<double>::quiet_NaN();
  const auto middle = numbers.begin() + static_cast<std::ptrdiff_t>(numbers.size() / 2);
  std::nth_element(numbers.begin(), middle, numbers.end());
  return *middle;
}

// By what is predicted: a rescaling may turn the order of the decision values round.
std::vector<std::pair<CaseChoice, std::size_t>> ChooseOfRegression(const ScoredCases& cases) {
  std::vector<std::pair<CaseChoice, std::size_t>> chosen;
  const auto prediction = [&](std::size_t at) { return cases.values[at]; };
  Choose(CaseChoice::kHighest, cases.Size(), prediction, chosen);
  Choose(
      CaseChoice::kLowest, cases.Size(), [&](std::size_t at) { return -prediction(at); }, chosen);
  Choose(
      CaseChoice::kLargestResidual, cases.Size(),
      [&](std::size_t at) {
        const double residual = std::fabs(cases.observed[at] - cases.values[at]);
        if (std::isnan(residual)) return kNone;
        return residual;
      },
      chosen);
  if (chosen.size() > 2) return chosen;
  const double middle = Middle(cases.Size(), prediction);
  Choose(
      CaseChoice::kMiddle, cases.Size(),
      [&](std::size_t at) { return -std::fabs(prediction(at) - middle); }, chosen);
  return chosen;
}

}  // namespace

bool IsAbout(const MachineSides& sides, const ScoredCases& cases, std::size_t at) {
  if (sides.above < 0 || sides.below < 0) return true;
  const auto is_either = [&sides](int category) {
    return category == sides.above || category == sides.below;
  };
  return is_either(cases.actual[at]) || is_either(cases.predicted[at]);
}

std::size_t HardestMachine(const std::vector<MachineSides>& sides, const ScoredCases& cases) {
  std::size_t hardest = 0;
  double closest = std::numeric_limits<double>::infinity();
  for (std::size_t m = 0; m < sides.size(); ++m) {
    if (std::isnan(sides[m].threshold)) continue;
    double sum = 0.0;
    double count = 0.0;
    for (std::size_t c = 0; c < cases.Size(); ++c) {
      if (!IsAbout(sides[m], cases, c)) continue;
      sum += std::fabs(cases.decisions[c * cases.machines + m] - sides[m].threshold);
      count += 1.0;
    }
    if (count == 0.0 || !(sum / count < closest)) continue;
    closest = sum / count;
    hardest = m;
  }
  return hardest;
}

std::vector<std::pair<CaseChoice, std::size_t>> ChooseCases(const MachineSides& sides,
                                                            std::size_t machine,
                                                            const ScoredCases& cases) {
  if (!cases.classification) return ChooseOfRegression(cases);
  std::vector<std::pair<CaseChoice, std::size_t>> chosen;
  const bool has_threshold = !std::isnan(sides.threshold);
  const double threshold = has_threshold ? sides.threshold : 0.0;
  // How far above the threshold; NaN where the machine is not about the case.
  const auto above = [&](std::size_t at) {
    return IsAbout(sides, cases, at) ? cases.decisions[at * cases.machines + machine] - threshold
                                     : std::numeric_limits<double>::quiet_NaN();
  };
  // Of the cases on one side; without a threshold all are on both.
  const auto on_side = [&](bool is_above, std::size_t at) {
    const double value = above(at);
    return !has_threshold || (value > 0.0) == is_above ? value
                                                       : std::numeric_limits<double>::quiet_NaN();
  };
  Choose(
      CaseChoice::kSurestAbove, cases.Size(), [&](std::size_t at) { return on_side(true, at); },
      chosen);
  Choose(
      CaseChoice::kSurestBelow, cases.Size(), [&](std::size_t at) { return -on_side(false, at); },
      chosen);
  if (!has_threshold) return chosen;
  // The middle of those on one side.
  for (const bool is_above : {true, false}) {
    const double middle =
        Middle(cases.Size(), [&](std::size_t at) { return on_side(is_above, at); });
    Choose(
        is_above ? CaseChoice::kTypicalAbove : CaseChoice::kTypicalBelow, cases.Size(),
        [&](std::size_t at) { return -std::fabs(on_side(is_above, at) - middle); }, chosen);
  }
  Choose(
      CaseChoice::kWorstMistake, cases.Size(),
      [&](std::size_t at) {
        if (cases.actual[at] == sides.above && above(at) < 0.0) return -above(at);
        if (cases.actual[at] == sides.below && above(at) > 0.0) return above(at);
        return kNone;
      },
      chosen);
  Choose(
      CaseChoice::kClosest, cases.Size(), [&](std::size_t at) { return -std::fabs(above(at)); },
      chosen);
  return chosen;
}

}  // namespace svmscore::tools
