#include "tools/report/histogram.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace svmscore::tools {

double NiceStep(double least) {
  if (!std::isfinite(least) || least <= 0.0) return 1.0;
  const double power = std::floor(std::log10(least));
  for (const double more : {0.0, 1.0}) {
    const double unit = std::pow(10.0, power + more);
    for (const double digit : {1.0, 2.0, 5.0}) {
      // The logarithm may be off by a rounding.
      if (digit * unit >= least * (1.0 - 1e-12)) return digit * unit;
    }
  }
  return std::isfinite(least * 2.0) ? least : 1.0;
}

std::vector<double> NiceTicks(double low, double high, std::size_t wanted) {
  if (!std::isfinite(low) || !std::isfinite(high)) return {0.0};
  const double step =
      NiceStep((high - low) / static_cast<double>(std::max<std::size_t>(wanted, 1)));
  if (!(high > low) || !std::isfinite(high - low)) return {low};
  const double first = std::ceil(low / step - 1e-9);
  const double last = std::floor(high / step + 1e-9);
  std::vector<double> ticks;
  // A range that is narrow for its size has no multiples that differ.
  if (!(std::fabs(first) < 1e15 && std::fabs(last) < 1e15)) return {low, high};
  for (double k = first; k <= last; k += 1.0) ticks.push_back(k == 0.0 ? 0.0 : k * step);
  if (ticks.empty()) ticks.push_back(low);
  return ticks;
}

Histogram HistogramOf(const std::vector<double>& numbers, const std::vector<std::size_t>& groups,
                      std::size_t group_count, double edge, std::size_t most_bins) {
  double low = std::numeric_limits<double>::infinity();
  double high = -low;
  for (const double number : numbers) {
    if (!std::isfinite(number)) continue;
    low = std::min(low, number);
    high = std::max(high, number);
  }
  Histogram histogram;
  if (low > high) return histogram;
  double origin = std::isfinite(edge) ? edge : 0.0;
  const double bins = static_cast<double>(std::max<std::size_t>(most_bins, 2));
  const double spread = high - low;
  histogram.width = NiceStep(spread > 0.0 ? spread / bins : std::fabs(low) / 10.0);
  if (!(std::fabs((low - origin) / histogram.width) < 1e12) ||
      !(std::fabs((high - origin) / histogram.width) < 1e12) || !std::isfinite(spread)) {
    // Numbers that lie close together and far from the edge.
    origin = low;
    histogram.width = std::isfinite(spread) && spread > 0.0 ? spread / bins : 1.0;
  }
  const double first = std::floor((low - origin) / histogram.width);
  const double count = std::floor((high - origin) / histogram.width) - first + 1.0;
  histogram.low = origin + first * histogram.width;
  const auto size = static_cast<std::size_t>(std::clamp(count, 1.0, 4.0 * bins));
  histogram.counts.assign(group_count, std::vector<std::size_t>(size, 0));
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (!std::isfinite(numbers[i])) continue;
    const double bin = std::floor((numbers[i] - histogram.low) / histogram.width);
    const double kept = std::clamp(bin, 0.0, static_cast<double>(size - 1));
    ++histogram.counts[groups.empty() ? 0 : groups[i]][static_cast<std::size_t>(kept)];
  }
  return histogram;
}

}  // namespace svmscore::tools
