// Cells of comma-separated rows (RFC 4180), read in place.
#ifndef APP_TABLE_CSV_ROW_H_
#define APP_TABLE_CSV_ROW_H_

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

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

// Walks the rows of a text that ends where a row ends. Rows end with LF or CRLF; the last one may
// lack its end. A quoted cell may hold commas, line ends and doubled quotation marks. A quotation
// mark anywhere else, a NUL byte, and what exceeds a limit is a CsvError.
class CsvRows {
 public:
  // Quoted cells are rewritten in `text`, which must outlive the cells. `line` is the number of its
  // first line in the file.
  CsvRows(char* text, std::size_t size, long line, const Limits& limits = {})
      : next_(text), end_(text + size), line_(line), row_line_(line), limits_(limits) {}

  // Fills `cells` with the next row; false at the end.
  bool Next(std::vector<std::string_view>& cells);
  // The line on which the row read last begins.
  long RowLine() const { return row_line_; }

 private:
  std::string_view PlainCell();
  std::string_view QuotedCell();
  // Steps over what follows a cell: true for a comma, false for the end of the row.
  bool StepOverSeparator();
  bool AtRowEnd(const char* at) const;
  void CheckLimit(std::size_t size, Limit limit) const;

  char* next_;
  char* end_;
  SpecialBytes special_;
  long line_;
  long row_line_;
  Limits limits_;
};

// For a row that has not as many cells as its header.
CsvError WrongWidth(long line, const std::vector<std::string_view>& cells, std::size_t width);

}  // namespace svmscore::app

#endif  // APP_TABLE_CSV_ROW_H_
