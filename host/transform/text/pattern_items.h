// What the items of a regular expression cost, and a meter of a search.
#ifndef HOST_TRANSFORM_TEXT_PATTERN_ITEMS_H_
#define HOST_TRANSFORM_TEXT_PATTERN_ITEMS_H_

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

#include "host/transform/text/work_budget.h"

namespace svmscore::transform {

// The items of a pattern: a character, a class or a group's end, each with its repetition.
// Immutable; any number of threads.
class PatternItems {
 public:
  // REQUIRES: `code` is that of `text`, compiled with a callout before each item.
  PatternItems(const pcre2_code* code, std::string_view text);

 private:
  friend class PatternMeter;
  struct Item {
    std::uint32_t attempt = 0;  // units for an attempt to match it
    std::uint32_t step = 1;     // units for each byte that it covers
    std::uint32_t least = 0;    // characters that it may cover before it fails
    bool back_reference = false;
  };
  static int Add(pcre2_callout_enumerate_block* block, void* self);

  std::string_view text_;  // while items are read
  std::uint32_t attempt_ = 0;
  std::uint32_t behind_ = 0;
  std::uint32_t referenced_ = 0;  // the last group that a back reference may mean
  std::vector<Item> items_;
  std::vector<std::uint32_t> item_at_;  // by the item's start in the text; 0 elsewhere
};

// Counts the work of a search while it runs. The library's own limit starts again at every place
// where a match may begin, and does not see how far a repetition goes in one step.
class PatternMeter {
 public:
  PatternMeter(const PatternItems& items, WorkBudget& work) : items_(&items), work_(&work) {}

  // For pcre2_set_callout, with the meter as its data: ends the match once the work is spent.
  static int Count(pcre2_callout_block* block, void* meter);

 private:
  std::size_t Cost(const pcre2_callout_block& block);

  const PatternItems* items_;
  WorkBudget* work_;
  std::size_t position_ = 0;  // in the text, when the last item began
  std::uint32_t step_ = 0;    // of that item
};

}  // namespace svmscore::transform

#endif  // HOST_TRANSFORM_TEXT_PATTERN_ITEMS_H_
