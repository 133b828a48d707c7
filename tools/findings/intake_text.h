// How a document was made readable, in words.
#ifndef TOOLS_FINDINGS_INTAKE_TEXT_H_
#define TOOLS_FINDINGS_INTAKE_TEXT_H_

#include <string>

#include "host/intake/make_readable.h"

namespace svmscore::tools {

// What a step means, what it was first about, and how often it was taken.
std::string ConsequenceOf(const IntakeStep& step);

// The same after the place where it was first taken.
std::string SentenceOf(const IntakeStep& step);

}  // namespace svmscore::tools

#endif  // TOOLS_FINDINGS_INTAKE_TEXT_H_
