// A model packed: the pool's vectors in blocks or by column, the machines' coefficients in segments
// and chains. layout.h says how all this lies in memory.
#ifndef SVM_KERNEL_PACKED_PACKING_H_
#define SVM_KERNEL_PACKED_PACKING_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "svm/kernel/packed/aligned_buffer.h"
#include "svm/kernel/packed/layout.h"
#include "svm/kernel/packed/pool.h"

namespace MCSVM_700::packed {

// One support vector: positions (0-based) and entries, as the plain kernels take them.
struct VectorView {
  const std::vector<int>* positions = nullptr;
  const std::vector<double>* entries = nullptr;
};

enum class Storage { kByFill, kDense, kSparse };

class Packing {
 public:
  // `lanes` are those of the instruction set. The views are not needed afterwards.
  Packing(std::span<const VectorView> vectors, std::span<const MachineView> machines,
          const Pool& pool, std::size_t fields, std::size_t lanes, Storage storage);
  Packing(const Packing&) = delete;
  Packing& operator=(const Packing&) = delete;

  // Sets the members from `gaps` on, except plain_context and plain_value. They point into this
  // object.
  void Describe(ModelView& view) const;

 private:
  // Whether positions ascend strictly within [0, fields), and entries are finite: such a vector
  // equals its dense form.
  bool Packs(const VectorView& vector) const;
  bool WantsColumns(std::span<const VectorView> pooled, Storage storage) const;
  void PackBlocks(std::span<const VectorView> pooled);
  void PackColumns(std::span<const VectorView> pooled);
  void PackMachines(std::span<const MachineView> machines, const Pool& pool, std::size_t lanes);
  // A segment of the vectors [begin, end) and the machines, ascending, that use any of them.
  void AddSegment(std::size_t begin, std::size_t end, const std::vector<std::uint32_t>& machines,
                  std::size_t lanes);

  struct Term {
    std::uint32_t machine;
    double coefficient;
  };

  std::size_t fields_;
  std::size_t vectors_;
  std::size_t machines_;
  std::vector<std::uint32_t> plain_vectors_;
  bool sparse_ = false;
  AlignedBuffer blocks_;
  std::vector<std::size_t> column_begin_;
  std::vector<std::uint32_t> entry_vector_;
  std::vector<double> entry_value_;
  std::vector<double> entry_square_;

  std::vector<std::vector<Term>> users_;  // of each vector; empty once packed
  std::vector<Segment> segments_;
  // What segments and chains point into.
  std::vector<std::vector<std::uint32_t>> segment_machines_;
  std::vector<std::vector<double>> segment_coefficients_;
  std::vector<std::vector<std::uint32_t>> chain_vectors_;
  std::vector<std::vector<double>> chain_coefficients_;
  std::vector<Chain> chains_;
  std::vector<double> offsets_;
  bool gaps_ = false;
};

}  // namespace MCSVM_700::packed

#endif  // SVM_KERNEL_PACKED_PACKING_H_
