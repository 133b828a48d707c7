// The sections of a page, each without its heading, as markup. [any thread] Owns: the caller.
// Fails: std::bad_alloc.
#ifndef APP_REPORT_SECTIONS_H_
#define APP_REPORT_SECTIONS_H_

#include <string>

#include "tools/report/report_data.h"

namespace svmscore::app {

// card_section.cpp: what the model is.
std::string CardSection(const tools::ReportData& data);
// findings_section.cpp: what the doctor finds.
std::string FindingsSection(const tools::ReportData& data);
// scores_section.cpp: how the scores of the cases are distributed.
std::string ScoresSection(const tools::ReportData& data);
// accuracy_section.cpp: how scores agree with what cases are.
std::string AccuracySection(const tools::ReportData& data);
// inputs_section.cpp: what the inputs do.
std::string InputsSection(const tools::ReportData& data);

// The categories of the target, by its position; "none" for a negative one. As a name in markup, in
// a picture, and as plain text.
std::string CategoryName(const tools::ReportData& data, int category);
std::string CategoryBrief(const tools::ReportData& data, int category, std::size_t columns);
std::string CategoryText(const tools::ReportData& data, int category);
// "machine 3: A or B", as markup.
std::string MachineName(const tools::ReportData& data, const tools::MachineSides& sides,
                        std::size_t machine);

// Why there are no cases, or none that are scored; empty where there are some.
std::string WhyNoCases(const tools::ReportData& data);

}  // namespace svmscore::app

#endif  // APP_REPORT_SECTIONS_H_
