// The style sheet of pages: report.css, compiled in.
#ifndef APP_REPORT_STYLE_SHEET_H_
#define APP_REPORT_STYLE_SHEET_H_

#include <string_view>

namespace svmscore::app {

extern const std::string_view kStyleSheet;

}  // namespace svmscore::app

#endif  // APP_REPORT_STYLE_SHEET_H_
