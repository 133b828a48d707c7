// Counts rows of CSV without taking them apart, at the speed of memory.
#ifndef APP_TABLE_ROW_COUNTER_H_
#define APP_TABLE_ROW_COUNTER_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "app/table/byte_block.h"
#include "app/table/quotation.h"

namespace svmscore::app {

// Rows end where RowBlocks ends them, also where quoting is broken. Used by one thread.
class RowCounter {
 public:
  // `width`: the columns of the table. Of one column a blank line is a row, else it is none.
  RowCounter(char delimiter, std::size_t width);

  // Goes on with `text`, which follows the texts before it, the first of which began with a row. At
  // the first row that ends after at least `least` bytes of `text`, its end included, returns how
  // many those are, and is done with counting; else counts all of `text` and returns nothing.
  std::optional<std::size_t> CountTo(std::size_t least, std::string_view text);
  std::uint64_t Rows() const { return rows_; }
  std::uint64_t Lines() const { return lines_; }

 private:
  std::optional<std::size_t> CountBlock(std::size_t least, const char* text, std::size_t size);
  // The bytes of the block that are inside quoted cells.
  std::uint64_t QuotedBytes(const ByteBlock& block, std::uint64_t line_ends);

  ByteBlock::Bytes delimiter_;  // in every place
  bool skips_blank_lines_;
  Quotation quotation_;
  std::uint64_t offset_ = 0;     // bytes that were looked at
  bool after_separator_ = true;  // the last of these was a delimiter or a line end
  bool is_blank_ = true;         // the row at hand has blanks so far, or nothing
  std::uint64_t rows_ = 0;
  std::uint64_t lines_ = 0;
};

}  // namespace svmscore::app

#endif  // APP_TABLE_ROW_COUNTER_H_
