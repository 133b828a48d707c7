// What a decision value is called.
#ifndef HOST_OUTPUT_DECISION_NAME_H_
#define HOST_OUTPUT_DECISION_NAME_H_

#include <string>
#include <utility>

#include "host/output/target_rules.h"
#include "host/text/api.h"

namespace svmscore::output {

// decision(TARGET|ALTERNATE), decision(TARGET) where there is one category only, and decision for a
// regression. `decides` is what BatchModel::DecisionCategories says.
// [any thread] Owns: the caller. Fails: std::bad_alloc.
SVMSCORE_HOST_API std::string DecisionName(const TargetRules& targets, std::pair<int, int> decides);

// The part of that name which says what the value decides between: TARGET|ALTERNATE, TARGET, or
// nothing for a regression. [any thread] Owns: the caller. Fails: std::bad_alloc.
SVMSCORE_HOST_API std::string DecidedBetween(const TargetRules& targets,
                                             std::pair<int, int> decides);

}  // namespace svmscore::output

#endif  // HOST_OUTPUT_DECISION_NAME_H_
