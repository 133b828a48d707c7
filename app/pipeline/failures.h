// What a run tells of the cases that failed.
#ifndef APP_PIPELINE_FAILURES_H_
#define APP_PIPELINE_FAILURES_H_

#include <cstdint>
#include <string>
#include <vector>

#include "app/table/row_like_cells.h"
#include "host/reasons/reason.h"

namespace svmscore::app {

// Of some rows in a row: for each failed cell a line, the first ones or all, and how often each
// reason occurred.
class Failures {
 public:
  // `keep_all` lines, and not only as many as are shown in the end.
  explicit Failures(bool keep_all = false) : keep_all_(keep_all) {}

  // Those of a case that is the row at position `row`, from 0, and begins on `line` of the table.
  void Add(std::uint64_t row, long line, const std::vector<reasons::Reason>& found);
  // Those of rows of which the first one is at position `first_row`. Writes lines to the log where
  // `other` has kept all.
  void Add(const Failures& other, std::uint64_t first_row);
  void Clear();
  bool IsEmpty() const { return cells_ == 0; }
  // Bytes of the lines.
  std::size_t Size() const { return size_; }

  // Lines for standard error, printable; empty where no case failed.
  std::string Text() const;

 private:
  struct Line {
    std::uint64_t row;
    long line;
    std::string text;
  };

  static std::string PlaceOf(const Line& line);

  bool keep_all_;
  std::vector<Line> lines_;
  std::size_t size_ = 0;
  std::uint64_t cells_ = 0;
  reasons::ReasonCounts counts_;
};

// All that a run tells of its cases: lines for standard error, printable; empty where nothing is
// wrong with them.
std::string TextOf(const Failures& failures, const RowLikeCells& row_like_cells,
                   const std::string& input_name);

}  // namespace svmscore::app

#endif  // APP_PIPELINE_FAILURES_H_
