// The sums of kernels that are explained.
#ifndef SVM_KERNEL_EXPLAIN_MACHINE_SUMS_H_
#define SVM_KERNEL_EXPLAIN_MACHINE_SUMS_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "svm/kernel/explain/operations.h"
#include "svm/kernel/packed/packed_engine.h"

namespace MCSVM_700::explain {

// A vector as a case with an entry for every field meets it in the plain kernels.
struct SparseVector {
  std::vector<std::uint32_t> at;  // ascending; entries at other positions are 0
  std::vector<double> value;
  double rest = 0.0;  // squares of entries that meet none of the case: part of each distance
};

// Each vector once, with the sum of its coefficients.
struct MachineSum {
  std::vector<std::uint32_t> vectors;  // ascending
  std::vector<double> coefficients;
  double scale = 0.0;  // sum of the sizes of the coefficients
};

// The model of an engine in the order of its pool. Vectors whose positions are unordered, repeated
// or out of range become those that the plain kernels see. Immutable.
class MachineSums {
 public:
  explicit MachineSums(const PackedEngine& engine);

  const SVMConst::KernelParameters& kernel() const { return kernel_; }
  std::size_t entries() const { return entries_; }
  const std::vector<SparseVector>& vectors() const { return vectors_; }
  const std::vector<MachineSum>& machines() const { return machines_; }
  std::size_t blocks() const { return (vectors_.size() + kBlock - 1) / kBlock; }

  // Vectors [block kBlock, ...) as dense[entries][kBlock], zero where there is none.
  void Expand(std::size_t block, double* dense) const;
  // The coefficients of a machine for them, zero for vectors that it does not use; whether it uses
  // any. A coefficient includes the part of the kernel that `rest` makes.
  bool Coefficients(std::size_t block, std::size_t machine, double* coefficients) const;

 private:
  SVMConst::KernelParameters kernel_;
  std::size_t entries_;
  std::vector<SparseVector> vectors_;
  std::vector<MachineSum> machines_;
};

// Lane by lane over the entries of `player`: the sum of (x - v)^2 for a radial basis, else of x v.
// x[entries], dense[entries][kBlock], sums[kBlock].
void PartialSums(const SVMConst::KernelParameters& kernel, std::span<const std::size_t> player,
                 const double* x, const double* dense, double* sums);

// The sum of coefficient x value over the lanes, always in the same order; lanes whose coefficient
// is 0 do not count, whatever their value.
double WeightedSum(const double* coefficients, const double* values);

}  // namespace MCSVM_700::explain

#endif  // SVM_KERNEL_EXPLAIN_MACHINE_SUMS_H_
