#include "svm/kernel/certified/level_plan.h"

#include <algorithm>

namespace MCSVM_700::certified {
namespace {

// A level that leaves more open costs more than the next one: single precision takes a fifth to a
// quarter of the exact time, double precision not quite half.
constexpr double kMostOpen = 0.4;
constexpr std::size_t kJudged = 4096;          // cases of a level that has passed its trial
constexpr std::size_t kTriedAgain = 1u << 16;  // cases on a later level before the first's turn

constexpr std::memory_order kRelaxed = std::memory_order_relaxed;

}  // namespace

const char* NameOf(Level level) {
  switch (level) {
    case Level::kSingle:
      return "single";
    case Level::kTwofold:
      return "double";
    case Level::kExact:
      break;
  }
  return "exact";
}

void LevelPlan::Start(Level first, bool has_twofold) {
  first_ = first;
  has_twofold_ = has_twofold;
  Move(first);
}

void LevelPlan::Move(Level level) {
  tried_.store(0, kRelaxed);
  open_.store(0, kRelaxed);
  on_trial_.store(level != Level::kExact, kRelaxed);
  level_.store(level, kRelaxed);
}

std::size_t LevelPlan::CasesAtOnce(std::size_t most) const {
  return on_trial_.load(kRelaxed) ? std::min(most, kTrial) : most;
}

// Threads may judge at the same time, or add to a count that another clears: the plan then moves a
// little sooner or later, which does not matter.
void LevelPlan::Record(Level level, std::size_t tried, std::size_t open) {
  if (level != level_.load(kRelaxed)) return;
  const std::size_t all_tried = tried_.fetch_add(tried, kRelaxed) + tried;
  const std::size_t all_open = open_.fetch_add(open, kRelaxed) + open;
  if (level == Level::kExact) {
    if (first_ != Level::kExact && all_tried >= kTriedAgain) Move(first_);
    return;
  }
  if (all_tried < (on_trial_.load(kRelaxed) ? kTrial : kJudged)) return;
  const bool pays = static_cast<double>(all_open) <= kMostOpen * static_cast<double>(all_tried);
  if (!pays) {
    Move(level == Level::kSingle && has_twofold_ ? Level::kTwofold : Level::kExact);
  } else if (level != first_ && all_tried >= kTriedAgain) {
    Move(first_);
  } else if (level == first_ || on_trial_.load(kRelaxed)) {
    on_trial_.store(false, kRelaxed);
    tried_.store(0, kRelaxed);
    open_.store(0, kRelaxed);
  }
}

}  // namespace MCSVM_700::certified
