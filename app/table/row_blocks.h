// Cuts the input into blocks of whole rows, so that rows can be parsed by several threads.
#ifndef APP_TABLE_ROW_BLOCKS_H_
#define APP_TABLE_ROW_BLOCKS_H_

#include <atomic>
#include <cstdint>
#include <string>

#include "app/files/input_file.h"
#include "app/table/csv_row.h"

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
  // A block ends at the first end of a row at or after `block_bytes`, or earlier where the input
  // ends, or where whoever writes it pauses after the end of a row: no row waits for those that
  // follow it. `input` must outlive this object.
  explicit RowBlocks(InputFile& input, const RowForm& form = {},
                     std::size_t block_bytes = 256U << 10U)
      : input_(input), form_(form), block_bytes_(block_bytes) {}

  // The first row that is no blank line, without a byte-order mark; false where there is none.
  bool ReadHeader(RowBlock& header);
  // For the rows that follow, once their header shows what separates cells.
  void SetDelimiter(char delimiter) {
    form_.delimiter = delimiter;
    scan_ = {};
  }
  // The next rows; false at the end. Throws a Failure(kInputError) for an unreadable input and a
  // CsvError for a row that exceeds its limit, as one without end does.
  bool Next(RowBlock& block);
  // Halves the blocks that follow; on any thread.
  void ShrinkBlocks() {
    if (block_bytes_ > kLeastBlock) block_bytes_ = block_bytes_ / 2;
  }
  // Bytes of the file that were read so far.
  std::uint64_t BytesRead() const { return input_.BytesRead(); }

 private:
  static constexpr std::size_t kLeastBlock = 4096;

  // Where the scan of the text in hand stands.
  struct Scan {
    std::size_t done = 0;                         // bytes looked at
    std::size_t row_end = 0;                      // just after the last end of a row
    std::size_t first_row_end = 0;                // just after the first one; 0 while there is none
    std::size_t just_closed = std::string::npos;  // just after the last closing quotation mark
    bool quoted = false;
  };

  // Reads on; false at the end of the input, and where there is a row and it would wait for more.
  bool Fill();
  void CheckBeginning() const;
  void DropBlankLines();
  void ScanText();
  void NoteRowEnds(std::size_t from, std::size_t to);
  bool OpensCell(std::size_t quote) const;
  void CutAt(std::size_t end, RowBlock& block);

  InputFile& input_;
  RowForm form_;
  std::atomic<std::size_t> block_bytes_;
  std::string buffer_;
  std::string text_;
  Scan scan_;
  long line_ = 1;
  bool at_end_ = false;
};

}  // namespace svmscore::app

#endif  // APP_TABLE_ROW_BLOCKS_H_
