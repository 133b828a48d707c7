// The packed code at the width and tile of AVX-512, in plain C++: what only that instruction set
// would run is tested on every CPU, apart from its own instructions.
#ifndef TESTS_KERNEL_PACKED_WIDE_H_
#define TESTS_KERNEL_PACKED_WIDE_H_

#include "svm/kernel/packed/operations.h"

const MCSVM_700::packed::Operations& WideOperations();

#endif  // TESTS_KERNEL_PACKED_WIDE_H_
