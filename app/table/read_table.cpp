#include "app/table/read_table.h"

#include <algorithm>

#include <fmt/format.h>

#include "app/base/failure.h"
#include "app/base/messages.h"
#include "app/files/input_file.h"
#include "app/table/broken_row.h"
#include "app/table/csv_row.h"
#include "app/table/row_blocks.h"
#include "app/table/table_limit.h"

namespace svmscore::app {
namespace {

// Whether the row has more than one cell where `delimiter` separates them.
bool IsSeparatedBy(char delimiter, std::string row, RowForm form) {
  form.delimiter = delimiter;
  std::vector<std::string_view> cells;
  try {
    return CsvRows(row.data(), row.size(), 1, form).Next(cells) && cells.size() > 1;
  } catch (const CsvError&) {
    return false;
  }
}

void AddRows(RowBlock& block, const RowForm& form, tools::TextTable& table,
             RowLikeCells& row_like_cells) {
  std::vector<std::string_view> cells;
  CsvRows rows(block.text.data(), block.text.size(), block.first_line, form);
  while (rows.Next(cells, table.header.size())) {
    table.rows.emplace_back(cells.begin(), cells.end());
  }
  row_like_cells.Add(rows.CellsLikeRows());
}

tools::TextTable Read(const std::string& path, RowForm form, bool may_have_commas) {
  InputFile file(path);
  RowBlocks blocks(file, form);
  RowBlock block;
  RowLikeCells row_like_cells;
  tools::TextTable table;
  table.name = file.Name();
  try {
    if (!blocks.ReadHeader(block)) {
      throw Failure(kInputError, fmt::format("{}: the file is empty; it needs at least a header "
                                             "line with the names of the columns",
                                             table.name));
    }
    if (may_have_commas && !IsSeparatedBy(form.delimiter, block.text, form) &&
        IsSeparatedBy(',', block.text, form)) {
      form.delimiter = ',';
      blocks.SetDelimiter(',');
    }
    std::vector<std::string_view> names;
    CsvRows(block.text.data(), block.text.size(), block.first_line, form).Next(names);
    table.header.assign(names.begin(), names.end());
    for (std::uint64_t size = 0; blocks.Next(block);) {
      size += block.text.size();
      if (size > form.limits.table_size) {
        throw CsvError(block.first_line, BeyondTableLimit(form.limits, &Limits::table_size));
      }
      AddRows(block, form, table, row_like_cells);
    }
  } catch (const CsvError& error) {
    throw BrokenRow(table.name, error);
  }
  const std::string remark = row_like_cells.Text();
  if (!remark.empty()) Tell(fmt::format("{}: {}", table.name, remark));
  return table;
}

}  // namespace

tools::TextTable ReadTable(const std::string& path, const RowForm& form) {
  return Read(path, form, false);
}

tools::TextTable ReadExpected(const std::string& path, const RowForm& form) {
  return Read(path, form, true);
}

}  // namespace svmscore::app
