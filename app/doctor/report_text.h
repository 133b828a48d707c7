// Findings for people.
#ifndef APP_DOCTOR_REPORT_TEXT_H_
#define APP_DOCTOR_REPORT_TEXT_H_

#include <string>

#include "tools/doctor/examination.h"

namespace svmscore::app {

// Findings in the order in which they are written, and how predictions agree with expected ones.
std::string ReportText(const std::string& file, const tools::Examination& examination);

}  // namespace svmscore::app

#endif  // APP_DOCTOR_REPORT_TEXT_H_
