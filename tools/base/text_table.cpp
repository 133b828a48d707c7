#include "tools/base/text_table.h"

#include <algorithm>

namespace svmscore::tools {

int TextTable::FindColumn(std::string_view column) const {
  const auto found = std::find(header.begin(), header.end(), column);
  return found == header.end() ? -1 : static_cast<int>(found - header.begin());
}

}  // namespace svmscore::tools
