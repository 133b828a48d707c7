// Decision values of cases that are given by their entries.
#ifndef TOOLS_REPORT_ENTRY_SCORING_H_
#define TOOLS_REPORT_ENTRY_SCORING_H_

#include <cstddef>
#include <vector>

#include "host/load/loader.h"
#include "host/model/batch_model.h"
#include "tools/report/scored_cases.h"

namespace svmscore::tools {

// The decision values of one machine. `entries` has those of case c at [c * EntryCount()]. [any
// thread] Fails: std::bad_alloc.
std::vector<double> DecisionsOf(BatchModel& model, const std::vector<double>& entries,
                                std::size_t machine);

// The same cases as if they came from a table: numbered from 1, scored, without labels. Cases whose
// decision values are not finite are left out. [any thread] Fails: std::bad_alloc.
ScoredCases CasesOfEntries(const LoadedModel& loaded, BatchModel& model,
                           const std::vector<double>& entries);

}  // namespace svmscore::tools

#endif  // TOOLS_REPORT_ENTRY_SCORING_H_
