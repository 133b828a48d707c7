// Compares the probabilities and intervals of a model with cases whose outcome is known.
#ifndef TOOLS_DOCTOR_LABELLED_CASES_H_
#define TOOLS_DOCTOR_LABELLED_CASES_H_

#include <cstddef>
#include <string>

#include "host/load/loader.h"
#include "tools/base/cell_rules.h"
#include "tools/base/text_table.h"
#include "tools/findings/finding_list.h"

namespace svmscore::tools {

struct LabelledCases {
  const TextTable& cases;
  std::string actual;  // the column that holds what they really are
  const CellRules& rules;
};

// Reports machines whose sigmoid, and regressions whose intervals, do not keep what they promise.
// Says nothing of a model that has neither, and of too few cases; of the cases of the training it
// says that they are those.
// [one thread] Lives: arguments for the call. Fails: BadCases for a table that does not fit the
// model, has no such column, or no usable row; std::bad_alloc.
void CheckCalibration(const LoadedModel& loaded, const LabelledCases& labelled,
                      FindingList& findings);

// The probability of so many events or fewer of `trials` that each have the probability `p`.
// REQUIRES: 0 < p < 1, events < p * trials. [any thread] Fails: never.
double LowerTail(std::size_t events, std::size_t trials, double p);

}  // namespace svmscore::tools

#endif  // TOOLS_DOCTOR_LABELLED_CASES_H_
