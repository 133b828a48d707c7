// What a model is, in words. [any thread] Owns: the caller. Fails: std::bad_alloc.
#ifndef APP_DESCRIBE_MODEL_SENTENCES_H_
#define APP_DESCRIBE_MODEL_SENTENCES_H_

#include <string>

#include "tools/describe/model_summary.h"

namespace svmscore::app {

// Without ends of sentences; of texts of the document they hold none.
std::string MethodSentence(const tools::ModelSummary& summary);
std::string KernelSentence(const tools::ModelSummary& summary);
std::string PercentagesSentence(const tools::ModelSummary& summary);
std::string VotesSentence(const tools::ModelSummary& summary);

}  // namespace svmscore::app

#endif  // APP_DESCRIBE_MODEL_SENTENCES_H_
