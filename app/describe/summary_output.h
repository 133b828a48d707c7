// Writing what a model is.
#ifndef APP_DESCRIBE_SUMMARY_OUTPUT_H_
#define APP_DESCRIBE_SUMMARY_OUTPUT_H_

#include <string>

#include "tools/describe/model_summary.h"

namespace svmscore::app {

// A summary for people, and as JSON.
std::string TextOf(const tools::ModelSummary& summary);
std::string JsonOf(const tools::ModelSummary& summary);

}  // namespace svmscore::app

#endif  // APP_DESCRIBE_SUMMARY_OUTPUT_H_
