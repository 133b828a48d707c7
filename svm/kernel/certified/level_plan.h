// Which level a model's cases begin with, judged on how many it decides.
#ifndef SVM_KERNEL_CERTIFIED_LEVEL_PLAN_H_
#define SVM_KERNEL_CERTIFIED_LEVEL_PLAN_H_

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace MCSVM_700::certified {

enum class Level : int {
  kSingle = 0,   // estimates in single precision
  kTwofold = 1,  // estimates in double precision, where single precision leaves too much open
  kExact = 2,    // the packed engine alone
};

// "single", "double" or "exact".
const char* NameOf(Level level);

// Any number of threads at once. A level whose share of open cases is too large to pay gives way
// to the next one; after many cases on a later level, the first is tried again. No result depends
// on the plan.
class LevelPlan {
 public:
  // Cases after which a level is judged: a new one costs no more than these.
  static constexpr std::size_t kTrial = 128;

  // Starts with `first`; kTwofold is left out without `has_twofold`.
  void Start(Level first, bool has_twofold);

  Level level() const { return level_.load(std::memory_order_relaxed); }
  // How many cases to take at once: few while a level is on trial.
  std::size_t CasesAtOnce(std::size_t most) const;
  // `open` of `tried` cases were left open by `level`; 0 where that is kExact.
  void Record(Level level, std::size_t tried, std::size_t open);

 private:
  void Move(Level level);

  Level first_ = Level::kExact;
  bool has_twofold_ = false;
  std::atomic<Level> level_{Level::kExact};
  std::atomic<bool> on_trial_{false};
  std::atomic<std::size_t> tried_{0};  // since the level, or its last judgement, began
  std::atomic<std::size_t> open_{0};
};

}  // namespace MCSVM_700::certified

#endif  // SVM_KERNEL_CERTIFIED_LEVEL_PLAN_H_
