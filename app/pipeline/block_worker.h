// What one thread does with one block: rows of text become rows of output, chunk by chunk.
#ifndef APP_PIPELINE_BLOCK_WORKER_H_
#define APP_PIPELINE_BLOCK_WORKER_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "app/pipeline/case_block.h"
#include "app/table/csv_row.h"

namespace svmscore::app {

// Used by one thread. Takes the rows of a block in chunks: reads a chunk, computes it as one batch,
// and writes it. A command says how by deriving from it.
class BlockWorker {
 public:
  // `width`: cells in every row. So much text is not held back for rows that follow: a thousand
  // cases may be two bytes each to read and a megabyte each to write.
  BlockWorker(const RowForm& form, std::size_t width,
              std::size_t long_output = std::size_t{16} << 20);
  virtual ~BlockWorker();
  BlockWorker(const BlockWorker&) = delete;
  BlockWorker& operator=(const BlockWorker&) = delete;

  // Works on the rows of the block up to the first broken one, or until `out` is long: then `done`
  // is false, and once `out` is written, Resume of the same worker, on any thread, goes on with a
  // new one.
  void Work(CaseBlock& block);
  void Resume(CaseBlock& block);
  // Lets the model fix the positions of its variables in records, which must not happen on several
  // threads at once.
  virtual void FixPositions() = 0;

 protected:
  // The chunk begins anew, without rows.
  virtual void ClearChunk() = 0;
  // Whether it takes one more row.
  virtual bool HasRoomInChunk() const = 0;
  // Takes a row, of which these are the cells.
  virtual void TakeRow(const std::string_view* cells) = 0;
  virtual void ComputeChunk() = 0;
  // Appends the output of a row of the chunk, and counts it.
  virtual void WriteRow(std::size_t row, CaseBlock& block) = 0;
  // Meanwhile: the rows of the block before this one.
  std::uint64_t RowsWritten() const { return rows_written_; }

  std::size_t RowsInChunk() const { return lines_.size(); }
  // Of a row of the chunk: its cells, and its line of the table.
  const std::string_view* CellsOf(std::size_t row) const { return cells_.data() + row * width_; }
  long LineOf(std::size_t row) const { return lines_[row]; }

 private:
  // Makes the next rows the chunk, and computes it.
  void ReadChunk(CaseBlock& block);
  // Reads rows until the chunk is full; false at the end of the rows.
  bool FillChunk(CsvRows& rows);
  bool HasRoom(const CaseBlock& block) const;

  RowForm form_;
  std::size_t width_;
  std::size_t long_output_;
  std::vector<std::string_view> row_cells_;
  std::vector<std::string_view> cells_;  // [rows][width]
  std::vector<long> lines_;              // [rows]
  std::size_t written_ = 0;              // rows of the chunk
  std::uint64_t rows_written_ = 0;       // rows of the block
  std::optional<CsvRows> reader_;        // of the block at hand; nothing after its last row
};

}  // namespace svmscore::app

#endif  // APP_PIPELINE_BLOCK_WORKER_H_
