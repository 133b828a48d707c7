// Findings as JSON.
#ifndef TOOLS_DOCTOR_REPORT_JSON_H_
#define TOOLS_DOCTOR_REPORT_JSON_H_

#include <string>
#include <vector>

#include "tools/doctor/examination.h"

namespace svmscore::tools {

// One object, indented, with a line end: the findings in the order in which they are written, and
// how predictions agree with expected ones. Bytes that are not UTF-8 become U+FFFD.
std::string ReportJson(const std::string& file, const Examination& examination);
// The findings alone, as an array.
std::string FindingsJson(const std::vector<Finding>& findings);

}  // namespace svmscore::tools

#endif  // TOOLS_DOCTOR_REPORT_JSON_H_
