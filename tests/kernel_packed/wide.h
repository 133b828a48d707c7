// The packed forms of AVX-512, file and all, with each of its instructions put together from those
// of AVX2: tested wherever there is AVX2.
#ifndef TESTS_KERNEL_PACKED_WIDE_H_
#define TESTS_KERNEL_PACKED_WIDE_H_

#include "svm/kernel/packed/operations.h"

namespace MCSVM_700::packed {

const Operations& WideOperations();

}  // namespace MCSVM_700::packed

#endif  // TESTS_KERNEL_PACKED_WIDE_H_
