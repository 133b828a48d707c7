#include "app/pipeline/failures.h"

#include <algorithm>

#include <fmt/format.h>

#include "host/model/scoring_log.h"
#include "host/text/printable.h"

namespace svmscore::app {
namespace {

using reasons::Hint;
using reasons::Reason;

constexpr std::size_t kLinesShown = 10;
constexpr std::size_t kCountsShown = 10;

constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ/";

// What to do about a cell, with the program's own options.
std::string RemedyOf(const Reason& reason) {
  std::string remedy(TextOf(reason.hint));
  if (reason.hint == Hint::kDecimalComma || reason.hint == Hint::kUnclearComma) {
    remedy += ", or give --decimal-comma";
  }
  if (reason.hint == Hint::kDecimalPoint) remedy += ", or leave --decimal-comma out";
  if (reason.hint == Hint::kMissingWord) {
    const bool is_word = reason.text.find_first_not_of(kLetters) == std::string_view::npos;
    remedy +=
        ", or give --missing-token " + (is_word ? std::string(reason.text) : "with this text");
  }
  return remedy.empty() ? remedy : " (" + remedy + ")";
}

}  // namespace

void Failures::Add(std::uint64_t row, long line, const std::vector<Reason>& found) {
  for (const Reason& reason : found) {
    ++cells_;
    counts_.Add(reason);
    if (!keep_all_ && lines_.size() >= kLinesShown) continue;
    const std::string_view begin = reason.field.empty() ? ": " : ", ";
    lines_.push_back({row, line, std::string(begin) + TextOf(reason) + RemedyOf(reason)});
    size_ += lines_.back().text.size() + sizeof(Line);
  }
}

void Failures::Add(const Failures& other, std::uint64_t first_row) {
  if (other.cells_ == 0) return;
  cells_ += other.cells_;
  counts_.Add(other.counts_);
  for (const Line& line : other.lines_) {
    const Line placed = {first_row + line.row + 1, line.line, line.text};
    if (other.keep_all_) {
      MCZandor_850::ScoringLog::GetInstance().TraceText(1, "%s%s", PlaceOf(placed).c_str(),
                                                        line.text.c_str());
    }
    if (lines_.size() < kLinesShown) lines_.push_back(placed);
  }
}

// Rows are counted below the header, and lines as an editor shows them: a reader who knows the one
// knows the other, unless there are blank lines, or cells of several lines.
std::string Failures::PlaceOf(const Line& line) {
  const bool is_plain = line.line == static_cast<long>(line.row) + 1;
  return fmt::format("row {}{}", line.row, is_plain ? "" : fmt::format(", line {}", line.line));
}

void Failures::Clear() {
  lines_ = {};
  size_ = 0;
  cells_ = 0;
  counts_.Clear();
}

std::string Failures::Text() const {
  std::string text;
  for (const Line& line : lines_) {
    text += fmt::format("svmscore: {}{}\n", PlaceOf(line), line.text);
  }
  if (cells_ < 2) return text;
  text += fmt::format("svmscore: {} failures in all, by column and reason:\n", cells_);
  std::uint64_t told = 0;
  for (const auto& count : counts_.MostFrequent(kCountsShown)) {
    text += fmt::format("svmscore: {:>8}  {}\n", count.cells, count.text);
    told += count.cells;
  }
  if (told < cells_) {
    const std::size_t others = counts_.Size() - kCountsShown;
    text += fmt::format("svmscore: {:>8}  for {} other reason{}\n", cells_ - told, others,
                        others == 1 ? "" : "s");
  }
  return text;
}

std::string TextOf(const Failures& failures, const RowLikeCells& row_like_cells,
                   const std::string& input_name) {
  const std::string remark = row_like_cells.Text();
  if (remark.empty()) return failures.Text();
  return failures.Text() + fmt::format("svmscore: {}: {}\n", Printable(input_name), remark);
}

}  // namespace svmscore::app
