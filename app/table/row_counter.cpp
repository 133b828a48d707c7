#include "app/table/row_counter.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace svmscore::app {
namespace {

using Bytes = ByteBlock::Bytes;

constexpr std::uint64_t kAll = ~std::uint64_t{0};

std::uint64_t CountOf(std::uint64_t bits) {
  return static_cast<std::uint64_t>(std::popcount(bits));
}

}  // namespace

RowCounter::RowCounter(char delimiter, std::size_t width) : skips_blank_lines_(width > 1) {
  std::memset(&delimiter_, static_cast<unsigned char>(delimiter), sizeof delimiter_);
}

std::optional<std::size_t> RowCounter::CountTo(std::size_t least, std::string_view text) {
  for (std::size_t at = 0; at < text.size(); at += ByteBlock::kSize) {
    const std::size_t size = std::min(text.size() - at, ByteBlock::kSize);
    const auto end = CountBlock(least - std::min(least, at), text.data() + at, size);
    if (end) return at + *end;
  }
  return std::nullopt;
}

std::optional<std::size_t> RowCounter::CountBlock(std::size_t least, const char* text,
                                                  std::size_t size) {
  const ByteBlock block(text, size);
  const std::uint64_t line_ends = block.Where([](Bytes b) { return b == '\n'; });
  const std::uint64_t row_ends = line_ends & ~QuotedBytes(block, line_ends);
  const std::uint64_t blanks = block.Where(
      [this](Bytes b) { return ((b == ' ') | (b == '\t') | (b == '\r')) & (b != delimiter_); });
  // To add a bit to the first of some that adjoin carries it to the place after the last.
  const std::uint64_t begins = row_ends << 1 | std::uint64_t{is_blank_};
  std::uint64_t carried = 0;
  const bool carried_out = __builtin_add_overflow(blanks, begins & blanks, &carried);
  const std::uint64_t after_blanks = (begins | carried) & ~blanks;
  std::uint64_t counted = kAll;
  std::optional<std::size_t> end;
  if (least <= size) {
    const std::uint64_t late = row_ends & (kAll << (std::max<std::size_t>(least, 1) - 1));
    if (late != 0) {
      end = static_cast<std::size_t>(std::countr_zero(late)) + 1;
      counted = kAll >> (ByteBlock::kSize - *end);
    }
  }
  lines_ += CountOf(line_ends & counted);
  rows_ += CountOf(row_ends & counted);
  const std::uint64_t blank_lines = row_ends & after_blanks & counted;
  if (blank_lines != 0 && skips_blank_lines_) rows_ -= CountOf(blank_lines);
  offset_ += size;
  const char last = text[size - 1];
  after_separator_ = last == '\n' || static_cast<unsigned char>(last) == delimiter_[0];
  is_blank_ = size == ByteBlock::kSize ? carried_out || row_ends >> (ByteBlock::kSize - 1) != 0
                                       : (after_blanks >> size & 1) != 0;
  return end;
}

std::uint64_t RowCounter::QuotedBytes(const ByteBlock& block, std::uint64_t line_ends) {
  std::uint64_t quoted = quotation_.IsOpen() ? kAll : 0;
  std::uint64_t marks = block.Where([](Bytes b) { return b == '"'; });
  if (marks == 0) return quoted;
  const std::uint64_t separators =
      line_ends | block.Where([this](Bytes b) { return b == delimiter_; });
  const std::uint64_t cell_begins = separators << 1 | std::uint64_t{after_separator_};
  for (; marks != 0; marks &= marks - 1) {
    const int at = std::countr_zero(marks);
    const bool was_open = quotation_.IsOpen();
    quotation_.Meet(offset_ + static_cast<std::uint64_t>(at), (cell_begins >> at & 1) != 0);
    if (quotation_.IsOpen() != was_open) quoted ^= kAll << at;
  }
  return quoted;
}

}  // namespace svmscore::app
