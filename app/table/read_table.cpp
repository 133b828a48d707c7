#include "app/table/read_table.h"

#include <cstdint>
#include <limits>
#include <utility>

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

void TakeRows(RowBlock& block, const RowForm& form, std::size_t width, RowTaker& taker,
              RowLikeCells& row_like_cells) {
  std::vector<std::string_view> cells;
  CsvRows rows(block.text.data(), block.text.size(), block.first_line, form);
  while (rows.Next(cells, width)) taker.TakeRow(cells);
  row_like_cells.Add(rows.CellsLikeRows());
}

void Read(const std::string& path, RowForm form, bool may_have_commas, std::uint64_t most_bytes,
          RowTaker& taker) {
  InputFile file(path);
  RowBlocks blocks(file, form);
  RowBlock block;
  RowLikeCells row_like_cells;
  try {
    if (!blocks.ReadHeader(block)) {
      throw Failure(kInputError, fmt::format("{}: the file is empty; it needs at least a header "
                                             "line with the names of the columns",
                                             file.Name()));
    }
    if (may_have_commas && !IsSeparatedBy(form.delimiter, block.text, form) &&
        IsSeparatedBy(',', block.text, form)) {
      form.delimiter = ',';
      blocks.SetDelimiter(',');
    }
    std::vector<std::string_view> names;
    CsvRows(block.text.data(), block.text.size(), block.first_line, form).Next(names);
    const std::size_t width = names.size();
    taker.TakeHeader(file.Name(), names);
    for (std::uint64_t size = 0; blocks.Next(block);) {
      size += block.text.size();
      if (size > most_bytes) {
        throw CsvError(block.first_line, BeyondTableLimit(form.limits, &Limits::table_size));
      }
      TakeRows(block, form, width, taker, row_like_cells);
    }
  } catch (const CsvError& error) {
    throw BrokenRow(file.Name(), error);
  }
  const std::string remark = row_like_cells.Text();
  if (!remark.empty()) Tell(fmt::format("{}: {}", file.Name(), remark));
}

// Keeps the whole table.
class WholeTable : public RowTaker {
 public:
  void TakeHeader(const std::string& name, const std::vector<std::string_view>& names) override {
    table.name = name;
    table.header.assign(names.begin(), names.end());
  }
  void TakeRow(const std::vector<std::string_view>& cells) override {
    table.rows.emplace_back(cells.begin(), cells.end());
  }

  tools::TextTable table;
};

}  // namespace

tools::TextTable ReadTable(const std::string& path, const RowForm& form) {
  WholeTable whole;
  Read(path, form, false, form.limits.table_size, whole);
  return std::move(whole.table);
}

tools::TextTable ReadExpected(const std::string& path, const RowForm& form) {
  WholeTable whole;
  Read(path, form, true, form.limits.table_size, whole);
  return std::move(whole.table);
}

void ReadRows(const std::string& path, const RowForm& form, RowTaker& taker) {
  Read(path, form, false, std::numeric_limits<std::uint64_t>::max(), taker);
}

}  // namespace svmscore::app
