#include "svm/kernel/explain/gradients.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "svm/kernel/packed/aligned_buffer.h"

namespace MCSVM_700::explain {
namespace {

// The factor of v, or of x - v, from x.v or from the squared distance.
double Slope(const SVMConst::KernelParameters& kernel, double sum) {
  switch (kernel.type) {
    case SVMConst::kLinear:
      return 1.0;
    case SVMConst::kPolynomial:
      if (kernel.degree == 0.0) return 0.0;
      return kernel.degree * kernel.gamma *
             std::pow(kernel.gamma * sum + kernel.coef0, kernel.degree - 1.0);
    case SVMConst::kRadialBasis:
      return -2.0 * kernel.gamma * std::exp(-kernel.gamma * sum);
    case SVMConst::kSigmoid: {
      const double value = std::tanh(kernel.gamma * sum + kernel.coef0);
      return kernel.gamma * ((1.0 - value) * (1.0 + value));
    }
  }
  return 0.0;
}

}  // namespace

void Gradients(const MachineSums& sums, const double* x, double* gradients) {
  const std::size_t entries = sums.entries();
  const std::size_t machines = sums.machines().size();
  const bool distance = sums.kernel().type == SVMConst::kRadialBasis;
  std::fill_n(gradients, machines * entries, 0.0);
  packed::AlignedBuffer dense;
  dense.Reserve(entries * kBlock);
  std::vector<std::size_t> all(entries);
  std::iota(all.begin(), all.end(), std::size_t{0});
  double slopes[kBlock];
  double coefficients[kBlock];
  double directions[kBlock];
  for (std::size_t block = 0; block < sums.blocks(); ++block) {
    sums.Expand(block, dense.data());
    PartialSums(sums.kernel(), all, x, dense.data(), slopes);
    for (double& slope : slopes) slope = Slope(sums.kernel(), slope);
    for (std::size_t m = 0; m < machines; ++m) {
      if (!sums.Coefficients(block, m, coefficients)) continue;
      for (std::size_t lane = 0; lane < kBlock; ++lane) {
        if (coefficients[lane] != 0.0) coefficients[lane] *= slopes[lane];
      }
      for (std::size_t e = 0; e < entries; ++e) {
        const double* const v = dense.data() + e * kBlock;
        for (std::size_t lane = 0; lane < kBlock; ++lane) {
          directions[lane] = distance ? x[e] - v[lane] : v[lane];
        }
        gradients[m * entries + e] += WeightedSum(coefficients, directions);
      }
    }
  }
}

}  // namespace MCSVM_700::explain
