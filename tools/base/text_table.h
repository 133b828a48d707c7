// A table of cases or of expected values, as texts.
#ifndef TOOLS_BASE_TEXT_TABLE_H_
#define TOOLS_BASE_TEXT_TABLE_H_

#include <string>
#include <string_view>
#include <vector>

namespace svmscore::tools {

struct TextTable {
  std::string name;  // how messages call it
  std::vector<std::string> header;
  std::vector<std::vector<std::string>> rows;  // each as wide as the header

  // -1 if there is no such column. [any thread] Fails: never.
  int FindColumn(std::string_view column) const;
};

}  // namespace svmscore::tools

#endif  // TOOLS_BASE_TEXT_TABLE_H_
