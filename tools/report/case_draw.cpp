#include "tools/report/case_draw.h"

#include <algorithm>
#include <utility>

namespace svmscore::tools {

// The finalizer of SplitMix64: every bit of the result depends on every bit of the argument.
std::uint64_t DrawnKey(std::uint64_t seed, std::uint64_t number) {
  std::uint64_t key = number + seed * 0xD1B54A32D192ED03U + 0x9E3779B97F4A7C15U;
  key = (key ^ (key >> 30U)) * 0xBF58476D1CE4E5B9U;
  key = (key ^ (key >> 27U)) * 0x94D049BB133111EBU;
  return key ^ (key >> 31U);
}

std::size_t CaseDraw::BytesOf(const DrawnRow& row) {
  return sizeof(Kept) + row.text.capacity() + row.ends.capacity() * sizeof(row.ends[0]);
}

void CaseDraw::Add(const std::vector<std::string_view>& cells) {
  const std::uint64_t number = ++rows_;
  const std::uint64_t key = DrawnKey(seed_, number);
  const bool is_full = kept_.size() >= most_rows_ || bytes_ >= most_bytes_;
  if (is_full && !kept_.empty() && key >= kept_.front().key) return;
  DrawnRow row;
  row.number = number;
  std::size_t size = 0;
  for (const std::string_view cell : cells) size += cell.size();
  row.text.reserve(size);
  row.ends.reserve(cells.size());
  for (const std::string_view cell : cells) {
    row.text += cell;
    row.ends.push_back(static_cast<std::uint32_t>(row.text.size()));
  }
  bytes_ += BytesOf(row);
  kept_.push_back({key, std::move(row)});
  std::push_heap(kept_.begin(), kept_.end());
  while (kept_.size() > 1 && (kept_.size() > most_rows_ || bytes_ > most_bytes_)) DropOne();
}

void CaseDraw::DropOne() {
  std::pop_heap(kept_.begin(), kept_.end());
  bytes_ -= BytesOf(kept_.back().row);
  kept_.pop_back();
}

std::vector<DrawnRow> CaseDraw::Take() {
  std::sort(kept_.begin(), kept_.end(),
            [](const Kept& a, const Kept& b) { return a.row.number < b.row.number; });
  std::vector<DrawnRow> rows;
  rows.reserve(kept_.size());
  for (Kept& kept : kept_) rows.push_back(std::move(kept.row));
  kept_.clear();
  bytes_ = 0;
  return rows;
}

}  // namespace svmscore::tools
