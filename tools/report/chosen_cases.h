// Which machine, and which of its cases, a report looks at closely. [any thread] Fails:
// std::bad_alloc.
#ifndef TOOLS_REPORT_CHOSEN_CASES_H_
#define TOOLS_REPORT_CHOSEN_CASES_H_

#include <cstddef>
#include <utility>
#include <vector>

#include "tools/report/explanation.h"

namespace svmscore::tools {

// Whether a machine is about the case: not where it decides between two categories, and the case is
// neither and is predicted as neither.
bool IsAbout(const MachineSides& sides, const ScoredCases& cases, std::size_t at);

// The machine whose cases lie, on the average, closest to its threshold; the first machine where
// there is none with a threshold. `sides` has an entry for each machine.
std::size_t HardestMachine(const std::vector<MachineSides>& sides, const ScoredCases& cases);

// The cases that stand for the others, each once. They depend on the cases alone: of a regression
// on the predictions, otherwise on the decision values.
std::vector<std::pair<CaseChoice, std::size_t>> ChooseCases(const MachineSides& sides,
                                                            std::size_t machine,
                                                            const ScoredCases& cases);

}  // namespace svmscore::tools

#endif  // TOOLS_REPORT_CHOSEN_CASES_H_
