// What a category depends on in a machine's decision value, and whether estimates settle it.
#ifndef SVM_KERNEL_CERTIFIED_VOTE_RULE_H_
#define SVM_KERNEL_CERTIFIED_VOTE_RULE_H_

#include <cstddef>
#include <cstdint>
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
  std::vector<double> thresholds;  // [machines], for kThresholds
};

// Sets unsure[c] for each of `count` cases to 0 where |d~ - d| <= E for every machine, with the
// estimates d~ and E, leaves no doubt: the estimates may then stand for the decision values, and
// are finite. Else to 1. `best` and `best_low` are working memory of [count].
void FindUnsure(const VoteRule& rule, std::size_t machines, const Estimates& estimates,
                std::size_t count, std::uint8_t* unsure, std::uint32_t* best, double* best_low);

}  // namespace MCSVM_700::certified

#endif  // SVM_KERNEL_CERTIFIED_VOTE_RULE_H_
