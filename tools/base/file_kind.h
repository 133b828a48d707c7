// What a file is that was given in place of another, told by how it begins.
#ifndef TOOLS_BASE_FILE_KIND_H_
#define TOOLS_BASE_FILE_KIND_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace svmscore::tools {

// So many bytes tell a kind.
inline constexpr std::size_t kKindBytes = 256;

// A sentence without an end: what the file is, and what to do, where it begins as no table of text
// does; else empty.
std::string WhyNoTable(std::string_view beginning);
// The same for a file that was read as XML and is none: what it is, and what to do; both empty
// where it begins as XML does.
struct NoDocument {
  std::string what;
  std::string remedy;
};
NoDocument WhyNoDocument(std::string_view beginning);

}  // namespace svmscore::tools

#endif  // TOOLS_BASE_FILE_KIND_H_
