// MCSVM_700::SVMKernelFunction: the kernels, written out plainly. This is the definition that
// faster code is compared with, bit for bit.
#ifndef SVM_KERNEL_KERNEL_FUNCTION_H_
#define SVM_KERNEL_KERNEL_FUNCTION_H_

#include <memory>
#include <vector>

#include "svm/constants/kernel_type.h"

namespace MCSVM_700 {

// A function of two vectors x and y, built on one of
//   dot(x, y)   = sum of x[k] y[k]
//   dist2(x, y) = sum of (x[k] - y[k])^2
// Each sum is formed in double, one term at a time, in ascending order of k, from 0.0. Nothing is
// clamped: NaN and infinities travel on into the value.
//
// Immutable, so any number of threads may share one. Evaluating neither allocates nor copies. The
// order of the virtual operations is part of the interface.
class SVMKernelFunction {
 public:
  virtual ~SVMKernelFunction() = default;

  // Sparse vectors: `idx` holds the positions of the entries in ascending order, 0-based, and `val`
  // the entries; positions that are not listed count as 0. Each pair of lists is read once.
  // REQUIRES: val1 is at least as long as idx1, val2 as idx2.
  virtual double Evaluate(const std::vector<int>& idx1, const std::vector<double>& val1,
                          const std::vector<int>& idx2, const std::vector<double>& val2) const = 0;
  // Dense vectors. REQUIRES: y is at least as long as x; the rest of it is ignored.
  virtual double Evaluate(const std::vector<double>& x, const std::vector<double>& y) const = 0;
};

// dot(x, y)
class SVMKFLinear : public SVMKernelFunction {
 public:
  double Evaluate(const std::vector<int>& idx1, const std::vector<double>& val1,
                  const std::vector<int>& idx2, const std::vector<double>& val2) const override;
  double Evaluate(const std::vector<double>& x, const std::vector<double>& y) const override;
};

// pow(gamma dot(x, y) + coef0, degree). The degree is a real exponent: a negative base gives NaN
// unless the degree is a whole number.
class SVMKFPolynomial : public SVMKernelFunction {
 public:
  SVMKFPolynomial(double gamma, double coef0, double degree)
      : gamma_(gamma), coef0_(coef0), degree_(degree) {}
  double Evaluate(const std::vector<int>& idx1, const std::vector<double>& val1,
                  const std::vector<int>& idx2, const std::vector<double>& val2) const override;
  double Evaluate(const std::vector<double>& x, const std::vector<double>& y) const override;

 private:
  double gamma_;
  double coef0_;
  double degree_;
};

// exp(-gamma dist2(x, y))
class SVMKFRBF : public SVMKernelFunction {
 public:
  explicit SVMKFRBF(double gamma) : gamma_(gamma) {}
  double Evaluate(const std::vector<int>& idx1, const std::vector<double>& val1,
                  const std::vector<int>& idx2, const std::vector<double>& val2) const override;
  double Evaluate(const std::vector<double>& x, const std::vector<double>& y) const override;

 private:
  double gamma_;
};

// tanh(gamma dot(x, y) + coef0)
class SVMKFSigmoid : public SVMKernelFunction {
 public:
  SVMKFSigmoid(double gamma, double coef0) : gamma_(gamma), coef0_(coef0) {}
  double Evaluate(const std::vector<int>& idx1, const std::vector<double>& val1,
                  const std::vector<int>& idx2, const std::vector<double>& val2) const override;
  double Evaluate(const std::vector<double>& x, const std::vector<double>& y) const override;

 private:
  double gamma_;
  double coef0_;
};

// Null for a type that is not a kernel's.
std::unique_ptr<SVMKernelFunction> MakeKernel(const SVMConst::KernelParameters& parameters);

}  // namespace MCSVM_700

#endif  // SVM_KERNEL_KERNEL_FUNCTION_H_
