// What a text that should have been a number looks like.
#ifndef HOST_REASONS_TEXT_HINTS_H_
#define HOST_REASONS_TEXT_HINTS_H_

#include <string_view>

#include "host/reasons/reason.h"

namespace svmscore::reasons {

// The text without white space around it, no-break spaces included.
std::string_view WithoutBlanks(std::string_view text);

// What a text that is no number is meant as.
// [any thread] Fails: std::bad_alloc.
Hint HintOfNumber(std::string_view text);

// Whether the text is a word that people and programs write for a missing value.
// [any thread] Fails: never.
bool IsMissingWord(std::string_view text);

}  // namespace svmscore::reasons

#endif  // HOST_REASONS_TEXT_HINTS_H_
