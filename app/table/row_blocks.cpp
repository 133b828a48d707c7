#include "app/table/row_blocks.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include <fmt/format.h>

#include "app/base/failure.h"
#include "app/table/csv_row.h"
#include "app/table/row_counter.h"
#include "app/table/table_limit.h"
#include "tools/base/file_kind.h"

namespace svmscore::app {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

long LineEndsIn(std::string_view text) {
  // A byte holds the count of a piece, so that compilers count in all bytes of a register at once.
  constexpr std::size_t kPiece = 240;
  long count = 0;
  for (; !text.empty(); text.remove_prefix(std::min(text.size(), kPiece))) {
    std::uint8_t in_piece = 0;
    for (const char c : text.substr(0, kPiece)) {
      in_piece = static_cast<std::uint8_t>(in_piece + (c == '\n' ? 1 : 0));
    }
    count += in_piece;
  }
  return count;
}

}  // namespace

bool RowBlocks::ReadHeader(RowBlock& header) {
  while (text_.size() < kByteOrderMark.size() && kByteOrderMark.starts_with(text_) && Fill()) {
  }
  if (text_.starts_with(kByteOrderMark)) Drop(kByteOrderMark.size());
  DropBlankLines();
  ScanText();
  while (scan_.first_row_end == 0) {
    if (text_.size() >= tools::kKindBytes) CheckBeginning();
    if (!Fill()) break;
    ScanText();
  }
  if (text_.empty()) return false;
  CheckBeginning();
  CutAt(scan_.first_row_end == 0 ? text_.size() : scan_.first_row_end, header);
  return true;
}

// Throws where the first row, of which so much is at hand as tells it, is known to be no text.
void RowBlocks::CheckBeginning() const {
  const std::size_t first = scan_.first_row_end == 0 ? text_.size() : scan_.first_row_end;
  const std::string why = tools::WhyNoTable({text_.data(), std::min(first, tools::kKindBytes)});
  if (!why.empty()) throw Failure(kInputError, fmt::format("{}: {}", input_.Name(), why));
}

// Of the text that is not scanned yet.
void RowBlocks::DropBlankLines() {
  do {
    const std::size_t begin = std::min(text_.find_first_not_of(" \t\r\n"), text_.size());
    const std::size_t end = begin == 0 ? std::string::npos : text_.rfind('\n', begin - 1);
    if (end != std::string::npos) {
      line_ += LineEndsIn(std::string_view(text_).substr(0, end + 1));
      Drop(end + 1);
    }
    if (text_.find_first_not_of(" \t\r\n") != std::string::npos) return;
  } while (Fill());
  Drop(text_.size());
}

void RowBlocks::Take(const FilePart& part, std::size_t width) {
  const std::uint64_t first = offset_;
  const std::uint64_t bytes = std::max(input_.Size(), first) - first;
  if (!part.IsFirst()) PassOver(part.Begin(bytes), width);
  begin_ = part.IsFirst() ? 0 : offset_;
  // The last part takes what there is, as one run for the whole file would.
  if (part.IsLast()) return;
  end_ = first + part.End(bytes);
  if (offset_ < end_) return;
  text_.clear();
  at_end_ = true;
}

// Passes over the first rows that have at least so many bytes.
void RowBlocks::PassOver(std::uint64_t bytes, std::size_t width) {
  if (bytes == 0) return;
  RowCounter counter(form_.delimiter, width);
  scan_ = {};
  for (;;) {
    const auto end = counter.CountTo(bytes, text_);
    bytes -= std::min<std::uint64_t>(bytes, text_.size());
    Drop(end.value_or(text_.size()));
    if (end) break;
    text_.resize(block_bytes_);
    text_.resize(input_.Read(text_.data(), text_.size()));
    at_end_ = text_.empty();
    if (at_end_) break;
  }
  rows_before_ = counter.Rows();
  line_ += static_cast<long>(counter.Lines());
}

std::uint64_t RowBlocks::Size() const {
  const std::uint64_t end = std::min(end_, input_.Size());
  return end - std::min(begin_, end);
}

bool RowBlocks::Next(RowBlock& block) {
  ScanText();
  const std::size_t bytes = block_bytes_;
  while ((text_.size() < bytes || scan_.row_end == 0) && Fill()) ScanText();
  if (text_.empty()) return false;
  CutAt(EndOfBlock(bytes), block);
  return true;
}

// A block that is no smaller than what is read takes all whole rows at hand, so that the rest need
// not be scanned again.
std::size_t RowBlocks::EndOfBlock(std::size_t bytes) const {
  const std::size_t last = at_end_ ? text_.size() : scan_.row_end;
  if (bytes >= least_read_) return last;
  Quotation quotation;
  for (std::size_t i = 0; i < last; ++i) {
    if (text_[i] == '"') quotation.Meet(i, OpensCell(i));
    if (text_[i] == '\n' && !quotation.IsOpen() && i + 1 >= bytes) return i + 1;
  }
  return last;
}

bool RowBlocks::Fill() {
  if (at_end_) return false;
  if (scan_.row_end == 0 && text_.size() > form_.limits.row_length) {
    const bool has_cr =
        text_.find('\n') == std::string::npos && text_.find('\r') != std::string::npos;
    throw CsvError(line_,
                   (has_cr ? "do the lines end with CR alone? They must end with LF or CRLF; "
                           : "is a quoted cell never closed? ") +
                       BeyondTableLimit(form_.limits, &Limits::row_length));
  }
  buffer_.resize(std::max<std::size_t>(block_bytes_, least_read_));
  const auto count = scan_.row_end == 0 ? input_.Read(buffer_.data(), buffer_.size())
                                        : input_.ReadWaiting(buffer_.data(), buffer_.size());
  if (!count) return false;
  text_.append(buffer_, 0, *count);
  at_end_ = *count == 0;
  return !at_end_;
}

// Continues the scan to the end of the text.
void RowBlocks::ScanText() {
  const char* text = text_.data();
  while (scan_.done < text_.size()) {
    // NOLINTNEXTLINE(bugprone-not-null-terminated-result): the text may hold zeros
    const void* found = std::memchr(text + scan_.done, '"', text_.size() - scan_.done);
    std::size_t quote = found == nullptr
                            ? text_.size()
                            : static_cast<std::size_t>(static_cast<const char*>(found) - text);
    if (!scan_.quotation.IsOpen()) {
      EndPartAfter(scan_.done, quote);
      NoteRowEnds(scan_.done, quote);
    }
    scan_.done = quote;
    if (quote == text_.size()) return;
    ++scan_.done;
    scan_.quotation.Meet(offset_ + quote, OpensCell(quote));
  }
}

// If the last row of the part ends in these bytes, which no cell quotes, ends bytes and text there.
void RowBlocks::EndPartAfter(std::size_t from, std::size_t& to) {
  if (offset_ + to < end_) return;
  from = std::max<std::size_t>(from, end_ - offset_ - 1);
  const std::size_t row_end = std::string_view(text_).substr(0, to).find('\n', from);
  if (row_end == std::string_view::npos) return;
  to = row_end + 1;
  text_.resize(to);
  at_end_ = true;
}

void RowBlocks::NoteRowEnds(std::size_t from, std::size_t to) {
  const char* text = text_.data();
  if (scan_.first_row_end == 0) {
    const void* first = std::memchr(text + from, '\n', to - from);
    if (first == nullptr) return;
    scan_.first_row_end = static_cast<std::size_t>(static_cast<const char*>(first) - text) + 1;
  }
  const void* last = memrchr(text + from, '\n', to - from);
  if (last == nullptr) return;
  scan_.row_end = static_cast<std::size_t>(static_cast<const char*>(last) - text) + 1;
}

bool RowBlocks::OpensCell(std::size_t quote) const {
  return quote == 0 || text_[quote - 1] == form_.delimiter || text_[quote - 1] == '\n';
}

// Hands out the text before `end` and keeps the rest, whose scan goes on where it stood unless the
// cut is before it.
void RowBlocks::CutAt(std::size_t end, RowBlock& block) {
  block.first_line = line_;
  block.text.assign(text_, 0, end);
  line_ += LineEndsIn(block.text);
  Drop(end);
  if (end == scan_.row_end) {
    scan_.done -= end;
    scan_.row_end = 0;
    scan_.first_row_end = 0;
  } else {
    scan_ = {};
  }
}

void RowBlocks::Drop(std::size_t size) {
  text_.erase(0, size);
  offset_ += size;
}

}  // namespace svmscore::app
