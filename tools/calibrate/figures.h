// How far probabilities, and intervals, keep what they promise.
#ifndef TOOLS_CALIBRATE_FIGURES_H_
#define TOOLS_CALIBRATE_FIGURES_H_

#include <array>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace svmscore::tools {

// The cases whose probability is in [t / 10, (t + 1) / 10), in the last tenth also those with 1.
struct Tenth {
  std::size_t cases = 0;
  double mean = 0.0;   // of their probabilities
  double share = 0.0;  // of them that are what the probability is of
};

// Figures of probabilities p of K categories on n cases:
//   brier     1/n sum (p - y)^2 for the first of two categories, y being 1 or 0; of three and more
//             the sum over all categories, between 0 and 2
//   log_loss  -1/n sum ln max(p of the actual category, 1e-7)
//   ece       the expected calibration error: 1/n sum over tenths of cases |share - mean|
// The tenths are those of the probability of the first of two categories; of three and more, of the
// predicted category's.
struct ProbabilityFigures {
  double brier = 0.0;
  double log_loss = 0.0;
  double ece = 0.0;
  std::array<Tenth, 10> tenths;
};
struct ClassFigures {
  std::size_t cases = 0;
  double accuracy = 0.0;
  std::optional<ProbabilityFigures> probabilities;  // nothing for a model that has none
};

// `percents` are [case * categories + category], or empty. A case with the prediction -1 counts as
// wrong, and is in no tenth. REQUIRES: there is a case; lists are
// parallel. [any thread] Fails: never.
ClassFigures FiguresOf(const std::vector<int>& actual, const std::vector<int>& predicted,
                       const std::vector<double>& percents, std::size_t categories);

struct IntervalFigures {
  std::size_t cases = 0;
  double coverage = 0.0;
  double mean_width = 0.0;
};
// Of intervals with their bounds. REQUIRES: there is a case; lists are parallel. [any thread]
// Fails: never.
IntervalFigures FiguresOf(const std::vector<double>& observed,
                          const std::vector<std::pair<double, double>>& intervals);

}  // namespace svmscore::tools

#endif  // TOOLS_CALIBRATE_FIGURES_H_
