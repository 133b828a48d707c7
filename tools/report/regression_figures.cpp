#include "tools/report/regression_figures.h"

#include <algorithm>
#include <cmath>

namespace svmscore::tools {

RegressionFigures FiguresOf(const ScoredCases& cases) {
  RegressionFigures figures;
  std::vector<double> observed;
  std::vector<std::pair<double, double>> intervals;
  double sum = 0.0;
  double squares = 0.0;
  for (std::size_t c = 0; c < cases.Size(); ++c) {
    if (std::isnan(cases.observed[c])) continue;
    const double residual = cases.observed[c] - cases.values[c];
    squares += residual * residual;
    figures.mean_absolute += std::fabs(residual);
    sum += cases.observed[c];
    observed.push_back(cases.observed[c]);
    if (cases.intervals.size() == cases.Size()) intervals.push_back(cases.intervals[c]);
  }
  figures.cases = observed.size();
  const auto count = static_cast<double>(figures.cases);
  figures.root_mean_square = std::sqrt(squares / count);
  figures.mean_absolute /= count;
  double spread = 0.0;
  for (const double y : observed) spread += (y - sum / count) * (y - sum / count);
  if (spread > 0.0) figures.r_squared = 1.0 - squares / spread;
  if (!intervals.empty()) figures.intervals = FiguresOf(observed, intervals);
  return figures;
}

void ThinOut(std::vector<std::size_t>& positions, std::size_t most) {
  if (positions.size() <= most) return;
  const auto key = [](std::size_t position) { return DrawnKey(2, position); };
  std::nth_element(positions.begin(), positions.begin() + static_cast<std::ptrdiff_t>(most),
                   positions.end(),
                   [&key](std::size_t a, std::size_t b) { return key(a) < key(b); });
  positions.resize(most);
  std::sort(positions.begin(), positions.end());
}

}  // namespace svmscore::tools
