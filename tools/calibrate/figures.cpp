#include "tools/calibrate/figures.h"

#include <algorithm>
#include <cmath>

namespace svmscore::tools {
namespace {

constexpr double kLeastProbability = 1e-7;

ProbabilityFigures JudgeProbabilities(const std::vector<int>& actual,
                                      const std::vector<int>& predicted,
                                      const std::vector<double>& percents, std::size_t categories) {
  ProbabilityFigures figures;
  const auto count = static_cast<double>(actual.size());
  for (std::size_t c = 0; c < actual.size(); ++c) {
    const double* p = percents.data() + c * categories;
    const auto is = static_cast<std::size_t>(actual[c]);
    for (std::size_t k = 0; k < (categories == 2 ? 1 : categories); ++k) {
      const double difference = p[k] - (is == k ? 1.0 : 0.0);
      figures.brier += difference * difference / count;
    }
    figures.log_loss -= std::log(std::max(p[is], kLeastProbability)) / count;
    if (predicted[c] < 0) continue;  // it was not scored: no probability is to be judged
    const std::size_t judged = categories == 2 ? 0 : static_cast<std::size_t>(predicted[c]);
    const double position = std::clamp(std::floor(p[judged] * 10.0), 0.0, 9.0);
    Tenth& tenth = figures.tenths[static_cast<std::size_t>(position)];
    ++tenth.cases;
    tenth.mean += p[judged];
    tenth.share += is == judged ? 1.0 : 0.0;
  }
  for (Tenth& tenth : figures.tenths) {
    if (tenth.cases == 0) continue;
    figures.ece += std::fabs(tenth.share - tenth.mean) / count;
    tenth.mean /= static_cast<double>(tenth.cases);
    tenth.share /= static_cast<double>(tenth.cases);
  }
  return figures;
}

}  // namespace

ClassFigures FiguresOf(const std::vector<int>& actual, const std::vector<int>& predicted,
                       const std::vector<double>& percents, std::size_t categories) {
  ClassFigures figures;
  figures.cases = actual.size();
  std::size_t right = 0;
  for (std::size_t c = 0; c < actual.size(); ++c) right += actual[c] == predicted[c] ? 1 : 0;
  figures.accuracy = static_cast<double>(right) / static_cast<double>(actual.size());
  if (!percents.empty()) {
    figures.probabilities = JudgeProbabilities(actual, predicted, percents, categories);
  }
  return figures;
}

IntervalFigures FiguresOf(const std::vector<double>& observed,
                          const std::vector<std::pair<double, double>>& intervals) {
  IntervalFigures figures;
  figures.cases = observed.size();
  const auto count = static_cast<double>(observed.size());
  std::size_t covered = 0;
  for (std::size_t c = 0; c < observed.size(); ++c) {
    const auto& [lower, upper] = intervals[c];
    covered += lower <= observed[c] && observed[c] <= upper ? 1 : 0;
    figures.mean_width += (upper - lower) / count;
  }
  figures.coverage = static_cast<double>(covered) / count;
  return figures;
}

}  // namespace svmscore::tools
