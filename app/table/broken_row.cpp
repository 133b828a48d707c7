#include "app/table/broken_row.h"

#include <fmt/format.h>

namespace svmscore::app {

Failure BrokenRow(const std::string& input_name, const CsvError& error) {
  return {kInputError, fmt::format("{}: line {}: {}", input_name, error.Line(), error.what())};
}

}  // namespace svmscore::app
