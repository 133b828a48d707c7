// Why a case scores as it does: {"id", "arguments"} → {"id", "status", "sampled", "explanations":
// [{"decision_of", "above", "below", "threshold", "decision", "base", "phi": {INPUT: VALUE},
// "error"?: {INPUT: VALUE}}]}, one explanation for each decision value, as svmscore explain --rows
// 100 gives them. A value above the threshold speaks for the category "above"; of a side that means
// no single category, and of a regression, it is null. A case without a score has no explanation,
// and a "reason".
#ifndef TOOLS_SERVE_EXPLANATION_H_
#define TOOLS_SERVE_EXPLANATION_H_

#include <string>

#include "tools/serve/row_run.h"

namespace svmscore::serve {

// [any thread] Lives: `body`, which is rewritten, for the call. Fails: BadRequest, also for a model
// that cannot be explained; std::bad_alloc.
std::string ExplainOne(const ServedModel& model, std::string& body, RowCounts& counts);

}  // namespace svmscore::serve

#endif  // TOOLS_SERVE_EXPLANATION_H_
