// What is told of models. [any thread] Fails: std::bad_alloc.
#ifndef TOOLS_SERVE_MODEL_ANSWERS_H_
#define TOOLS_SERVE_MODEL_ANSWERS_H_

#include <string>

#include "tools/serve/model_store.h"

namespace svmscore::serve {

// {"models": [...]}: of each a summary.
std::string ModelList(const ModelStore& store);
// The summary of a model. With `whole` also its card and findings.
std::string ModelSummaryText(const std::string& id, const StoredModel& stored, bool whole);
// The summary for who uploaded it, with no members but those that clients of Openscoring know: they
// refuse others here.
std::string UploadedModelText(const ServedModel& model);

}  // namespace svmscore::serve

#endif  // TOOLS_SERVE_MODEL_ANSWERS_H_
