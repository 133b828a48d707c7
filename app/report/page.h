// A report as one page of HTML that needs nothing else.
#ifndef APP_REPORT_PAGE_H_
#define APP_REPORT_PAGE_H_

#include <string>

#include "tools/report/report_data.h"

namespace svmscore::app {

// `made_at` is the date that the page gets, plain text; empty for none. The page loads nothing and
// runs nothing; the same data make the same bytes. [any thread] Owns: the caller. Fails:
// std::bad_alloc.
std::string PageOf(const tools::ReportData& data, const std::string& made_at);

}  // namespace svmscore::app

#endif  // APP_REPORT_PAGE_H_
