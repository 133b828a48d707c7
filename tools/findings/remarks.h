// What of a model's document is guessed, lost or wrong, for whoever scores with it.
#ifndef TOOLS_FINDINGS_REMARKS_H_
#define TOOLS_FINDINGS_REMARKS_H_

#include <string>
#include <vector>

#include "host/load/loader.h"

namespace svmscore::tools {

// One line for each kind of finding that a strict reading refuses, in the order of the findings.
// Those on errors begin with "error: " and end with what the error does to scores. [any thread]
// Fails: std::bad_alloc.
std::vector<std::string> RemarksOn(const LoadedModel& loaded);

}  // namespace svmscore::tools

#endif  // TOOLS_FINDINGS_REMARKS_H_
