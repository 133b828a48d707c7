#include "host/transform/text/pattern_items.h"

#include <algorithm>
#include <charconv>
#include <new>

namespace svmscore::transform {
namespace {

constexpr std::uint32_t kAttempt = 16;
// Units for finding a character in a class or property that is not ASCII alone.
constexpr std::size_t kLookUp = 4;
constexpr std::size_t kMostLookedBehind = 1000000000;  // more than there is to spend
// An attempt also copies all groups, and a step also walks through a class.
constexpr std::size_t kCopiedAtOnce = 16;
constexpr std::size_t kComparedAtOnce = 16;

template <typename T>
T Info(const pcre2_code* code, std::uint32_t what) {
  T value{};
  pcre2_pattern_info(code, what, &value);
  return value;
}

// The 3 of {3,5}; 0 for other items. The braces of \x{41} are not a repetition.
std::uint32_t LeastTimes(std::string_view item) {
  const bool by_number = item.substr(0, 2) == "\\x" || item.substr(0, 2) == "\\o";
  const std::size_t brace = item.find('{', by_number ? item.find('}') : 0);
  if (brace == std::string_view::npos) return 0;
  std::uint32_t times = 0;
  std::from_chars(item.data() + brace + 1, item.data() + item.size(), times);
  return times;
}

bool IsBackReference(std::string_view item) {
  if (item.substr(0, 4) == "(?P=") return true;
  if (item.size() < 2 || item[0] != '\\') return false;
  return (item[1] >= '1' && item[1] <= '9') || item[1] == 'g' || item[1] == 'k';
}

}  // namespace

PatternItems::PatternItems(const pcre2_code* code, std::string_view text)
    : text_(text),
      attempt_(kAttempt + static_cast<std::uint32_t>(Info<std::size_t>(code, PCRE2_INFO_FRAMESIZE) /
                                                     kCopiedAtOnce)),
      behind_(Info<std::uint32_t>(code, PCRE2_INFO_MAXLOOKBEHIND)),
      referenced_(Info<std::uint32_t>(code, PCRE2_INFO_BACKREFMAX)),
      items_(1),
      item_at_(text.size() + 1) {
  if (pcre2_callout_enumerate(code, &PatternItems::Add, this) != 0) throw std::bad_alloc();
  text_ = {};
}

// Throws nothing, because no exception may pass through the library.
int PatternItems::Add(pcre2_callout_enumerate_block* block, void* self) try {
  auto& items = *static_cast<PatternItems*>(self);
  std::uint32_t& place = items.item_at_[block->pattern_position];
  if (place != 0) return 0;  // an item of a repeated group, which comes again
  place = static_cast<std::uint32_t>(items.items_.size());
  const std::string_view text =
      items.text_.substr(block->pattern_position, block->next_item_length);
  Item& item = items.items_.emplace_back();
  item.attempt = items.attempt_;
  // Each alternative of a lookbehind moves back on its own, and may fail.
  if (text.substr(0, 1) == "(") {
    const std::size_t alternatives = 1 + items.text_.size() / 8;
    item.attempt +=
        static_cast<std::uint32_t>(std::min(items.behind_ * alternatives, kMostLookedBehind));
  }
  const bool looked_up = text.substr(0, 1) == "[" || text.substr(0, 2) == "\\p" ||
                         text.substr(0, 2) == "\\P" || text.substr(0, 2) == "\\X";
  item.step = static_cast<std::uint32_t>((looked_up ? kLookUp : 1) + text.size() / kComparedAtOnce);
  item.least = LeastTimes(text);
  item.back_reference = IsBackReference(text);
  return 0;
} catch (const std::bad_alloc&) {
  return 1;
}

std::size_t PatternMeter::Cost(const pcre2_callout_block& block) {
  const PatternItems::Item& item = items_->items_[items_->item_at_[block.pattern_position]];
  std::size_t cost = item.attempt;
  // How far the item before this one went.
  const bool begins = (block.callout_flags & PCRE2_CALLOUT_STARTMATCH) != 0;
  if (!begins && block.current_position > position_) {
    cost += (block.current_position - position_) * step_;
  }
  if (item.least > 0) {
    cost += std::min<std::size_t>(item.least, block.subject_length - block.current_position) *
            item.step;
  }
  if (item.back_reference) {
    std::size_t longest = 0;
    const std::uint32_t groups = std::min(block.capture_top, items_->referenced_ + 1);
    for (std::uint32_t i = 1; i < groups; ++i) {
      const PCRE2_SIZE* const group = block.offset_vector + 2 * static_cast<std::size_t>(i);
      if (group[0] < group[1] && group[1] != PCRE2_UNSET) {
        longest = std::max(longest, group[1] - group[0]);
      }
    }
    cost += groups + std::min(longest, block.subject_length - block.current_position);
  }
  position_ = block.current_position;
  step_ = item.step;
  return cost;
}

int PatternMeter::Count(pcre2_callout_block* block, void* meter) {
  auto& self = *static_cast<PatternMeter*>(meter);
  return self.work_->Spend(self.Cost(*block)) ? 0 : PCRE2_ERROR_CALLOUT;
}

}  // namespace svmscore::transform
