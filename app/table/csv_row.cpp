#include "app/table/csv_row.h"

#include <fmt/format.h>

#include "app/table/table_limit.h"

namespace svmscore::app {
CsvError WrongWidth(long line, const std::vector<std::string_view>& cells, std::size_t width) {
  const bool empty = cells.size() == 1 && cells[0].empty();
  return {line,
          fmt::format("{} where the header has {} cells",
                      empty ? "an empty line" : fmt::format("a row of {}", cells.size()), width)};
}

bool CsvRows::Next(std::vector<std::string_view>& cells) {
  cells.clear();
  if (next_ == end_) return false;
  row_line_ = line_;
  const char* begin = next_;
  do {
    cells.push_back(next_ != end_ && *next_ == '"' ? QuotedCell() : PlainCell());
    CheckLimit(cells.back().size(), &Limits::cell_length);
    CheckLimit(cells.size(), &Limits::columns);
  } while (StepOverSeparator());
  CheckLimit(static_cast<std::size_t>(next_ - begin), &Limits::row_length);
  return true;
}

std::string_view CsvRows::PlainCell() {
  const char* begin = next_;
  for (; next_ = special_.Find(next_, end_), next_ != end_; ++next_) {
    const char c = *next_;
    if (c == ',' || c == '\n') break;
    if (c == '\r' && AtRowEnd(next_)) break;
    if (c == '"') throw CsvError(line_, "a quotation mark inside a cell that is not quoted");
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
  if (next_ != end_ && *next_ != ',' && !AtRowEnd(next_)) {
    throw CsvError(line_, "text after the closing quotation mark of a cell");
  }
  return {begin, static_cast<std::size_t>(kept - begin)};
}

bool CsvRows::StepOverSeparator() {
  if (next_ == end_) return false;
  if (*next_ == ',') {
    ++next_;
    return true;
  }
  if (*next_ == '\r') ++next_;
  if (next_ != end_) ++next_;
  ++line_;
  return false;
}

void CsvRows::CheckLimit(std::size_t size, Limit limit) const {
  if (size > limits_.*limit) throw CsvError(row_line_, BeyondTableLimit(limits_, limit));
}

bool CsvRows::AtRowEnd(const char* at) const {
  if (*at == '\r') ++at;
  return at == end_ || *at == '\n';
}

}  // namespace svmscore::app
