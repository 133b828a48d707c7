// What cases are and what was predicted, counted in a matrix of bounded size.
#ifndef TOOLS_REPORT_CONFUSION_H_
#define TOOLS_REPORT_CONFUSION_H_

#include <cstddef>
#include <vector>

namespace svmscore::tools {

// How often a category occurs.
struct CategoryCount {
  int category = -1;
  std::size_t predicted = 0;
  std::size_t actual = 0;
};

// The categories that occur, the most frequent first (by the larger of both counts, then in the
// order of the target). Negative categories are not counted. Lists are parallel; `actual` may be
// empty. [any thread] Fails: std::bad_alloc.
std::vector<CategoryCount> CountCategories(const std::vector<int>& predicted,
                                           const std::vector<int>& actual);

// Rows are what cases are, columns what was predicted: `categories` of them, in the order of the
// target, then one for all others where there are others.
struct Confusion {
  std::vector<int> categories;
  std::size_t others = 0;  // categories that share the last row and column; 0: there is none
  std::vector<std::size_t> cells;  // [row * Size() + column]

  std::size_t Size() const { return categories.size() + (others > 0 ? 1 : 0); }
  std::size_t At(std::size_t row, std::size_t column) const { return cells[row * Size() + column]; }
};

// Of the cases whose category is known. At most `most` categories, those that occur most, have a
// row. [any thread] Fails: std::bad_alloc.
Confusion ConfusionOf(const std::vector<int>& predicted, const std::vector<int>& actual,
                      std::size_t most);

}  // namespace svmscore::tools

#endif  // TOOLS_REPORT_CONFUSION_H_
