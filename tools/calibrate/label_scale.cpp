#include "tools/calibrate/label_scale.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace svmscore::tools {
namespace {

constexpr double kTolerance = 1e-9;  // next to the largest number of the field

double DistanceOf(const std::vector<double>& observed, const std::vector<double>& numbers) {
  double sum = 0.0;
  for (std::size_t c = 0; c < observed.size(); ++c) sum += std::pow(observed[c] - numbers[c], 2.0);
  return sum;
}

double DistanceOfMean(const std::vector<double>& observed) {
  double mean = 0.0;
  for (const double one : observed) mean += one / static_cast<double>(observed.size());
  return DistanceOf(observed, std::vector<double>(observed.size(), mean));
}

// The line through the cases; nothing where they are not on one that rises or falls.
std::optional<LabelScale> LineOf(const std::vector<double>& predictions,
                                 const OutputNumbers& output) {
  const auto [least, most] = std::minmax_element(predictions.begin(), predictions.end());
  const std::vector<double>& numbers = output.numbers;
  const auto at = [&](auto place) {
    return numbers[static_cast<std::size_t>(place - predictions.begin())];
  };
  LabelScale line;
  line.field = output.name;
  line.slope = (at(most) - at(least)) / (*most - *least);
  line.intercept = at(least) - line.slope * *least;
  if (line.slope == 0.0 || !std::isfinite(line.slope) || !std::isfinite(line.intercept)) return {};
  double largest = std::fabs(line.intercept);
  for (const double number : numbers) largest = std::max(largest, std::fabs(number));
  for (std::size_t c = 0; c < numbers.size(); ++c) {
    if (!(std::fabs(line.Of(predictions[c]) - numbers[c]) <= kTolerance * largest)) return {};
  }
  return line;
}

}  // namespace

std::vector<std::pair<double, double>> LabelScale::Of(
    const std::vector<std::pair<double, double>>& intervals) const {
  std::vector<std::pair<double, double>> scaled;
  scaled.reserve(intervals.size());
  for (const auto& [lower, upper] : intervals) {
    scaled.push_back(std::minmax({Of(lower), Of(upper)}));
  }
  return scaled;
}

LabelScale ScaleOfLabels(const Holdout& holdout) {
  LabelScale scale;
  const double mean = DistanceOfMean(holdout.observed);
  double best = DistanceOf(holdout.observed, holdout.predictions);
  double best_curve = best;
  std::string curved;
  for (const OutputNumbers& output : holdout.outputs) {
    const double distance = DistanceOf(holdout.observed, output.numbers);
    if (const auto line = LineOf(holdout.predictions, output)) {
      if (distance < best) {
        best = distance;
        scale = *line;
      }
    } else if (distance < best_curve) {  // not where a case has no number
      best_curve = distance;
      curved = output.name;
    }
  }
  if (best > mean && best_curve < best) scale.curved = curved;
  return scale;
}

}  // namespace svmscore::tools
