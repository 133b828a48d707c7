// Ways to compute Shapley values of the kernel sums of a model.
#ifndef SVM_KERNEL_EXPLAIN_VALUES_H_
#define SVM_KERNEL_EXPLAIN_VALUES_H_

#include <cstddef>
#include <cstdint>
#include <memory>

#include "svm/kernel/explain/game.h"
#include "svm/kernel/explain/machine_sums.h"
#include "svm/kernel/packed/packed_engine.h"

namespace MCSVM_700::explain {

// [count][entries], finite
struct CaseRows {
  const double* entries;
  std::size_t count;
};

// Immutable: any number of threads may use one.
class Values {
 public:
  virtual ~Values() = default;
  // The values of each case, [cases][machines][players], and for a sampled way their standard
  // errors where `errors` is not null. Fails: std::bad_alloc.
  virtual void Compute(CaseRows cases, double* values, double* errors) const = 0;
  virtual bool IsSampled() const { return false; }
};

// What values are made of; outlives them.
struct Subject {
  const PackedEngine& engine;
  const MachineSums& sums;
  const Game& game;
};

struct Sampling {
  std::uint64_t seed = 1;
  std::size_t orders = 0;  // of each row of the background; 0: enough for the values to be useful
};

// Above this, values are sampled, except those of a linear model.
constexpr std::size_t kMaxExactPlayers = 4000;

// The best way for the model. Fails: std::bad_alloc.
std::unique_ptr<const Values> MakeValues(const Subject& subject, Sampling sampling);

// The ways; null where the model does not suit. Fails: std::bad_alloc.
//
// Pair by pair of a vector and a row of the background: kernels that are a product over the
// players, or a whole power, up to kMaxDegree, of a sum over them.
std::unique_ptr<const Values> MakePairwiseValues(const Subject& subject);
// A linear model, or a polynomial of so low a degree and so few entries that the decision value is
// written as a sum of monomials.
std::unique_ptr<const Values> MakeMonomialValues(const Subject& subject);
// Any kernel: means over drawn orders of the players.
std::unique_ptr<const Values> MakeSampledValues(const Subject& subject, Sampling sampling);

}  // namespace MCSVM_700::explain

#endif  // SVM_KERNEL_EXPLAIN_VALUES_H_
