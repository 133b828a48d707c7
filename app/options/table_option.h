// The options that say how a table of cases is written.
#ifndef APP_OPTIONS_TABLE_OPTION_H_
#define APP_OPTIONS_TABLE_OPTION_H_

#include <CLI/CLI.hpp>

#include "app/table/table_options.h"

namespace svmscore::app {

// Adds --delimiter, --decimal-comma and --missing-token. `options` must outlive the parsing.
void AddTableOptions(CLI::App& command, TableOptions& options);

}  // namespace svmscore::app

#endif  // APP_OPTIONS_TABLE_OPTION_H_
