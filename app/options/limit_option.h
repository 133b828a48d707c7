// The option that raises a limit, on every command that reads a document or a table.
#ifndef APP_OPTIONS_LIMIT_OPTION_H_
#define APP_OPTIONS_LIMIT_OPTION_H_

#include <CLI/CLI.hpp>

#include "host/xml/limits.h"

namespace svmscore::app {

// Adds --limit NAME=NUMBER, which sets one of `limits`; these must outlive the parsing.
void AddLimitOption(CLI::App& command, Limits& limits);

}  // namespace svmscore::app

#endif  // APP_OPTIONS_LIMIT_OPTION_H_
