// Cells of rows that are separated by commas or another delimiter (RFC 4180), read in place.
#ifndef APP_TABLE_CSV_ROW_H_
#define APP_TABLE_CSV_ROW_H_

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "app/table/row_like_cells.h"
#include "app/table/special_bytes.h"
#include "host/xml/limits.h"

namespace svmscore::app {

// A text that is no CSV; says at which line of the file and why.
class CsvError : public std::runtime_error {
 public:
  CsvError(long line, const std::string& why) : std::runtime_error(why), line_(line) {}
  long Line() const { return line_; }

 private:
  long line_;
};

// How rows are written, and how long they may be.
struct RowForm {
  Limits limits;
  char delimiter = ',';  // an ASCII character that is neither a quotation mark nor ends a line
  bool decimal_comma = false;  // a number may hold the delimiter's comma only in a quoted cell
};

// Walks the rows of a text that ends where a row ends. Rows end with LF or CRLF; the last one may
// lack its end. A quoted cell may hold delimiters, line ends and doubled quotation marks. A
// quotation mark or a carriage return anywhere else, a NUL byte, and what exceeds a limit is a
// CsvError.
class CsvRows {
 public:
  // Quoted cells are rewritten in `text`, which must outlive the cells. `line` is the number of its
  // first line in the file.
  CsvRows(char* text, std::size_t size, long line, const RowForm& form = {})
      : next_(text),
        end_(text + size),
        special_(form.delimiter),
        line_(line),
        row_line_(line),
        form_(form) {}

  // Fills `cells` with the next row; false at the end.
  bool Next(std::vector<std::string_view>& cells);
  // The same for a table of `width` columns: passes over blank lines, but not where one column is
  // all there is, since a blank line is an empty cell there. A row of another width is a CsvError.
  bool Next(std::vector<std::string_view>& cells, std::size_t width) {
    while (Next(cells)) {
      if (cells.size() == width) {
        if (SpansLines()) row_like_cells_.Look(cells, form_.delimiter, row_line_);
        return true;
      }
      CheckBlank(cells, width);
    }
    return false;
  }
  // The line on which the row read last begins.
  long RowLine() const { return row_line_; }
  // Cells of the rows of a table so far that may hold rows.
  const RowLikeCells& CellsLikeRows() const { return row_like_cells_; }

 private:
  // Adds the cells that come next as long as they are plain and a delimiter ends them.
  void AddPlainCells(std::vector<std::string_view>& cells);
  std::string_view PlainCell();
  std::string_view QuotedCell();
  static std::string HintOf(char beside);
  // Steps over what follows a cell: true for a delimiter, false for the end of the row.
  bool StepOverSeparator();
  bool AtRowEnd(const char* at) const;
  // Whether the row read last has line ends in its cells.
  bool SpansLines() const { return line_ > row_line_ + 1; }
  // Throws unless the row is a blank line.
  void CheckBlank(const std::vector<std::string_view>& cells, std::size_t width) const;
  std::string WidthHint(const std::vector<std::string_view>& cells, std::size_t width) const;
  void CheckLimit(std::size_t size, Limit limit) const {
    if (size > form_.limits.*limit) RefuseRow(limit);
  }
  [[noreturn]] void RefuseRow(Limit limit) const;

  char* next_;
  char* end_;
  SpecialBytes special_;
  long line_;
  long row_line_;
  const char* row_begin_ = nullptr;
  RowForm form_;
  RowLikeCells row_like_cells_;
};

}  // namespace svmscore::app

#endif  // APP_TABLE_CSV_ROW_H_
