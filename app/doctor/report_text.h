// Findings for people.
#ifndef APP_DOCTOR_REPORT_TEXT_H_
#define APP_DOCTOR_REPORT_TEXT_H_

#include <string>
#include <vector>

#include "host/findings/finding.h"

namespace svmscore::app {

// `findings` in the order in which they are written.
std::string ReportText(const std::string& file, const std::vector<Finding>& findings);

}  // namespace svmscore::app

#endif  // APP_DOCTOR_REPORT_TEXT_H_
