// A model in the form of one level: single precision in blocks or columns of its own, double
// precision on the blocks of the packed engine, or the weights of the linear kernel.
#ifndef SVM_KERNEL_CERTIFIED_LEVEL_PACKING_H_
#define SVM_KERNEL_CERTIFIED_LEVEL_PACKING_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "svm/kernel/certified/level_view.h"
#include "svm/kernel/certified/run_members.h"
#include "svm/kernel/packed/aligned_buffer.h"
#include "svm/kernel/packed/packed_engine.h"

namespace MCSVM_700::certified {

// Why nothing can be certified for a model; null where something can. The bounds hold within these
// limits alone: entries and constants that are finite and not beyond 2^300, coefficients of 0 or
// from 2^-80 to 2^60, gamma from 2^-60 to 2^60, |coef0| up to 2^40, at most 2^17 fields, degree 2
// or 3. [any thread] Lives: as long as the process. Fails: never.
const char* WhyNothingIsCertain(const PackedEngine& engine);

// What all levels need of each machine.
struct MachineSums {
  explicit MachineSums(const PackedEngine& engine);

  std::vector<double> offset;
  std::vector<double> size;   // sum of |alpha|, rounded up
  std::vector<double> terms;  // how many
};

template <class T>
class LevelPacking {
 public:
  // REQUIRES: WhyNothingIsCertain(engine) is null, the kernel is not linear; for double, a dense
  // engine. The engine must outlive this object. Fails: std::bad_alloc.
  explicit LevelPacking(const PackedEngine& engine);
  LevelPacking(const LevelPacking&) = delete;
  LevelPacking& operator=(const LevelPacking&) = delete;

  // False where norms, or the range of coefficients, are beyond what the bounds allow: ||v - c|| up
  // to 2^30, gamma ||v - c|| to 2^38, gamma ||v - c||^2 to 2^24, coefficients of a machine within a
  // factor of 2^120. There is no view then.
  bool usable() const { return usable_; }
  // Points into this object, and for double into the engine.
  const LevelView<T>& view() const { return view_; }

 private:
  void FindCentre(const PackedEngine& engine);
  void FindNorms(const PackedEngine& engine);
  bool FindScales(const PackedEngine& engine);
  void PackRuns(const TermsByVector& terms, const std::vector<RunMembers>& members);
  void PackBlocks(const PackedEngine& engine);
  void PackColumns(const PackedEngine& engine);

  bool usable_ = false;
  LevelView<T> view_ = {};
  MachineSums machines_;
  std::vector<double> centre_;
  std::vector<double> weight_;
  // Of each vector of the pool:
  std::vector<double> square_;         // ||v - c||^2
  std::vector<double> norm_;           // ||v - c||, rounded up
  std::vector<double> weighted_norm_;  // rounded up
  std::vector<double> scale_;          // of each machine: coefficients are multiplied by this
  std::vector<std::uint32_t> order_;   // position -> vector of the pool, or kGap
  packed::AlignedArray<T> blocks_;
  packed::AlignedArray<T> bias_;
  std::vector<std::size_t> entry_begin_;
  std::vector<std::uint32_t> entry_at_;
  std::vector<T> entry_value_;
  std::vector<Run<T>> runs_;
  std::vector<std::vector<Column>> columns_;
  std::vector<std::vector<T>> coefficients_;
};

class LinearPacking {
 public:
  // REQUIRES: as LevelPacking, but for the kernel, which is linear.
  explicit LinearPacking(const PackedEngine& engine);
  LinearPacking(const LinearPacking&) = delete;
  LinearPacking& operator=(const LinearPacking&) = delete;

  const LinearView& view() const { return view_; }

 private:
  LinearView view_ = {};
  MachineSums machines_;
  std::vector<double> weights_;
  std::vector<double> norm_;
};

}  // namespace MCSVM_700::certified

#endif  // SVM_KERNEL_CERTIFIED_LEVEL_PACKING_H_
