// How a table of cases is written, as the command line says it.
#ifndef APP_TABLE_TABLE_OPTIONS_H_
#define APP_TABLE_TABLE_OPTIONS_H_

#include <string>
#include <vector>

#include "app/table/csv_row.h"
#include "host/load/loader.h"
#include "tools/base/cell_rules.h"

namespace svmscore::app {

struct TableOptions {
  char delimiter = ',';
  bool decimal_comma = false;
  std::vector<std::string> missing_tokens;  // none: the usual ones

  RowForm Rows(const Limits& limits) const { return {limits, delimiter, decimal_comma}; }
  tools::CellRules Cells() const { return tools::CellRules(missing_tokens, decimal_comma); }
};

// Reads what --delimiter takes: a character, or the word tab. Empty, or else why the text cannot
// separate cells. [any thread] Fails: std::bad_alloc.
std::string ReadDelimiter(const std::string& text, char& delimiter);

// Tells where a token that was given hides a value that the model declares.
void TellOverruledValues(const tools::CellRules& cells, const LoadedModel& loaded);

}  // namespace svmscore::app

#endif  // APP_TABLE_TABLE_OPTIONS_H_
