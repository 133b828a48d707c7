// What agreed with expectations and what did not, as JSON.
#ifndef TOOLS_VERIFY_VERIFY_JSON_H_
#define TOOLS_VERIFY_VERIFY_JSON_H_

#include <optional>
#include <string>

#include "tools/base/json_text.h"
#include "tools/verify/agreement.h"
#include "tools/verify/verify_report.h"

namespace svmscore::tools {

// One object, indented, with a line end: "agrees"; "compared" and "disagreements", numbers of
// cells; "agreement", as WriteAgreement writes it; "remarks"; and "differences", for each its
// "record" (from 1), "column", "expected", "got" (null where there is nothing), "status", "reason"
// (of a case that failed, else null), and "deviation" of two numbers, relative to the expected one
// (null where there is none). Bytes that are not UTF-8 become U+FFFD. [any thread] Owns: the
// caller. Fails: std::bad_alloc.
std::string JsonOf(const VerifyReport& report, const std::optional<Agreement>& agreement);

// Writes how well predictions agree with expected ones: an object, or null without any.
// [one thread] for each text. Fails: std::bad_alloc.
void WriteAgreement(const std::optional<Agreement>& agreement, JsonText& json);

}  // namespace svmscore::tools

#endif  // TOOLS_VERIFY_VERIFY_JSON_H_
