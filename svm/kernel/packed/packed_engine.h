// MCSVM_700::PackedEngine: the decision values of all machines of a model, many vectors or cases at
// a time, with exactly the bits of the plain kernels.
#ifndef SVM_KERNEL_PACKED_PACKED_ENGINE_H_
#define SVM_KERNEL_PACKED_PACKED_ENGINE_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "svm/kernel/kernel_function.h"
#include "svm/kernel/packed/aligned_buffer.h"
#include "svm/kernel/packed/operations.h"
#include "svm/kernel/packed/packing.h"
#include "svm/kernel/packed/vector_check.h"

namespace MCSVM_700 {

class PackedEngine;

// The working memory of an engine: one for each thread that scores, for any number of engines in
// turn. Allocates only when it first meets an engine that needs more than any before.
class PackedScratch {
 public:
  // How cases were scored since this object was made.
  struct Counts {
    std::size_t alone = 0;  // packed, one at a time
    std::size_t tiled = 0;  // packed, many at a time
    std::size_t plain = 0;  // by the plain definition
  };
  const Counts& counts() const { return counts_; }
  // The instruction set of the packed code that ran last; kPlain when none has.
  packed::Isa last_isa() const { return work_.ran; }

  PackedScratch() = default;
  PackedScratch(const PackedScratch&) = delete;
  PackedScratch& operator=(const PackedScratch&) = delete;

 private:
  friend class PackedEngine;

  std::uint64_t engine_ = 0;  // the number of the engine that everything is sized for
  packed::Work work_ = {};
  packed::AlignedBuffer values_, tiles_, sums_, rejects_, nonzero_value_, column_;
  std::vector<std::uint32_t> nonzero_field_;
  std::vector<int> positions_;   // 0, 1, ... fields - 1
  std::vector<double> entries_;  // of the case that the plain kernels score
  Counts counts_;
};

// A model in the form that the engine takes.
struct PackedInput {
  SVMConst::KernelParameters kernel;
  std::size_t fields = 0;  // entries of a case, at most 2^31 - 1
  // The lists that these point to must outlive the engine, which evaluates what it cannot pack by
  // the plain kernels. REQUIRES: no list of entries is shorter than its list of positions.
  std::vector<packed::VectorView> vectors;
  std::vector<packed::MachineView> machines;  // not needed afterwards
  packed::Storage storage = packed::Storage::kByFill;
};

// Immutable: any number of threads may use one, each with its own scratch. Refuses nothing:
// vectors and cases that it cannot pack exactly go to the plain kernels. Only allocation can fail,
// by std::bad_alloc.
//
// Decision value m is 0.0 + c[0] K(x, v[0]) + c[1] K(x, v[1]) + ... + offset for machine m's terms
// in their order, where K is the plain kernel's value of the case x with an entry for every field.
// A result that is NaN may be a different NaN from the plain one; all other results have the same
// bits. REQUIRES: the rounding mode is to nearest.
class PackedEngine {
 public:
  // `operations` are those of an instruction set that the CPU has, or null for the plain kernels
  // throughout. Compares the packed code with the plain kernels on a small model first; if a bit
  // differs, the engine uses the plain kernels.
  PackedEngine(const PackedInput& input, const packed::Operations* operations);
  PackedEngine(const PackedEngine&) = delete;
  PackedEngine& operator=(const PackedEngine&) = delete;

  packed::Isa isa() const {
    return operations_ == nullptr ? packed::Isa::kPlain : operations_->isa;
  }
  std::size_t fields() const { return view_.fields; }
  std::size_t machines() const { return view_.machines; }
  bool sparse() const { return view_.dense == nullptr; }
  // The packed model, and what it was packed from: the distinct vectors in the pool's order, and
  // the machines' terms as positions among them. Valid as long as the engine.
  const packed::ModelView& view() const { return view_; }
  const std::vector<packed::VectorView>& pool() const { return pool_; }
  packed::MachineView machine(std::size_t m) const {
    return {plain_machines_[m].coefficients, plain_machines_[m].terms, view_.offsets[m]};
  }

  // x[fields] to decisions[machines].
  void Decide(const double* x, PackedScratch& scratch, double* decisions) const;
  // The first `count` cases. The bits are those of Decide, for any count.
  void DecideMany(packed::CaseColumns cases, std::size_t count, PackedScratch& scratch,
                  packed::DecisionColumns decisions) const;

 private:
  PackedEngine(const PackedInput& input, const packed::Operations* operations,
               packed::VectorForms forms);

  // Whether an engine with this kernel agrees with the plain kernels.
  static bool Agrees(const PackedInput& input, const packed::Operations* operations,
                     packed::VectorForms forms);
  // The first case alone, by the plain kernels.
  void DecidePlain(packed::CaseColumns x, PackedScratch& scratch,
                   packed::DecisionColumns decisions) const;
  void Fit(PackedScratch& scratch) const;
  static double PlainValue(const void* engine, packed::Work& work, packed::CaseColumns x,
                           std::uint32_t vector);

  struct PlainMachine {
    std::vector<std::uint32_t> terms;  // positions in the pool
    std::vector<double> coefficients;
  };

  std::uint64_t number_;  // unique among the engines of the process
  std::unique_ptr<SVMKernelFunction> kernel_;
  std::vector<packed::VectorView> pool_;
  std::vector<PlainMachine> plain_machines_;
  std::unique_ptr<packed::Packing> packing_;
  packed::ModelView view_ = {};
  const packed::Operations* operations_;  // null: plain
};

}  // namespace MCSVM_700

#endif  // SVM_KERNEL_PACKED_PACKED_ENGINE_H_
