// A CSV file as a whole.
#ifndef APP_TABLE_READ_TABLE_H_
#define APP_TABLE_READ_TABLE_H_

#include <string>

#include "app/table/csv_row.h"
#include "tools/base/text_table.h"

namespace svmscore::app {

// "-" is standard input. Throws a Failure(kInputError) for a file that cannot be read or is no CSV.
tools::TextTable ReadTable(const std::string& path, const RowForm& form);
// The same for a table that another program may have written than the one of `form`: where the
// header has commas and no delimiter of `form`, commas separate its cells.
tools::TextTable ReadExpected(const std::string& path, const RowForm& form);

}  // namespace svmscore::app

#endif  // APP_TABLE_READ_TABLE_H_
