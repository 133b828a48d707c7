// Numbers to text and text to numbers, the same in every locale.
// [any thread] Owns: the caller. Lives: arguments for the call. Fails: a text that is not such a
// number gives nothing, null or 0 as stated; a returned std::string, std::bad_alloc.
#ifndef HOST_TEXT_NUMBER_TEXT_H_
#define HOST_TEXT_NUMBER_TEXT_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "host/text/api.h"

namespace svmscore {

// Parses the whole of `text` as a number of the XML double grammar: optional sign, digits with at
// most one point, optional exponent, or exactly INF, -INF or NaN; white space around it is
// dropped. Hexadecimal, "inf" and trailing text are refused. A magnitude beyond the range becomes
// an infinity or a zero, correctly rounded.
SVMSCORE_HOST_API std::optional<double> ParseNumber(std::string_view text);

// Parses the whole of `text` as a whole number of 64 bits; "3.0" and "3e0" are the number 3.
SVMSCORE_HOST_API std::optional<std::int64_t> ParseInteger(std::string_view text);

// The value of the longest numeric prefix of the text by the rules of C's strtod in the "C"
// locale, including white space and hexadecimal; 0 if there is none. `text` ends with a NUL.
SVMSCORE_HOST_API double NumberPrefix(const char* text);

// Reads the longest plain decimal number (optional minus sign, digits with at most one point,
// optional exponent) that starts at `begin`; its value is that of NumberPrefix. Returns its end;
// null where there is no number or its magnitude is out of range.
SVMSCORE_HOST_API const char* ReadDecimal(const char* begin, const char* end, double& value);

// Truncates toward zero; beyond the range of int it saturates, and NaN gives 0.
SVMSCORE_HOST_API int TruncateToInt(double value);

// The shortest text that reads back to the same double; whole numbers without ".0"; INF, -INF and
// NaN for the rest.
SVMSCORE_HOST_API std::string FormatNumber(double value);
// The same into a buffer of at least kNumberTextSize bytes; returns the end of the text.
inline constexpr int kNumberTextSize = 32;
SVMSCORE_HOST_API char* FormatNumber(char* buffer, double value);

}  // namespace svmscore

#endif  // HOST_TEXT_NUMBER_TEXT_H_
