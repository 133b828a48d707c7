// Tables that the program prints, taken apart.
#ifndef TESTS_APP_COLUMNS_OF_H_
#define TESTS_APP_COLUMNS_OF_H_

#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace svmscore::app {

using Columns = std::map<std::string, std::vector<std::string>>;

// The columns of a table without quotation marks.
inline Columns ColumnsOf(const std::string& table) {
  Columns columns;
  std::vector<std::string> names;
  std::istringstream lines(table);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream cells(line + ',');
    const bool header = names.empty();
    std::size_t i = 0;
    for (std::string cell; std::getline(cells, cell, ','); ++i) {
      if (header) {
        names.push_back(cell);
      } else {
        columns[names[i]].push_back(cell);
      }
    }
  }
  return columns;
}

}  // namespace svmscore::app

#endif  // TESTS_APP_COLUMNS_OF_H_
