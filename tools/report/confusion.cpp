#include "tools/report/confusion.h"

#include <algorithm>
#include <map>

namespace svmscore::tools {

std::vector<CategoryCount> CountCategories(const std::vector<int>& predicted,
                                           const std::vector<int>& actual) {
  std::map<int, CategoryCount> counts;
  for (const int category : predicted) {
    if (category >= 0) ++counts[category].predicted;
  }
  for (const int category : actual) {
    if (category >= 0) ++counts[category].actual;
  }
  std::vector<CategoryCount> list;
  for (auto& [category, count] : counts) {
    count.category = category;
    list.push_back(count);
  }
  std::stable_sort(list.begin(), list.end(), [](const CategoryCount& a, const CategoryCount& b) {
    return std::max(a.predicted, a.actual) > std::max(b.predicted, b.actual);
  });
  return list;
}

Confusion ConfusionOf(const std::vector<int>& predicted, const std::vector<int>& actual,
                      std::size_t most) {
  std::vector<int> known_predicted;
  std::vector<int> known_actual;
  for (std::size_t c = 0; c < actual.size(); ++c) {
    if (actual[c] < 0 || predicted[c] < 0) continue;
    known_predicted.push_back(predicted[c]);
    known_actual.push_back(actual[c]);
  }
  const std::vector<CategoryCount> counts = CountCategories(known_predicted, known_actual);
  Confusion confusion;
  // One category less has a row of its own where others need one.
  const std::size_t own = counts.size() <= most ? counts.size() : most - 1;
  confusion.others = counts.size() - own;
  for (std::size_t i = 0; i < own; ++i) confusion.categories.push_back(counts[i].category);
  std::sort(confusion.categories.begin(), confusion.categories.end());
  const std::size_t size = confusion.Size();
  confusion.cells.assign(size * size, 0);
  const auto place = [&confusion](int category) {
    const auto& list = confusion.categories;
    const auto at = std::lower_bound(list.begin(), list.end(), category);
    return at != list.end() && *at == category ? static_cast<std::size_t>(at - list.begin())
                                               : list.size();
  };
  for (std::size_t c = 0; c < known_actual.size(); ++c) {
    ++confusion.cells[place(known_actual[c]) * size + place(known_predicted[c])];
  }
  return confusion;
}

}  // namespace svmscore::tools
