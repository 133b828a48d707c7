// Gauss-Legendre quadrature.
#ifndef SVM_KERNEL_EXPLAIN_GAUSS_LEGENDRE_H_
#define SVM_KERNEL_EXPLAIN_GAUSS_LEGENDRE_H_

#include <cstddef>
#include <vector>

namespace MCSVM_700::explain {

struct GaussRule {
  std::vector<double> at;  // ascending
  std::vector<double> weight;
};

// The nodes in (-1, 1) and the weights, whose sum is 2, that integrate polynomials up to the degree
// 2 count - 1 exactly. Weights are exact but for a few units in the last place, and so are nodes
// and their distances from the ends, for up to 10,000 nodes. REQUIRES: count >= 1.
GaussRule GaussLegendre(std::size_t count);

}  // namespace MCSVM_700::explain

#endif  // SVM_KERNEL_EXPLAIN_GAUSS_LEGENDRE_H_
