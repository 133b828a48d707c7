// The kernels and their parameters, as plain data.
#ifndef SVM_CONSTANTS_KERNEL_TYPE_H_
#define SVM_CONSTANTS_KERNEL_TYPE_H_

namespace SVMConst {

// In the order in which a document's kernel element is looked for.
enum KernelFunctionType : int {
  kLinear = 0,
  kPolynomial = 1,
  kRadialBasis = 2,
  kSigmoid = 3,
};

// A kernel takes those of its formula and leaves the others alone.
struct KernelParameters {
  KernelFunctionType type = kLinear;
  double gamma = 1.0;
  double coef0 = 1.0;
  double degree = 1.0;
};

}  // namespace SVMConst

#endif  // SVM_CONSTANTS_KERNEL_TYPE_H_
