#include "tools/calibrate/sigmoid_fit.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace svmscore::tools {
namespace {

constexpr double kRidge = 1e-12;
constexpr double kSmallestStep = 1e-10;
constexpr double kWanted = 1e-12;   // of the derivatives, a case
constexpr double kRequired = 1e-9;  // likewise
constexpr int kMostIterations = 200;

// u = (f / unit - mean) / deviation.
struct Standardised {
  std::vector<double> values;
  double unit = 1.0;
  double mean = 0.0;
  double deviation = 1.0;
};

Standardised Standardise(const std::vector<double>& decisions) {
  Standardised u;
  u.values = decisions;
  double largest = 0.0;
  for (const double f : decisions) largest = std::max(largest, std::fabs(f));
  if (largest > 0.0) u.unit = largest;
  const auto count = static_cast<double>(std::max<std::size_t>(decisions.size(), 1));
  double sum = 0.0;
  for (double& f : u.values) sum += f /= u.unit;
  u.mean = sum / count;
  double squares = 0.0;
  for (double& f : u.values) {
    f -= u.mean;
    squares += f * f;
  }
  const auto [least, most] = std::minmax_element(decisions.begin(), decisions.end());
  // The mean of equal values is rounded, too.
  const bool equal = decisions.empty() || *least == *most;
  if (!equal) u.deviation = std::sqrt(squares / count);
  for (double& f : u.values) f = equal ? 0.0 : f / u.deviation;
  return u;
}

struct Point {
  Sigmoid at;
  double value = 0.0;  // of F
  double da = 0.0;     // its derivatives
  double db = 0.0;
  double daa = kRidge;
  double dab = 0.0;
  double dbb = kRidge;

  double Slope() const { return std::max(std::fabs(da), std::fabs(db)); }
};

class Objective {
 public:
  explicit Objective(const SigmoidCases& cases)
      : positive_(cases.positive), u_(Standardise(cases.decisions)) {
    for (const unsigned char is_positive : positive_) (is_positive != 0 ? pro_ : con_) += 1.0;
    target_of_[0] = 1.0 / (con_ + 2.0);
    target_of_[1] = (pro_ + 1.0) / (pro_ + 2.0);
  }

  Point Start() const { return Evaluate({0.0, std::log((con_ + 1.0) / (pro_ + 1.0))}); }

  Point Evaluate(Sigmoid at) const {
    Point point;
    point.at = at;
    for (std::size_t i = 0; i < positive_.size(); ++i) {
      const double u = u_.values[i];
      const double target = target_of_[positive_[i]];
      const double z = u * at.a + at.b;
      const double e = std::exp(-std::fabs(z));
      const double larger = 1.0 / (1.0 + e);
      const double smaller = e * larger;
      const double p = z >= 0.0 ? smaller : larger;
      point.value += (z >= 0.0 ? target : target - 1.0) * z + std::log1p(e);
      const double weight = larger * smaller;
      const double residual = target - p;
      point.da += u * residual;
      point.db += residual;
      point.daa += u * u * weight;
      point.dab += u * weight;
      point.dbb += weight;
    }
    return point;
  }

  double Count() const { return pro_ + con_; }

  Sigmoid OfDecisions(Sigmoid at) const {
    return {at.a / u_.deviation / u_.unit, at.b - at.a * u_.mean / u_.deviation};
  }

 private:
  const std::vector<unsigned char>& positive_;
  Standardised u_;
  double pro_ = 0.0;
  double con_ = 0.0;
  double target_of_[2];
};

// Takes Newton's step from the point, or a part of it; false where no part leads to a better one.
// Close to the minimum F is rounded to one value: there a smaller slope is better.
bool Step(const Objective& objective, Point& point) {
  const double determinant = point.daa * point.dbb - point.dab * point.dab;
  const double a = -(point.dbb * point.da - point.dab * point.db) / determinant;
  const double b = -(point.daa * point.db - point.dab * point.da) / determinant;
  const double slope = point.da * a + point.db * b;
  for (double part = 1.0; part >= kSmallestStep; part /= 2.0) {
    const Point next = objective.Evaluate({point.at.a + part * a, point.at.b + part * b});
    const bool lower = next.value < point.value + 1e-4 * part * slope;
    const bool flatter = next.value <= point.value + 1e-12 * std::fabs(point.value) &&
                         next.Slope() < 0.5 * point.Slope();
    if (!lower && !flatter) continue;
    if (next.at.a == point.at.a && next.at.b == point.at.b) return false;
    point = next;
    return true;
  }
  return false;
}

}  // namespace

Sigmoid FitSigmoid(const SigmoidCases& cases) {
  const Objective objective(cases);
  Point point = objective.Start();
  Point best = point;
  for (int i = 0; i < kMostIterations && point.Slope() > kWanted * objective.Count(); ++i) {
    if (!Step(objective, point)) break;
    if (point.Slope() < best.Slope()) best = point;
  }
  const Sigmoid found = objective.OfDecisions(best.at);
  if (!(best.Slope() <= kRequired * objective.Count()) || !std::isfinite(found.a) ||
      !std::isfinite(found.b)) {
    throw std::domain_error("no sigmoid fits the decision values to the precision of numbers");
  }
  return found;
}

}  // namespace svmscore::tools
