// Why a header lacks a column that is there for whoever looks at it.
#ifndef TOOLS_BASE_HEADER_HINTS_H_
#define TOOLS_BASE_HEADER_HINTS_H_

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace svmscore::tools {

// The rest of a message that a header lacks the columns `missing`, of which there is one at least:
// what the header has, and what may be wrong with it. Bounded in length.
std::string HintsFor(const std::vector<std::string_view>& header,
                     const std::vector<std::string>& missing);

// How to read a header that has more known names where another character separates its cells;
// empty where none does.
std::string DelimiterHint(const std::vector<std::string_view>& header,
                          const std::function<bool(const std::string&)>& is_known);

}  // namespace svmscore::tools

#endif  // TOOLS_BASE_HEADER_HINTS_H_
