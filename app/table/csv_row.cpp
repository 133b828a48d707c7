#include "app/table/csv_row.h"

#include <fmt/format.h>

#include "app/table/table_limit.h"

namespace svmscore::app {
namespace {

bool IsDigits(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

// How many numbers with a decimal comma the cells may have been, each two of them.
std::size_t PairsOfDigits(const std::vector<std::string_view>& cells) {
  std::size_t pairs = 0;
  for (std::size_t i = 0; i + 1 < cells.size(); ++i) {
    std::string_view whole = cells[i];
    if (whole.starts_with('-')) whole.remove_prefix(1);
    if (!IsDigits(whole) || !IsDigits(cells[i + 1])) continue;
    ++pairs;
    ++i;
  }
  return pairs;
}

}  // namespace

void CsvRows::CheckBlank(const std::vector<std::string_view>& cells, std::size_t width) const {
  const bool is_blank = cells.size() == 1 && *row_begin_ != '"' &&
                        cells[0].find_first_not_of(" \t\r") == std::string_view::npos;
  if (is_blank) return;
  throw CsvError(row_line_,
                 fmt::format("a row of {} where the header has {} cell{}{}", cells.size(), width,
                             width == 1 ? "" : "s", WidthHint(cells, width)));
}

// Why a row may have more cells than the header.
std::string CsvRows::WidthHint(const std::vector<std::string_view>& cells,
                               std::size_t width) const {
  if (cells.size() <= width) return {};
  constexpr std::string_view kQuote =
      "a comma separates cells here, so that a number with a decimal comma must be quoted";
  if (form_.delimiter == ',' && form_.decimal_comma) {
    return fmt::format("; {}, or --delimiter must name another character", kQuote);
  }
  const std::size_t more = cells.size() - width;
  if (more == 1 && cells.back().empty()) return "; the row ends with a delimiter";
  if (form_.delimiter == ',' && PairsOfDigits(cells) >= more) {
    return fmt::format("; {}, and --decimal-comma given{}", kQuote,
                       more == 1 ? "; or does a column of row numbers lack its name?" : "");
  }
  return more == 1 ? "; does a column of row numbers lack its name?" : "";
}

bool CsvRows::Next(std::vector<std::string_view>& cells) {
  cells.clear();
  if (next_ == end_) return false;
  row_line_ = line_;
  row_begin_ = next_;
  do {
    AddPlainCells(cells);
    cells.push_back(next_ != end_ && *next_ == '"' ? QuotedCell() : PlainCell());
    CheckLimit(cells.back().size(), &Limits::cell_length);
    CheckLimit(cells.size(), &Limits::columns);
  } while (StepOverSeparator());
  CheckLimit(static_cast<std::size_t>(next_ - row_begin_), &Limits::row_length);
  return true;
}

void CsvRows::AddPlainCells(std::vector<std::string_view>& cells) {
  // A copy, which the compiler knows not to be changed by the cells.
  SpecialBytes special = special_;
  char* begin = next_;
  for (;;) {
    char* const end = special.Find(begin, end_);
    if (end == end_ || *end != form_.delimiter) break;
    cells.emplace_back(begin, static_cast<std::size_t>(end - begin));
    CheckLimit(cells.back().size(), &Limits::cell_length);
    CheckLimit(cells.size(), &Limits::columns);
    begin = end + 1;
  }
  special_ = special;
  next_ = begin;
}

std::string_view CsvRows::PlainCell() {
  const char* begin = next_;
  for (; next_ = special_.Find(next_, end_), next_ != end_; ++next_) {
    const char c = *next_;
    if (c == form_.delimiter || c == '\n') break;
    if (c == '\r') {
      if (AtRowEnd(next_)) break;
      throw CsvError(line_, "a carriage return inside a cell that is not quoted" + HintOf(c));
    }
    if (c == '"') {
      throw CsvError(line_, "a quotation mark inside a cell that is not quoted" +
                                HintOf(next_ == begin ? c : next_[-1]));
    }
    if (c == '\0') throw CsvError(line_, "a NUL byte: the file is no UTF-8 text");
  }
  return {begin, static_cast<std::size_t>(next_ - begin)};
}

std::string_view CsvRows::QuotedCell() {
  const long first_line = line_;
  char* begin = ++next_;
  char* kept = begin;
  for (; next_ != end_; ++next_) {
    if (*next_ == '\0') throw CsvError(line_, "a NUL byte: the file is no UTF-8 text");
    if (*next_ == '"') {
      if (next_ + 1 == end_ || next_[1] != '"') break;
      ++next_;
    }
    if (*next_ == '\n') ++line_;
    *kept++ = *next_;
  }
  if (next_ == end_) throw CsvError(first_line, "a quoted cell that is never closed");
  ++next_;
  if (next_ != end_ && *next_ != form_.delimiter && !AtRowEnd(next_)) {
    throw CsvError(line_, "text after the closing quotation mark of a cell" + HintOf(*next_));
  }
  return {begin, static_cast<std::size_t>(kept - begin)};
}

// For a character beside a cell that neither separates cells nor ends a row.
std::string CsvRows::HintOf(char beside) {
  if (beside == '\r') return "; do the lines end with CR alone? They must end with LF or CRLF";
  if (std::string_view(";,|\t").find(beside) == std::string_view::npos) return {};
  const std::string name = beside == '\t' ? "tab" : fmt::format("'{}'", beside);
  return fmt::format("; are the cells separated by {}? Then give --delimiter {}",
                     beside == '\t' ? "tabs" : name, name);
}

bool CsvRows::StepOverSeparator() {
  if (next_ == end_) {
    ++line_;
    return false;
  }
  if (*next_ == form_.delimiter) {
    ++next_;
    return true;
  }
  if (*next_ == '\r') ++next_;
  if (next_ != end_) ++next_;
  ++line_;
  return false;
}

void CsvRows::RefuseRow(Limit limit) const {
  throw CsvError(row_line_, BeyondTableLimit(form_.limits, limit));
}

bool CsvRows::AtRowEnd(const char* at) const {
  if (*at == '\r') ++at;
  return at == end_ || *at == '\n';
}

}  // namespace svmscore::app
