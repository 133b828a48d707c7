// Intervals that cover a stated share of what they predict.
#ifndef TOOLS_CALIBRATE_CONFORMAL_H_
#define TOOLS_CALIBRATE_CONFORMAL_H_

#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

namespace svmscore::tools {

// Split conformal prediction: of n absolute residuals on cases that the model was not trained on,
// that of rank ceil((n + 1) confidence) covers a further, exchangeable case with a probability of
// at least `confidence`, and, without ties, of at most confidence + 1 / (n + 1) (H. Papadopoulos et
// al., Inductive confidence machines for regression, ECML 2002; J. Lei et al., Distribution-free
// predictive inference for regression, JASA 113, 2018). The rank counts from 1; one beyond n means
// that n is too small. A product within 1e-12 of a whole number counts as it.
// REQUIRES: 0 < confidence < 1. [any thread] Fails: never.
std::size_t ConformalRank(std::size_t cases, double confidence);
// The fewest cases that have such a rank.
std::size_t CasesNeeded(double confidence);

// The residual of that rank. REQUIRES: 1 <= rank <= residuals.size(). [any thread] Fails: never.
double QuantileOf(std::vector<double> residuals, std::size_t rank);

// An observed value, and the value of the model before its rescaling.
struct IntervalCase {
  double value = 0.0;
  double observed = 0.0;
};
// What scoring makes of a model's value on its way to the result.
using Rescale = std::function<double(double)>;

// The interval that scoring writes for a model's value: [value - h, value + h] rescaled, in
// ascending order, with h = 2.99573227355399 deviation.
std::pair<double, double> IntervalOf(double value, double deviation, const Rescale& rescale);

// The standard deviation with which the intervals that scoring writes have the half-width
// `quantile`: quantile / |factor| / 2.99573227355399, and the next larger ones until every case
// whose residual is at most the quantile is in its interval after all roundings.
// REQUIRES: factor != 0, quantile >= 0 and finite. [any thread] Fails: std::domain_error where no
// double does.
double DeviationFor(double quantile, double factor, const std::vector<IntervalCase>& cases,
                    const Rescale& rescale);

}  // namespace svmscore::tools

#endif  // TOOLS_CALIBRATE_CONFORMAL_H_
