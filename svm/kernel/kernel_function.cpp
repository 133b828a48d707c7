#include "svm/kernel/kernel_function.h"

#include <cmath>
#include <cstddef>

namespace MCSVM_700 {
namespace {

double Dot(const std::vector<double>& x, const std::vector<double>& y) {
  double sum = 0.0;
  for (std::size_t k = 0; k < x.size(); ++k) sum += x[k] * y[k];
  return sum;
}

double SquaredDistance(const std::vector<double>& x, const std::vector<double>& y) {
  double sum = 0.0;
  for (std::size_t k = 0; k < x.size(); ++k) {
    const double difference = x[k] - y[k];
    sum += difference * difference;
  }
  return sum;
}

double Dot(const std::vector<int>& idx1, const std::vector<double>& val1,
           const std::vector<int>& idx2, const std::vector<double>& val2) {
  double sum = 0.0;
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < idx1.size() && j < idx2.size()) {
    if (idx1[i] == idx2[j]) {
      sum += val1[i] * val2[j];
      ++i;
      ++j;
    } else if (idx1[i] < idx2[j]) {
      ++i;
    } else {
      ++j;
    }
  }
  return sum;
}

double SquaredDistance(const std::vector<int>& idx1, const std::vector<double>& val1,
                       const std::vector<int>& idx2, const std::vector<double>& val2) {
  double sum = 0.0;
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < idx1.size() && j < idx2.size()) {
    if (idx1[i] == idx2[j]) {
      const double difference = val1[i] - val2[j];
      sum += difference * difference;
      ++i;
      ++j;
    } else if (idx1[i] < idx2[j]) {
      sum += val1[i] * val1[i];
      ++i;
    } else {
      sum += val2[j] * val2[j];
      ++j;
    }
  }
  for (; i < idx1.size(); ++i) sum += val1[i] * val1[i];
  for (; j < idx2.size(); ++j) sum += val2[j] * val2[j];
  return sum;
}

}  // namespace

double SVMKFLinear::Evaluate(const std::vector<int>& idx1, const std::vector<double>& val1,
                             const std::vector<int>& idx2, const std::vector<double>& val2) const {
  return Dot(idx1, val1, idx2, val2);
}

double SVMKFLinear::Evaluate(const std::vector<double>& x, const std::vector<double>& y) const {
  return Dot(x, y);
}

double SVMKFPolynomial::Evaluate(const std::vector<int>& idx1, const std::vector<double>& val1,
                                 const std::vector<int>& idx2,
                                 const std::vector<double>& val2) const {
  return std::pow(gamma_ * Dot(idx1, val1, idx2, val2) + coef0_, degree_);
}

double SVMKFPolynomial::Evaluate(const std::vector<double>& x, const std::vector<double>& y) const {
  return std::pow(gamma_ * Dot(x, y) + coef0_, degree_);
}

double SVMKFRBF::Evaluate(const std::vector<int>& idx1, const std::vector<double>& val1,
                          const std::vector<int>& idx2, const std::vector<double>& val2) const {
  return std::exp(-gamma_ * SquaredDistance(idx1, val1, idx2, val2));
}

double SVMKFRBF::Evaluate(const std::vector<double>& x, const std::vector<double>& y) const {
  return std::exp(-gamma_ * SquaredDistance(x, y));
}

double SVMKFSigmoid::Evaluate(const std::vector<int>& idx1, const std::vector<double>& val1,
                              const std::vector<int>& idx2, const std::vector<double>& val2) const {
  return std::tanh(gamma_ * Dot(idx1, val1, idx2, val2) + coef0_);
}

double SVMKFSigmoid::Evaluate(const std::vector<double>& x, const std::vector<double>& y) const {
  return std::tanh(gamma_ * Dot(x, y) + coef0_);
}

std::unique_ptr<SVMKernelFunction> MakeKernel(const SVMConst::KernelParameters& parameters) {
  switch (parameters.type) {
    case SVMConst::kLinear:
      return std::make_unique<SVMKFLinear>();
    case SVMConst::kPolynomial:
      return std::make_unique<SVMKFPolynomial>(parameters.gamma, parameters.coef0,
                                               parameters.degree);
    case SVMConst::kRadialBasis:
      return std::make_unique<SVMKFRBF>(parameters.gamma);
    case SVMConst::kSigmoid:
      return std::make_unique<SVMKFSigmoid>(parameters.gamma, parameters.coef0);
  }
  return nullptr;
}

}  // namespace MCSVM_700
