// The normal distribution. Arguments: x or a probability, then mean and standard deviation.
#include <array>
#include <cmath>
#include <numbers>

#include "host/transform/functions/functions.h"

namespace svmscore::transform {
namespace {

const double kRootOfTwoPi = std::sqrt(2.0 * std::numbers::pi);

double Density(double z) {
  return std::exp(-0.5 * z * z) / kRootOfTwoPi;
}

// erfc keeps the accuracy of both tails, where 1 + erf would lose the lower one.
double Cumulative(double z) {
  return 0.5 * std::erfc(-z / std::numbers::sqrt2);
}

template <std::size_t N>
double Polynomial(const std::array<double, N>& coefficients, double x) {
  double sum = 0.0;
  for (const double coefficient : coefficients) sum = sum * x + coefficient;
  return sum;
}

// A rational approximation (P. Acklam, 2003) for 0 < p <= 0.5, relative error below 1.15e-9.
double RoughQuantile(double p) {
  constexpr std::array a = {-3.969683028665376e+01, 2.209460984245205e+02,  -2.759285104469687e+02,
                            1.383577518672690e+02,  -3.066479806614716e+01, 2.506628277459239e+00};
  constexpr std::array b = {-5.447609879822406e+01, 1.615858368580409e+02,  -1.556989798598866e+02,
                            6.680131188771972e+01,  -1.328068155288572e+01, 1.0};
  constexpr std::array c = {-7.784894002430293e-03, -3.223964580411365e-01, -2.400758277161838e+00,
                            -2.549732539343734e+00, 4.374664141464968e+00,  2.938163982698783e+00};
  constexpr std::array d = {7.784695709041462e-03, 3.224671290700398e-01, 2.445134137142996e+00,
                            3.754408661907416e+00, 1.0};
  constexpr double kTail = 0.02425;
  if (p < kTail) {
    const double q = std::sqrt(-2.0 * std::log(p));
    return Polynomial(c, q) / Polynomial(d, q);
  }
  const double q = p - 0.5;
  return q * Polynomial(a, q * q) / Polynomial(b, q * q);
}

// The z with Cumulative(z) = p: the approximation, then two steps of Halley's method, each of which
// cubes the error; what remains is the error of erfc, a few units in the last place. Below
// p = 1e-300 erfc is not accurate enough for the steps, and the approximation's own error remains.
double Quantile(double p) {
  if (p > 0.5) return -Quantile(1.0 - p);  // 1 - p is exact
  double z = RoughQuantile(p);
  if (p < 1e-300) return z;
  for (int step = 0; step < 2; ++step) {
    const double error = (Cumulative(z) - p) / Density(z);
    z -= error / (1.0 + 0.5 * z * error);
  }
  return z;
}

double StandardQuantile(double p) {
  return p > 0.0 && p < 1.0 ? Quantile(p) : std::numeric_limits<double>::quiet_NaN();
}

struct Parameters {
  double x;
  double mean;
  double deviation;
};

// Nothing where an argument is not a number or the deviation is not positive.
std::optional<Parameters> Read(const Arguments& in) {
  const auto x = NumberOf(in[0]);
  const auto mean = NumberOf(in[1]);
  const auto deviation = NumberOf(in[2]);
  if (!x || !mean || !deviation || !(*deviation > 0.0)) return std::nullopt;
  return Parameters{*x, *mean, *deviation};
}

Value NormalDensity(const Arguments& in) {
  const auto of = Read(in);
  if (!of) return Value::Invalid();
  return Value::Result(Density((of->x - of->mean) / of->deviation) / of->deviation);
}

Value NormalCumulative(const Arguments& in) {
  const auto of = Read(in);
  return of ? Value::Result(Cumulative((of->x - of->mean) / of->deviation)) : Value::Invalid();
}

Value NormalQuantile(const Arguments& in) {
  const auto of = Read(in);
  if (!of) return Value::Invalid();
  return Value::Result(of->mean + of->deviation * StandardQuantile(of->x));
}

constexpr std::array kNormalFunctions = {
    Function{"normalPDF", 3, 3, Returns::kNumber, Accepts::kPresent, NormalDensity},
    Function{"normalCDF", 3, 3, Returns::kNumber, Accepts::kPresent, NormalCumulative},
    Function{"normalIDF", 3, 3, Returns::kNumber, Accepts::kPresent, NormalQuantile},
    Function{"stdNormalPDF", 1, 1, Returns::kNumber, Accepts::kPresent, OfNumber<Density>},
    Function{"stdNormalCDF", 1, 1, Returns::kNumber, Accepts::kPresent, OfNumber<Cumulative>},
    Function{"stdNormalIDF", 1, 1, Returns::kNumber, Accepts::kPresent, OfNumber<StandardQuantile>},
    Function{"erf", 1, 1, Returns::kNumber, Accepts::kPresent, OfNumber<::erf>},
};

}  // namespace

std::span<const Function> NormalFunctions() {
  return kNormalFunctions;
}

}  // namespace svmscore::transform
