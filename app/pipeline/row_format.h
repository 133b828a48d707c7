// How a row of output is spelled: as CSV, or as a JSON object on a line.
#ifndef APP_PIPELINE_ROW_FORMAT_H_
#define APP_PIPELINE_ROW_FORMAT_H_

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace svmscore::app {

// Appends to a text. Shared by all threads: it keeps no state of a row.
class RowFormat {
 public:
  virtual ~RowFormat() = default;

  // What stands before the first row.
  virtual void Header(std::string& out) const = 0;
  // Begins the cell of a column, from 0 upward in every row. One of the four cells follows.
  virtual void Begin(std::string& out, std::size_t column) const = 0;
  virtual void Empty(std::string& out) const = 0;
  virtual void Text(std::string& out, std::string_view text) const = 0;
  // In the shortest form that reads back to the same double.
  virtual void Number(std::string& out, double number) const = 0;
  virtual void Whole(std::string& out, long number) const = 0;
  virtual void EndRow(std::string& out) const = 0;
};

// RFC 4180 with LF at the end of rows, and perhaps another delimiter; a cell is quoted only where
// it must be.
std::unique_ptr<RowFormat> CsvFormat(std::vector<std::string> names, char delimiter = ',');
// An empty cell is null. So is a number that is not finite, for which JSON has no spelling.
std::unique_ptr<RowFormat> JsonLinesFormat(const std::vector<std::string>& names);

}  // namespace svmscore::app

#endif  // APP_PIPELINE_ROW_FORMAT_H_
