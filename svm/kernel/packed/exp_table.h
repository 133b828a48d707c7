// The powers 2^(k/128) that the vector form of exp starts from.
#ifndef SVM_KERNEL_PACKED_EXP_TABLE_H_
#define SVM_KERNEL_PACKED_EXP_TABLE_H_

#include <cstdint>

namespace MCSVM_700::packed {

// 128 pairs (tail, scale); exp_table.py describes them.
extern const std::uint64_t kExpTable[256];

}  // namespace MCSVM_700::packed

#endif  // SVM_KERNEL_PACKED_EXP_TABLE_H_
