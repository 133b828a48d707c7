#include "tools/calibrate/conformal.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace svmscore::tools {
namespace {

// -ln 0.05, as scoring has it.
constexpr double kHalfWidth = 2.99573227355399;

bool CoversAll(double quantile, double deviation, const std::vector<IntervalCase>& cases,
               const Rescale& rescale) {
  return std::all_of(cases.begin(), cases.end(), [&](const IntervalCase& one) {
    if (std::fabs(one.observed - rescale(one.value)) > quantile) return true;
    const auto [lower, upper] = IntervalOf(one.value, deviation, rescale);
    return lower <= one.observed && one.observed <= upper;
  });
}

}  // namespace

std::size_t ConformalRank(std::size_t cases, double confidence) {
  const double product = (static_cast<double>(cases) + 1.0) * confidence;
  return static_cast<std::size_t>(std::ceil(product * (1.0 - 1e-12)));
}

std::size_t CasesNeeded(double confidence) {
  auto cases = static_cast<std::size_t>(std::max(0.0, std::floor(confidence / (1.0 - confidence))));
  cases -= std::min<std::size_t>(cases, 2);
  while (ConformalRank(cases, confidence) > cases) ++cases;
  return std::max<std::size_t>(cases, 1);
}

double QuantileOf(std::vector<double> residuals, std::size_t rank) {
  const auto at = residuals.begin() + static_cast<std::ptrdiff_t>(rank) - 1;
  std::nth_element(residuals.begin(), at, residuals.end());
  return *at;
}

std::pair<double, double> IntervalOf(double value, double deviation, const Rescale& rescale) {
  const double h = deviation * kHalfWidth;
  return std::minmax({rescale(value - h), rescale(value + h)});
}

double DeviationFor(double quantile, double factor, const std::vector<IntervalCase>& cases,
                    const Rescale& rescale) {
  const double first = quantile / std::fabs(factor) / kHalfWidth;
  // Rounding of large values may need more than the next double.
  double growth = std::numeric_limits<double>::epsilon();
  double deviation = first;
  while (!CoversAll(quantile, deviation, cases, rescale)) {
    deviation = std::nextafter(first + growth * std::max(first, std::numeric_limits<double>::min()),
                               std::numeric_limits<double>::infinity());
    growth *= 2.0;
    if (!std::isfinite(deviation) || growth > 1e300) {
      throw std::domain_error("no interval of finite width holds the residuals");
    }
  }
  if (!std::isfinite(deviation)) throw std::domain_error("the residuals are too large");
  return deviation;
}

}  // namespace svmscore::tools
