// Comparison of the vector forms of exp, tanh and pow with the library's functions.
#ifndef SVM_KERNEL_PACKED_VECTOR_CHECK_H_
#define SVM_KERNEL_PACKED_VECTOR_CHECK_H_

#include "svm/kernel/packed/layout.h"
#include "svm/kernel/packed/operations.h"

namespace MCSVM_700::packed {

// Which vector forms a kernel may use.
struct VectorForms {
  bool values = false;   // that of exp or tanh, whichever the kernel calls
  int whole_degree = 0;  // the degree of a polynomial kernel if the form of pow can compute it
};

// Tries tens of thousands of arguments, most of them where libraries are known to differ. A form is
// allowed if every bit is the library's; otherwise the library's own function is called.
// Takes about a millisecond the first time; the answer is kept. Any number of threads may call it.
VectorForms MatchingForms(const Operations& operations, KernelFunctionType form, double degree);

}  // namespace MCSVM_700::packed

#endif  // SVM_KERNEL_PACKED_VECTOR_CHECK_H_
