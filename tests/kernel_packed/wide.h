// The packed forms of AVX-512, from the same source file, with each instruction emulated by those
// of AVX2, so that they are tested on every machine with AVX2.
#ifndef TESTS_KERNEL_PACKED_WIDE_H_
#define TESTS_KERNEL_PACKED_WIDE_H_

#include "svm/kernel/packed/operations.h"

namespace MCSVM_700::packed {

const Operations& WideOperations();

}  // namespace MCSVM_700::packed

#endif  // TESTS_KERNEL_PACKED_WIDE_H_
