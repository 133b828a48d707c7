#include "host/transform/table/table_index.h"

#include <cmath>

#include "host/text/number_text.h"
#include "host/transform/value/conversion.h"

namespace svmscore::transform {

namespace {

std::optional<NumberKey> Spelt(std::string_view text) {
  if (const auto whole = ParseInteger(text)) return svmscore::KeyOf(*whole);
  const auto number = ParseNumber(text);
  return number ? std::optional(svmscore::KeyOf(*number)) : std::nullopt;
}

}  // namespace

int KeyColumn::Add(std::string_view cell) {
  std::optional<NumberKey> number;
  if (!type_) {
    number = Spelt(cell);
  } else if (!ByText()) {
    Arena pool;
    const Value value = FromDocument(cell, *type_, pool);
    if (!value.IsPresent()) return -1;
    number = KeyOf(value);
  }
  if (number && std::isnan(number->number)) return -1;
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
  const std::optional<NumberKey> number = value.IsText() ? Spelt(value.GetText()) : KeyOf(value);
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
