// Cuts the input into blocks of whole rows, so that rows can be parsed by several threads.
#ifndef APP_TABLE_ROW_BLOCKS_H_
#define APP_TABLE_ROW_BLOCKS_H_

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <limits>
#include <string>

#include "app/files/input_file.h"
#include "app/table/csv_row.h"
#include "app/table/file_part.h"
#include "app/table/quotation.h"

namespace svmscore::app {

// Whole rows of the input.
struct RowBlock {
  std::string text;
  long first_line = 1;  // the number of the text's first line in the input
};

// Reads on one thread. It looks at nothing but quotation marks and line ends: a row ends at a line
// end that is not inside a quoted cell. Holds one block and the beginning of the next.
class RowBlocks {
 public:
  static constexpr std::size_t kMostBlock = std::size_t{256} << 10;

  // A block ends at the last end of a row at hand once there are `block_bytes`, or earlier where
  // the input ends, or where whoever writes it pauses after the end of a row: no row waits for
  // those that follow it. `input` must outlive this object.
  explicit RowBlocks(InputFile& input, const RowForm& form = {},
                     std::size_t block_bytes = kMostBlock)
      : input_(input),
        form_(form),
        block_bytes_(block_bytes),
        least_block_(std::min(block_bytes, kFewBytes)),
        least_read_(least_block_) {}
  // The blocks that follow have a row each, until they grow.
  void BeginWithRows() {
    block_bytes_ = 1;
    least_block_ = 1;
  }

  // The first row that is no blank line, without a byte-order mark; false where there is none.
  bool ReadHeader(RowBlock& header);
  // For the rows that follow, once their header shows what separates cells.
  void SetDelimiter(char delimiter) {
    form_.delimiter = delimiter;
    scan_ = {};
  }
  char Delimiter() const { return form_.delimiter; }
  // After the header of a table of `width` columns: leaves only the rows of `part` to read. Reads
  // the file, which is plain, up to them, because quoting and row numbers depend on all that is
  // before. Throws a Failure(kInputError) for an unreadable input.
  void Take(const FilePart& part, std::size_t width);
  // The next rows; false at the end. Throws a Failure(kInputError) for an unreadable input and a
  // CsvError for a row that exceeds its limit, as one without end does.
  bool Next(RowBlock& block);
  // Halve and double the blocks that follow, within bounds; on any thread.
  void ShrinkBlocks() {
    std::size_t bytes = block_bytes_;
    while (bytes > least_block_ &&
           !block_bytes_.compare_exchange_weak(bytes, std::max(bytes / 2, least_block_))) {
    }
  }
  void GrowBlocks() {
    std::size_t bytes = block_bytes_;
    while (bytes < kMostBlock &&
           !block_bytes_.compare_exchange_weak(bytes, std::min(bytes * 2, kMostBlock))) {
    }
  }
  // Rows of the table before the part that is read; 0 where all of it is.
  std::uint64_t RowsBefore() const { return rows_before_; }
  // Of the file, or of the part of it that is read: the size in bytes, 0 where it is not known, and
  // the bytes that were read so far.
  std::uint64_t Size() const;
  std::uint64_t BytesRead() const { return input_.BytesRead() - begin_; }

 private:
  static constexpr std::size_t kFewBytes = 4096;

  // Where the scan of the text in hand stands.
  struct Scan {
    std::size_t done = 0;           // bytes looked at
    std::size_t row_end = 0;        // just after the last end of a row
    std::size_t first_row_end = 0;  // just after the first one; 0 while there is none
    Quotation quotation;            // by the bytes of the input
  };

  // Reads on; false at the end of the input, and where there is a row and it would wait for more.
  bool Fill();
  void CheckBeginning() const;
  void DropBlankLines();
  void ScanText();
  void NoteRowEnds(std::size_t from, std::size_t to);
  bool OpensCell(std::size_t quote) const;
  void EndPartAfter(std::size_t from, std::size_t& to);
  // Where a block of so many bytes ends in the text, which has whole rows.
  std::size_t EndOfBlock(std::size_t bytes) const;
  void CutAt(std::size_t end, RowBlock& block);
  void PassOver(std::uint64_t bytes, std::size_t width);
  void Drop(std::size_t size);

  InputFile& input_;
  RowForm form_;
  std::atomic<std::size_t> block_bytes_;
  std::size_t least_block_;
  std::size_t least_read_;  // of bytes, however small blocks are
  std::string buffer_;
  std::string text_;
  Scan scan_;
  std::uint64_t offset_ = 0;  // of the text in the input
  long line_ = 1;
  bool at_end_ = false;
  // Of the part that is read: what is before it, and where in the input its last row ends, or
  // before.
  std::uint64_t rows_before_ = 0;
  std::uint64_t begin_ = 0;
  std::uint64_t end_ = std::numeric_limits<std::uint64_t>::max();
};

}  // namespace svmscore::app

#endif  // APP_TABLE_ROW_BLOCKS_H_
