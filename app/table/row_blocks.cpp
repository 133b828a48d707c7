#include "app/table/row_blocks.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include <fmt/format.h>

#include "app/base/failure.h"
#include "app/table/csv_row.h"
#include "app/table/table_limit.h"
#include "tools/base/file_kind.h"

namespace svmscore::app {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

}  // namespace

bool RowBlocks::ReadHeader(RowBlock& header) {
  while (text_.size() < kByteOrderMark.size() && kByteOrderMark.starts_with(text_) && Fill()) {
  }
  if (text_.starts_with(kByteOrderMark)) text_.erase(0, kByteOrderMark.size());
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
      line_ +=
          std::count(text_.begin(), text_.begin() + static_cast<std::ptrdiff_t>(end) + 1, '\n');
      text_.erase(0, end + 1);
    }
    if (text_.find_first_not_of(" \t\r\n") != std::string::npos) return;
  } while (Fill());
  text_.clear();
}

bool RowBlocks::Next(RowBlock& block) {
  ScanText();
  while ((text_.size() < block_bytes_ || scan_.row_end == 0) && Fill()) ScanText();
  if (text_.empty()) return false;
  CutAt(at_end_ ? text_.size() : scan_.row_end, block);
  return true;
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
  buffer_.resize(block_bytes_);
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
    const std::size_t quote =
        found == nullptr ? text_.size()
                         : static_cast<std::size_t>(static_cast<const char*>(found) - text);
    if (!scan_.quoted) NoteRowEnds(scan_.done, quote);
    scan_.done = quote;
    if (quote == text_.size()) return;
    ++scan_.done;
    if (scan_.quoted) {
      scan_.quoted = false;
      scan_.just_closed = scan_.done;
    } else {
      // A mark right after a closing one is a doubled mark: the cell goes on. A mark elsewhere is
      // broken quoting, which the parser of the row refuses.
      scan_.quoted = quote == scan_.just_closed || OpensCell(quote);
    }
  }
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
  line_ += std::count(block.text.begin(), block.text.end(), '\n');
  text_.erase(0, end);
  if (end == scan_.row_end) {
    scan_.done -= end;
    scan_.row_end = 0;
    scan_.first_row_end = 0;
    scan_.just_closed = scan_.just_closed == std::string::npos || scan_.just_closed < end
                            ? std::string::npos
                            : scan_.just_closed - end;
  } else {
    scan_ = {};
  }
}

}  // namespace svmscore::app
