#include "app/table/row_like_cells.h"

#include <algorithm>

#include <fmt/format.h>

namespace svmscore::app {
namespace {

constexpr std::size_t kMostTold = 3;

std::size_t CountOf(std::string_view text, char c) {
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), c));
}

// Whether the lines of cell `position` of `width`, together with what is before and after the cell,
// have the delimiters of rows.
bool LooksLikeRows(std::string_view cell, char delimiter, std::size_t position, std::size_t width) {
  std::size_t before = position;  // delimiters of the line that precede the cell
  for (bool is_first = true;; is_first = false) {
    const std::size_t end = std::min(cell.find('\n'), cell.size());
    const bool is_last = end == cell.size();
    const std::string_view line = cell.substr(0, end);
    const std::size_t count =
        before + CountOf(line, delimiter) + (is_last ? width - 1 - position : 0);
    const bool is_blank =
        !is_first && !is_last && line.find_first_not_of(" \t\r") == std::string_view::npos;
    if (count != width - 1 && !is_blank) return false;
    if (is_last) return true;
    cell.remove_prefix(end + 1);
    before = 0;
  }
}

}  // namespace

void RowLikeCells::Look(const std::vector<std::string_view>& cells, char delimiter, long line) {
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const auto line_ends = static_cast<long>(CountOf(cells[i], '\n'));
    if (line_ends == 0) continue;
    // One delimiter in the cell, or none, proves nothing.
    const bool has_several = static_cast<std::size_t>(line_ends) * (cells.size() - 1) > 1;
    if (has_several && LooksLikeRows(cells[i], delimiter, i, cells.size())) {
      Add({line, line + line_ends});
    }
    line += line_ends;
  }
}

void RowLikeCells::Add(const RowLikeCells& other) {
  const std::size_t more = other.count_ - other.first_.size();
  for (const Lines& lines : other.first_) Add(lines);
  count_ += more;
}

void RowLikeCells::Add(const Lines& lines) {
  ++count_;
  if (first_.size() < kMostTold) first_.push_back(lines);
}

std::string RowLikeCells::Text() const {
  if (count_ == 0) return {};
  std::string list;
  for (std::size_t i = 0; i < first_.size(); ++i) {
    list += fmt::format("{}from line {} to line {}", i == 0 ? "" : ", ", first_[i].first,
                        first_[i].last);
  }
  if (count_ > first_.size()) list += fmt::format(" and {} more", count_ - first_.size());
  return fmt::format(
      "the cell{} {} hold{} text that looks like rows; a quotation mark may be lost or added",
      count_ == 1 ? "" : "s", list, count_ == 1 ? "s" : "");
}

}  // namespace svmscore::app
