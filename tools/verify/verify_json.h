// What agreed with expectations and what did not, as JSON.
#ifndef TOOLS_VERIFY_VERIFY_JSON_H_
#define TOOLS_VERIFY_VERIFY_JSON_H_

#include <string>

#include "tools/verify/verify_report.h"

namespace svmscore::tools {

// One object, indented, with a line end: "agrees"; "compared" and "disagreements", numbers of
// cells; "remarks"; and "differences", for each its "record" (from 1), "column", "expected", "got"
// (null where there is nothing), "status", and "deviation" of two numbers, relative to the expected
// one (null where there is none). Bytes that are not UTF-8 become U+FFFD.
std::string JsonOf(const VerifyReport& report);

}  // namespace svmscore::tools

#endif  // TOOLS_VERIFY_VERIFY_JSON_H_
