// Drawing cases of a table of any length, in bounded memory.
#ifndef TOOLS_REPORT_CASE_DRAW_H_
#define TOOLS_REPORT_CASE_DRAW_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace svmscore::tools {

// A number that looks drawn at random, the same for the same two numbers everywhere. [any thread]
// Fails: never.
std::uint64_t DrawnKey(std::uint64_t seed, std::uint64_t number);

// A row of a table, in little memory.
struct DrawnRow {
  std::uint64_t number = 0;         // of the row, from 1
  std::string text;                 // of all cells
  std::vector<std::uint32_t> ends;  // of each cell in the text

  std::string_view Cell(std::size_t cell) const {
    const std::size_t begin = cell == 0 ? 0 : ends[cell - 1];
    return std::string_view(text).substr(begin, ends[cell] - begin);
  }
};

// Keeps those rows whose keys are the smallest: a random sample without replacement, every row as
// likely as another, which depends on the seed and the number of rows alone as long as the bytes
// suffice. [one thread] for each object. Fails: std::bad_alloc.
class CaseDraw {
 public:
  // Holds at most so many rows, and so many bytes of them, but one row at least.
  CaseDraw(std::uint64_t seed, std::size_t most_rows, std::size_t most_bytes)
      : seed_(seed), most_rows_(most_rows), most_bytes_(most_bytes) {}

  // REQUIRES: the cells of a row have fewer than 4 GiB together.
  void Add(const std::vector<std::string_view>& cells);
  // Of all rows that were added.
  std::uint64_t Rows() const { return rows_; }
  // The rows kept, in the order of the table; then none are kept.
  std::vector<DrawnRow> Take();

 private:
  struct Kept {
    std::uint64_t key;
    DrawnRow row;
    bool operator<(const Kept& other) const {
      return key != other.key ? key < other.key : row.number < other.row.number;
    }
  };
  static std::size_t BytesOf(const DrawnRow& row);
  void DropOne();

  std::uint64_t seed_;
  std::size_t most_rows_;
  std::size_t most_bytes_;
  std::uint64_t rows_ = 0;
  std::size_t bytes_ = 0;
  std::vector<Kept> kept_;  // a heap, the largest key first
};

}  // namespace svmscore::tools

#endif  // TOOLS_REPORT_CASE_DRAW_H_
