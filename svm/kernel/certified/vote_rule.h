// What a category depends on in a machine's decision value, and whether estimates settle it.
#ifndef SVM_KERNEL_CERTIFIED_VOTE_RULE_H_
#define SVM_KERNEL_CERTIFIED_VOTE_RULE_H_

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "svm/kernel/certified/level_view.h"

namespace MCSVM_700::certified {

struct VoteRule {
  enum class Kind {
    kThresholds,  // each machine: on which side of its threshold the value is
    kLargest,     // the machine of the largest value
    kSmallest,    // the machine of the smallest value
  };
  Kind kind = Kind::kThresholds;
  // For kThresholds, of each machine:
  std::vector<double> thresholds = {};
  // Where the category with the most votes wins (of several, the first): for each machine, the
  // position of the category that it votes for above its threshold, then of the one that it votes
  // for otherwise. Positions outside [0, categories) are not counted. May be empty.
  std::vector<std::pair<int, int>> votes = {};
  std::size_t categories = 0;
};

// What a caller will take from decision values: every vote, or the winner alone.
enum class Wanted { kVotes, kWinner };

// Whether the winner of one case is the same whichever way the votes go that its estimates, at [m *
// stride] of each column, leave open. False where some bound is not finite. `certain` and
// `possible` are working memory.
bool IsWinnerSure(const VoteRule& rule, const Estimates& estimates, std::vector<int>& certain,
                  std::vector<int>& possible);

// Sets unsure[c] for each of `count` cases to 0 where |d~ - d| <= E for every machine, with the
// estimates d~ and E, leaves no doubt: the estimates may then stand for the decision values, and
// are finite. Else to 1. `best` and `best_low` are working memory of [count].
void FindUnsure(const VoteRule& rule, std::size_t machines, const Estimates& estimates,
                std::size_t count, std::uint8_t* unsure, std::uint32_t* best, double* best_low);

}  // namespace MCSVM_700::certified

#endif  // SVM_KERNEL_CERTIFIED_VOTE_RULE_H_
