// Derivatives of kernel sums.
#ifndef SVM_KERNEL_EXPLAIN_GRADIENTS_H_
#define SVM_KERNEL_EXPLAIN_GRADIENTS_H_

#include "svm/kernel/explain/machine_sums.h"

namespace MCSVM_700::explain {

// The derivatives of each machine's sum of coefficient x K(x, v) by the entries of the case
// x[entries], as gradients[machines][entries]; with s = gamma x.v + coef0
//   linear        sum alpha v
//   polynomial    sum alpha degree gamma s^(degree - 1) v
//   radial basis  sum alpha (-2 gamma) K (x - v)
//   sigmoid       sum alpha gamma (1 - K^2) v
// [any thread] Fails: std::bad_alloc.
void Gradients(const MachineSums& sums, const double* x, double* gradients);

}  // namespace MCSVM_700::explain

#endif  // SVM_KERNEL_EXPLAIN_GRADIENTS_H_
