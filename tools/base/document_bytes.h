// Writing into the bytes of a document, in its own encoding. [any thread] Owns: the caller. Fails:
// std::bad_alloc.
#ifndef TOOLS_BASE_DOCUMENT_BYTES_H_
#define TOOLS_BASE_DOCUMENT_BYTES_H_

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace svmscore::tools {

// How the bytes of a document hold ASCII characters.
enum class ByteWidth { kOne, kTwoLowFirst, kTwoHighFirst, kUnknown };
ByteWidth WidthOf(std::string_view document);

// The size of a byte-order mark, which the parser does not count.
std::size_t MarkSize(std::string_view document);

// ASCII as the bytes of a document of that width. REQUIRES: the width is known.
std::string Widen(std::string_view ascii, ByteWidth width);

// The last place at which this character stands before `end`; npos where there is none.
// REQUIRES: no character of a document of this width has bytes on both sides of `end`.
std::size_t FindBefore(std::string_view document, char ascii, std::size_t end, ByteWidth width);

// The text as the content or a quoted attribute of an element, in ASCII. Nothing for a text that
// XML cannot hold.
std::optional<std::string> EscapeToAscii(std::string_view text);

}  // namespace svmscore::tools

#endif  // TOOLS_BASE_DOCUMENT_BYTES_H_
