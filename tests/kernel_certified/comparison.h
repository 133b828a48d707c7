// Certified decisions beside the exact ones.
#ifndef TESTS_KERNEL_CERTIFIED_COMPARISON_H_
#define TESTS_KERNEL_CERTIFIED_COMPARISON_H_

#include <algorithm>
#include <string>
#include <vector>

#include "svm/kernel/certified/certified_engine.h"
#include "tests/kernel_packed/sample.h"

namespace hard {

// An estimate is one of a level, for one machine and one case.
struct Tally {
  std::size_t estimates = 0;
  std::size_t bounded = 0;  // with a finite bound
  std::size_t outside = 0;  // further from the exact decision value than the bound
  std::size_t cases = 0;    // by each level
  std::size_t sure = 0;
  std::size_t wrong = 0;  // sure, or decided, with another vote or winner than the exact values'
  double closest = 0;     // the largest share of its bound that an error takes
  std::string first;      // what the first fault was; "" where there is none

  void Add(const Tally& other);
};

// Both engines of a model.
class Pair {
 public:
  // `model` and `operations` must outlive this object.
  Pair(const sample::Model& model, MCSVM_700::certified::VoteRule rule,
       const MCSVM_700::packed::Operations* operations);

  const MCSVM_700::CertifiedEngine& certified() const { return certified_; }
  // The exact decision values, [machines][count].
  std::vector<double> Decide(const sample::Cases& cases);
  // Estimates of all levels, for many cases and some alone, with their bounds times `scale`; and
  // decisions of all cases and some alone.
  void Compare(const sample::Cases& cases, double scale, Tally& tally);

 private:
  void CompareEstimates(const char* level, const std::vector<double>& exact, std::size_t count,
                        double scale, Tally& tally);
  void CompareVotes(const char* what, const std::vector<double>& exact,
                    const std::vector<double>& found, const std::uint8_t* unsure, Tally& tally);

  std::size_t machines_;
  MCSVM_700::certified::VoteRule rule_;
  MCSVM_700::PackedEngine exact_;
  MCSVM_700::CertifiedEngine certified_;
  MCSVM_700::PackedScratch packed_scratch_;
  MCSVM_700::CertifiedScratch scratch_;
  std::vector<double> estimates_;
  std::vector<double> errors_;
};

// What a category can depend on: the side of a threshold, or the first and the last winner.
std::vector<int> VoteOf(const MCSVM_700::certified::VoteRule& rule,
                        const std::vector<double>& values);

}  // namespace hard

#endif  // TESTS_KERNEL_CERTIFIED_COMPARISON_H_
