// Models and cases on which estimates go wrong if they can.
#ifndef TESTS_KERNEL_CERTIFIED_HARD_MODELS_H_
#define TESTS_KERNEL_CERTIFIED_HARD_MODELS_H_

#include "svm/kernel/certified/vote_rule.h"
#include "tests/kernel_packed/sample.h"

namespace hard {

// Of every kernel and storage, small or of odd sizes; entries unscaled, shifted, huge or tiny;
// one machine, pairs of classes, or one against all with two equal machines; coefficients of any
// signs and sizes, some 0; vectors that machines leave out, or use twice with opposite signs.
sample::Model RandomModel(sample::Random& random);

// More runs than are told apart, by machines of two vectors each.
sample::Model ManyMachines(std::size_t count, sample::Random& random);

enum class Kind {
  kNear,        // at any distance from a vector
  kVectors,     // vectors themselves, and those with entries one unit in the last place apart
  kMagnitudes,  // scaled by up to 1e300, in all entries or one
  kAnySize,     // entries of any exponents
  kOdd,         // infinities, NaN, zeros of both signs, subnormal numbers
};
constexpr Kind kKinds[] = {Kind::kNear, Kind::kVectors, Kind::kMagnitudes, Kind::kAnySize,
                           Kind::kOdd};

sample::Cases RandomCases(const sample::Model& model, Kind kind, std::size_t count,
                          sample::Random& random);

// Any rule; thresholds are 0, a value among `decided` [machines][count], or close to one.
MCSVM_700::certified::VoteRule RandomRule(const std::vector<double>& decided, std::size_t machines,
                                          sample::Random& random);

}  // namespace hard

#endif  // TESTS_KERNEL_CERTIFIED_HARD_MODELS_H_
