// Texts of unknown origin, made fit for people to read.
// [any thread] Owns: the caller. Fails: std::bad_alloc.
#ifndef HOST_TEXT_PRINTABLE_H_
#define HOST_TEXT_PRINTABLE_H_

#include <cstddef>
#include <string>
#include <string_view>

#include "host/text/api.h"

namespace svmscore {

// Bytes of a whole message, and of a name or value inside one.
inline constexpr std::size_t kLongestMessage = 4000;
inline constexpr std::size_t kLongestInsert = 400;
inline constexpr std::size_t kAnyLength = static_cast<std::size_t>(-1);

// The text; where it is longer than `longest` bytes, its beginning and its end with an ellipsis
// between them. No character of UTF-8 is cut apart.
SVMSCORE_HOST_API std::string Shortened(std::string_view text, std::size_t longest);

// The same on one line, without anything that controls a terminal or changes the direction of
// writing: control characters, direction marks, line separators, and bytes that are not UTF-8 are
// written as escapes such as \n, \u202E, \xFF. It is meant for people: a backslash is not escaped.
SVMSCORE_HOST_API std::string Printable(std::string_view text,
                                        std::size_t longest = kLongestMessage);

}  // namespace svmscore

#endif  // HOST_TEXT_PRINTABLE_H_
