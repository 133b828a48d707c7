// Quoted cells that may have swallowed rows, for a quotation mark is lost or added.
#ifndef APP_TABLE_ROW_LIKE_CELLS_H_
#define APP_TABLE_ROW_LIKE_CELLS_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace svmscore::app {

// The places of such cells; of many the first few, and how many more there are.
class RowLikeCells {
 public:
  // Adds those of a row of `cells` that begins on line `line`. A cell is one if it spans lines, and
  // each line that it spans has as many delimiters as a row has, blank lines aside.
  void Look(const std::vector<std::string_view>& cells, char delimiter, long line);
  void Add(const RowLikeCells& other);
  void Clear() { *this = {}; }
  bool IsEmpty() const { return count_ == 0; }
  // One remark; empty without such a cell.
  std::string Text() const;

 private:
  struct Lines {
    long first;
    long last;
  };

  void Add(const Lines& lines);

  std::vector<Lines> first_;
  std::size_t count_ = 0;
};

}  // namespace svmscore::app

#endif  // APP_TABLE_ROW_LIKE_CELLS_H_
