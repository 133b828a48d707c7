// What a model is, as JSON.
#ifndef TOOLS_DESCRIBE_SUMMARY_JSON_H_
#define TOOLS_DESCRIBE_SUMMARY_JSON_H_

#include <string>

#include "tools/describe/model_summary.h"

namespace svmscore::tools {

// One object, indented, with a line end. Bytes that are not UTF-8 become U+FFFD.
std::string JsonOf(const ModelSummary& summary);

}  // namespace svmscore::tools

#endif  // TOOLS_DESCRIBE_SUMMARY_JSON_H_
