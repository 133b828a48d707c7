// Writing what a model is, for people.
#ifndef APP_DESCRIBE_SUMMARY_TEXT_H_
#define APP_DESCRIBE_SUMMARY_TEXT_H_

#include <string>

#include "tools/describe/model_summary.h"

namespace svmscore::app {

// A summary for people.
std::string TextOf(const tools::ModelSummary& summary);

}  // namespace svmscore::app

#endif  // APP_DESCRIBE_SUMMARY_TEXT_H_
