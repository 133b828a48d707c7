#include "app/verify_table.h"

#include <algorithm>

#include <fmt/format.h>

#include "app/csv_row.h"
#include "app/failure.h"
#include "app/input_file.h"
#include "app/pipeline.h"
#include "app/row_blocks.h"

namespace svmscore::app {
namespace {

void AddRows(RowBlock& block, const Limits& limits, VerifyTable& table) {
  std::vector<std::string_view> cells;
  CsvRows rows(block.text.data(), block.text.size(), block.first_line, limits);
  while (rows.Next(cells)) {
    if (cells.size() != table.header.size()) {
      throw WrongWidth(rows.RowLine(), cells, table.header.size());
    }
    table.rows.emplace_back(cells.begin(), cells.end());
  }
}

}  // namespace

int VerifyTable::FindColumn(std::string_view column) const {
  const auto found = std::find(header.begin(), header.end(), column);
  return found == header.end() ? -1 : static_cast<int>(found - header.begin());
}

VerifyTable ReadVerifyTable(const std::string& path, const Limits& limits) {
  InputFile file(path);
  RowBlocks blocks(file, limits);
  RowBlock block;
  VerifyTable table;
  table.name = file.Name();
  try {
    if (!blocks.ReadHeader(block)) {
      throw Failure(kInputError, fmt::format("{}: the file is empty; it needs at least a header "
                                             "line with the names of the columns",
                                             table.name));
    }
    std::vector<std::string_view> names;
    CsvRows(block.text.data(), block.text.size(), block.first_line, limits).Next(names);
    table.header.assign(names.begin(), names.end());
    while (blocks.Next(block)) AddRows(block, limits, table);
  } catch (const CsvError& error) {
    throw BrokenRow(table.name, error);
  }
  return table;
}

}  // namespace svmscore::app
