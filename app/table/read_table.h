// A CSV file as a whole.
#ifndef APP_TABLE_READ_TABLE_H_
#define APP_TABLE_READ_TABLE_H_

#include <string>
#include <string_view>
#include <vector>

#include "app/table/csv_row.h"
#include "tools/base/text_table.h"

namespace svmscore::app {

// "-" is standard input. Throws a Failure(kInputError) for a file that cannot be read or is no CSV.
tools::TextTable ReadTable(const std::string& path, const RowForm& form);
// The same for a table that another program may have written than the one of `form`: where the
// header has commas and no delimiter of `form`, commas separate its cells.
tools::TextTable ReadExpected(const std::string& path, const RowForm& form);

// Takes the rows of a table as they are read; the cells are views of a buffer.
class RowTaker {
 public:
  virtual ~RowTaker() = default;
  virtual void TakeHeader(const std::string& name, const std::vector<std::string_view>& names) = 0;
  virtual void TakeRow(const std::vector<std::string_view>& cells) = 0;
};
// Reads a table of any size, block by block. Fails as ReadTable, and as `taker` does.
void ReadRows(const std::string& path, const RowForm& form, RowTaker& taker);

}  // namespace svmscore::app

#endif  // APP_TABLE_READ_TABLE_H_
