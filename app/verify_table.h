// A CSV file as a whole, for the files that verification compares.
#ifndef APP_VERIFY_TABLE_H_
#define APP_VERIFY_TABLE_H_

#include <string>
#include <string_view>
#include <vector>

#include "host/limits.h"

namespace svmscore::app {

struct VerifyTable {
  std::string name;  // how messages call the file
  std::vector<std::string> header;
  std::vector<std::vector<std::string>> rows;  // each as wide as the header

  // -1 where there is no such column.
  int FindColumn(std::string_view column) const;
};

// "-" is standard input. Throws a Failure(kInputError) for a file that cannot be read or is no CSV.
VerifyTable ReadVerifyTable(const std::string& path, const Limits& limits);

}  // namespace svmscore::app

#endif  // APP_VERIFY_TABLE_H_
