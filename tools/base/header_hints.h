// Why a header lacks a column that is there for whoever looks at it.
#ifndef TOOLS_BASE_HEADER_HINTS_H_
#define TOOLS_BASE_HEADER_HINTS_H_

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace svmscore::tools {

enum class NamedBy { kModel, kUser };

// A sentence about a header that lacks the columns `missing`, of which there is one at least, of
// `names`, as `named_by` names them: what may be wrong with it, what it lacks, and what it has.
// `subject` is what it is called. Bounded in length.
std::string LackOf(const std::vector<std::string>& names, const std::vector<std::string>& missing,
                   NamedBy named_by, const std::vector<std::string_view>& header,
                   const std::string& subject);

// How to read a header that has more known names where another character separates its cells;
// empty where none does.
std::string DelimiterHint(const std::vector<std::string_view>& header,
                          const std::function<bool(const std::string&)>& is_known);

}  // namespace svmscore::tools

#endif  // TOOLS_BASE_HEADER_HINTS_H_
