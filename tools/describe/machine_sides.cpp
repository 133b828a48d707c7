#include "tools/describe/machine_sides.h"

namespace svmscore::tools {

MachineSides SidesOf(const ModelSummary& summary, std::pair<int, int> categories,
                     std::size_t machine) {
  MachineSides sides;
  auto [target, alternate] = categories;
  if (summary.scheme.method == Method::kRegression) return sides;
  if (summary.scheme.method == Method::kBinary && summary.categories.size() == 2) {
    if (target >= 0 && alternate < 0) alternate = 1 - target;
  }
  sides.above = summary.max_wins ? target : alternate;
  sides.below = summary.max_wins ? alternate : target;
  // The largest or smallest value wins, wherever it lies.
  if (summary.scheme.method == Method::kOneAgainstAll) return sides;
  sides.threshold =
      machine < summary.machines.size() ? summary.machines[machine].threshold : summary.threshold;
  return sides;
}

}  // namespace svmscore::tools
