#include "app/pipeline/block_worker.h"

namespace svmscore::app {
namespace {

// So many bytes of lines wait for the log.
constexpr std::size_t kMostLogged = std::size_t{1} << 20;

}  // namespace

BlockWorker::BlockWorker(const RowForm& form, std::size_t width, std::size_t long_output)
    : form_(form), width_(width), long_output_(long_output) {}

BlockWorker::~BlockWorker() = default;

void BlockWorker::Work(CaseBlock& block) {
  block.error.reset();
  block.row_like_cells.Clear();
  lines_.clear();
  written_ = 0;
  rows_written_ = 0;
  reader_.emplace(block.rows.text.data(), block.rows.text.size(), block.rows.first_line, form_);
  Resume(block);
}

void BlockWorker::Resume(CaseBlock& block) {
  block.out.clear();
  block.tally = {};
  block.failures.Clear();
  block.done = false;
  while (!block.done && HasRoom(block)) {
    if (written_ == lines_.size()) ReadChunk(block);
    while (written_ < lines_.size() && HasRoom(block)) {
      WriteRow(written_++, block);
      ++rows_written_;
    }
    block.done = !reader_ && written_ == lines_.size();
  }
}

void BlockWorker::ReadChunk(CaseBlock& block) {
  cells_.clear();
  lines_.clear();
  written_ = 0;
  ClearChunk();
  bool more = false;
  try {
    more = FillChunk(*reader_);
  } catch (const CsvError& error) {
    block.error = error;
  }
  if (!more) {
    block.row_like_cells = reader_->CellsLikeRows();
    reader_.reset();
  }
  ComputeChunk();
}

bool BlockWorker::FillChunk(CsvRows& rows) {
  while (HasRoomInChunk()) {
    if (!rows.Next(row_cells_, width_)) return false;
    cells_.insert(cells_.end(), row_cells_.begin(), row_cells_.end());
    TakeRow(row_cells_.data());
    lines_.push_back(rows.RowLine());
  }
  return true;
}

bool BlockWorker::HasRoom(const CaseBlock& block) const {
  return block.out.size() < long_output_ && block.failures.Size() < kMostLogged;
}

}  // namespace svmscore::app
