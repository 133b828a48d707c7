// Texts of unknown origin, made fit for people to read.
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

// The same on one line, and with nothing in it that steers a terminal or turns the direction of
// writing: control characters, marks of direction, separators of lines, and bytes that are not
// UTF-8 are spelled as in \n, \u202E, \xFF. Made for reading: a backslash stays as it is.
SVMSCORE_HOST_API std::string Printable(std::string_view text,
                                        std::size_t longest = kLongestMessage);

}  // namespace svmscore

#endif  // HOST_TEXT_PRINTABLE_H_
