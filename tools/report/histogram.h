// Counting numbers in bins that people can read. [any thread] Fails: std::bad_alloc, or as stated.
#ifndef TOOLS_REPORT_HISTOGRAM_H_
#define TOOLS_REPORT_HISTOGRAM_H_

#include <cstddef>
#include <vector>

namespace svmscore::tools {

// The smallest of 1, 2 and 5 times a power of ten that is at least `least`; 1 for what is not a
// positive finite number. Fails: never.
double NiceStep(double least);

// The multiples of a nice step in [low, high]: about `wanted` of them, and never more than twice as
// many and two. One number where the range is empty or a point.
std::vector<double> NiceTicks(double low, double high, std::size_t wanted);

// Bin b has the numbers in [low + b * width, low + (b + 1) * width), the last bin those at its
// upper edge too. counts[g][b] is of the numbers of group g.
struct Histogram {
  double low = 0.0;
  double width = 1.0;
  std::vector<std::vector<std::size_t>> counts;

  std::size_t Bins() const { return counts.empty() ? 0 : counts.front().size(); }
  double High() const { return low + width * static_cast<double>(Bins()); }
};

// Of finite numbers, in at most about `most_bins` bins whose edges are multiples of a nice step;
// `edge`, such as a threshold, becomes an edge too where it is finite. `groups` are parallel to the
// numbers, each below `group_count`. Numbers that are not finite are left out.
Histogram HistogramOf(const std::vector<double>& numbers, const std::vector<std::size_t>& groups,
                      std::size_t group_count, double edge, std::size_t most_bins);

}  // namespace svmscore::tools

#endif  // TOOLS_REPORT_HISTOGRAM_H_
