// JSON's spelling of a text. [any thread] Fails: std::bad_alloc.
#ifndef TOOLS_BASE_JSON_STRING_H_
#define TOOLS_BASE_JSON_STRING_H_

#include <string>
#include <string_view>

namespace svmscore::tools {

// Appends `text` as a JSON string; bytes that are not UTF-8 become U+FFFD.
void AppendJsonString(std::string& out, std::string_view text);

}  // namespace svmscore::tools

#endif  // TOOLS_BASE_JSON_STRING_H_
