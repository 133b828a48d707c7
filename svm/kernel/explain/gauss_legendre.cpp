#include "svm/kernel/explain/gauss_legendre.h"

#include <cmath>
#include <numbers>

namespace MCSVM_700::explain {
namespace {

struct Legendre {
  long double value;       // P_n
  long double derivative;  // P_n'
};

// At x = 1 - u. The recurrence in the differences P_k - P_{k-1} keeps the digits of a small u,
// which x has lost.
Legendre LegendreAt(std::size_t n, long double u) {
  long double value = 1.0L - u;
  long double difference = -u;
  for (std::size_t k = 1; k < n; ++k) {
    const auto real = static_cast<long double>(k);
    difference = (real * difference - (2.0L * real + 1.0L) * u * value) / (real + 1.0L);
    value += difference;
  }
  const auto real = static_cast<long double>(n);
  return {value, real * (u * value - difference) / (u * (2.0L - u))};
}

}  // namespace

GaussRule GaussLegendre(std::size_t count) {
  GaussRule rule;
  rule.at.assign(count, 0.0);
  rule.weight.assign(count, 0.0);
  for (std::size_t i = 0; i < (count + 1) / 2; ++i) {
    const bool middle = 2 * i + 1 == count;
    const long double angle = std::numbers::pi_v<long double> *
                              (static_cast<long double>(i) + 0.75L) /
                              (static_cast<long double>(count) + 0.5L);
    const long double half = std::sin(angle / 2.0L);
    long double u = middle ? 1.0L : 2.0L * half * half;
    Legendre polynomial = LegendreAt(count, u);
    for (int step = 0; step < 10 && !middle; ++step) {
      const long double change = polynomial.value / polynomial.derivative;
      u += change;
      polynomial = LegendreAt(count, u);
      if (std::abs(change) < 1e-18L * u) break;
    }
    const long double weight =
        2.0L / (u * (2.0L - u) * polynomial.derivative * polynomial.derivative);
    rule.at[i] = static_cast<double>(u - 1.0L);
    rule.at[count - 1 - i] = static_cast<double>(1.0L - u);
    rule.weight[i] = rule.weight[count - 1 - i] = static_cast<double>(weight);
  }
  return rule;
}

}  // namespace MCSVM_700::explain
