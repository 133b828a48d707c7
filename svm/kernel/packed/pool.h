// The distinct vectors of a model's machines, in an order that suits the machines.
#ifndef SVM_KERNEL_PACKED_POOL_H_
#define SVM_KERNEL_PACKED_POOL_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace MCSVM_700::packed {

// One machine: coefficient k belongs to vector vectors[k] of the model. Decision value:
// 0.0 + coefficients[0] K[0] + coefficients[1] K[1] + ... in this order, + offset.
// REQUIRES: the lists are equally long.
struct MachineView {
  std::span<const double> coefficients;
  std::span<const std::uint32_t> vectors;
  double offset = 0.0;
};

struct Pool {
  std::vector<std::uint32_t> vectors;  // the model's vector at each position of the pool
  // Per machine, the positions of its terms in the pool.
  std::vector<std::vector<std::uint32_t>> terms;
  // Per machine, whether those ascend strictly. Walking through the pool then visits the machine's
  // terms in their own order, which its sum must keep.
  std::vector<bool> ascending;
};

// Takes the vectors that some machine uses. An order that suits all machines is found if there is
// one; otherwise some machines do not ascend. A machine that uses a vector twice never does.
// REQUIRES: vector indices are below vector_count.
Pool MakePool(std::span<const MachineView> machines, std::size_t vector_count);

}  // namespace MCSVM_700::packed

#endif  // SVM_KERNEL_PACKED_POOL_H_
