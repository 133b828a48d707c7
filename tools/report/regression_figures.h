// How predictions of a regression agree with what cases are.
#ifndef TOOLS_REPORT_REGRESSION_FIGURES_H_
#define TOOLS_REPORT_REGRESSION_FIGURES_H_

#include <cstddef>
#include <optional>
#include <vector>

#include "tools/report/scored_cases.h"

namespace svmscore::tools {

// Over the cases with observed values y and predictions f, in units of the target.
struct RegressionFigures {
  std::size_t cases = 0;
  double root_mean_square = 0.0;    // sqrt(mean (y - f)^2)
  double mean_absolute = 0.0;       // mean |y - f|
  std::optional<double> r_squared;  // 1 - sum (y - f)^2 / sum (y - mean y)^2; nothing where
                                    // all y are equal
  std::optional<IntervalFigures> intervals;  // nothing where a case lacks one
};
// REQUIRES: a regression's cases, one with an observed value at least. [any thread] Fails:
// std::bad_alloc.
RegressionFigures FiguresOf(const ScoredCases& cases);

// Leaves `most` of the positions, in their order: a random draw, the same for the same positions.
// [any thread] Fails: std::bad_alloc.
void ThinOut(std::vector<std::size_t>& positions, std::size_t most);

}  // namespace svmscore::tools

#endif  // TOOLS_REPORT_REGRESSION_FIGURES_H_
