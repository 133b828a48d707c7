#include "app/score/failures.h"

#include <algorithm>

#include <fmt/format.h>

#include "host/model/scoring_log.h"

namespace svmscore::app {
namespace {

using reasons::Hint;
using reasons::Reason;

constexpr std::size_t kLinesShown = 10;
constexpr std::size_t kCountsShown = 10;

// What to do about a cell, with the program's own options.
std::string RemedyOf(const Reason& reason) {
  std::string remedy(TextOf(reason.hint));
  if (reason.hint == Hint::kDecimalComma || reason.hint == Hint::kUnclearComma) {
    remedy += ", or give --decimal-comma";
  }
  if (reason.hint == Hint::kMissingWord) {
    remedy += ", or give --missing-token with this text";
  }
  return remedy.empty() ? remedy : " (" + remedy + ")";
}

}  // namespace

void Failures::Add(std::uint64_t row, const std::vector<Reason>& found) {
  for (const Reason& reason : found) {
    ++cells_;
    counts_.Add(reason);
    if (!keep_all_ && lines_.size() >= kLinesShown) continue;
    const std::string_view begin = reason.field.empty() ? ": " : ", ";
    lines_.push_back({row, std::string(begin) + TextOf(reason) + RemedyOf(reason)});
    size_ += lines_.back().text.size() + sizeof(Line);
  }
}

void Failures::Add(const Failures& other, std::uint64_t first_row) {
  if (other.cells_ == 0) return;
  cells_ += other.cells_;
  counts_.Add(other.counts_);
  for (const Line& line : other.lines_) {
    const std::uint64_t row = first_row + line.row + 1;
    if (other.keep_all_) {
      MCZandor_850::ScoringLog::GetInstance().TraceText(
          1, "row %llu%s", static_cast<unsigned long long>(row), line.text.c_str());
    }
    if (lines_.size() < kLinesShown) lines_.push_back({row, line.text});
  }
}

void Failures::Clear() {
  lines_ = {};
  size_ = 0;
  cells_ = 0;
  counts_.Clear();
}

std::string Failures::Text() const {
  std::string text;
  for (const Line& line : lines_) text += fmt::format("svmscore: row {}{}\n", line.row, line.text);
  if (cells_ < 2) return text;
  text += fmt::format("svmscore: {} failures in all, by column and reason:\n", cells_);
  std::uint64_t told = 0;
  for (const auto& count : counts_.MostFrequent(kCountsShown)) {
    text += fmt::format("svmscore: {:>8}  {}\n", count.cells, count.text);
    told += count.cells;
  }
  if (told < cells_) {
    text += fmt::format("svmscore: {:>8}  for {} other reasons\n", cells_ - told,
                        counts_.Size() - kCountsShown);
  }
  return text;
}

}  // namespace svmscore::app
