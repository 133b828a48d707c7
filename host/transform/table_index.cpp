#include "host/transform/table_index.h"

#include <cmath>

#include "host/number_text.h"
#include "host/transform/conversion.h"

namespace svmscore::transform {

int KeyColumn::Add(std::string_view cell) {
  std::optional<double> number;
  if (!type_) {
    number = ParseNumber(cell);
  } else if (!ByText()) {
    Arena pool;
    const Value value = FromDocument(cell, *type_, pool);
    if (!value.IsPresent()) return -1;
    number = value.GetNumber();
  }
  if (number && std::isnan(*number)) return -1;
  const auto [id, added] = number ? [&] {
    const auto result = numbers_.emplace(*number, count_);
    return std::pair(result.first->second, result.second);
  }() : [&] {
    const auto result = texts_.emplace(cell, count_);
    return std::pair(result.first->second, result.second);
  }();
  if (added) ++count_;
  return id;
}

int KeyColumn::Find(const Value& value, Arena& arena) const {
  if (ByText() || (!type_ && value.IsText())) {
    const auto found = texts_.find(TextOf(value, arena));
    if (found != texts_.end()) return found->second;
    if (type_) return -1;
  }
  std::optional<double> number;
  if (value.IsText()) {
    number = ParseNumber(value.GetText());
  } else {
    number = value.GetNumber();
  }
  if (!number) return -1;
  const auto found = numbers_.find(*number);
  return found == numbers_.end() ? -1 : found->second;
}

bool TableIndex::Add(const std::vector<int>& keys, int row) {
  int node = 0;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    const bool last = i + 1 == keys.size();
    const auto [edge, added] = edges_.emplace(EdgeOf(node, keys[i]), last ? row : nodes_);
    if (last) return added;
    if (added) ++nodes_;
    node = edge->second;
  }
  return false;
}

}  // namespace svmscore::transform
