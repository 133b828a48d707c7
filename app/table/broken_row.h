// The message for a row that is no CSV.
#ifndef APP_TABLE_BROKEN_ROW_H_
#define APP_TABLE_BROKEN_ROW_H_

#include <string>

#include "app/base/failure.h"
#include "app/table/csv_row.h"

namespace svmscore::app {

// The failure for a broken row: it names the input and the line.
Failure BrokenRow(const std::string& input_name, const CsvError& error);

}  // namespace svmscore::app

#endif  // APP_TABLE_BROKEN_ROW_H_
