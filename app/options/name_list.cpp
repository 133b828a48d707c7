#include "app/options/name_list.h"

#include <string_view>

#include <fmt/format.h>

#include "app/base/failure.h"
#include "app/table/csv_row.h"

namespace svmscore::app {

std::vector<std::string> NamesIn(const std::vector<std::string>& lists, const char* option) {
  std::vector<std::string> names;
  std::vector<std::string_view> cells;
  for (std::string list : lists) {
    try {
      CsvRows rows(list.data(), list.size(), 1);
      while (rows.Next(cells)) names.insert(names.end(), cells.begin(), cells.end());
    } catch (const CsvError& error) {
      throw Failure(kUsageError, fmt::format("{}: {}", option, error.what()));
    }
  }
  return names;
}

}  // namespace svmscore::app
