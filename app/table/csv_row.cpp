#include "app/table/csv_row.h"

#include <fmt/format.h>

#include "app/table/table_limit.h"

namespace svmscore::app {

void CsvRows::CheckBlank(const std::vector<std::string_view>& cells, std::size_t width) const {
  const bool is_blank = cells.size() == 1 && *row_begin_ != '"' &&
                        cells[0].find_first_not_of(" \t\r") == std::string_view::npos;
  if (is_blank) return;
  const bool split_number = form_.decimal_comma && form_.delimiter == ',' && cells.size() > width;
  throw CsvError(
      row_line_,
      fmt::format("a row of {} where the header has {} cell{}{}", cells.size(), width,
                  width == 1 ? "" : "s",
                  split_number ? "; a comma separates cells here, so that a number with a decimal "
                                 "comma must be quoted, or --delimiter must name another character"
                               : ""));
}

bool CsvRows::Next(std::vector<std::string_view>& cells) {
  cells.clear();
  if (next_ == end_) return false;
  row_line_ = line_;
  row_begin_ = next_;
  do {
    cells.push_back(next_ != end_ && *next_ == '"' ? QuotedCell() : PlainCell());
    CheckLimit(cells.back().size(), &Limits::cell_length);
    CheckLimit(cells.size(), &Limits::columns);
  } while (StepOverSeparator());
  CheckLimit(static_cast<std::size_t>(next_ - row_begin_), &Limits::row_length);
  return true;
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

void CsvRows::CheckLimit(std::size_t size, Limit limit) const {
  if (size > form_.limits.*limit) throw CsvError(row_line_, BeyondTableLimit(form_.limits, limit));
}

bool CsvRows::AtRowEnd(const char* at) const {
  if (*at == '\r') ++at;
  return at == end_ || *at == '\n';
}

}  // namespace svmscore::app
