// Training leaves every vector whose coefficient is not at its bound on the margin of its machine:
// its decision value is 1 or -1, with the sign of the coefficient. So each of them tells what the
// machine's absoluteValue must be, and where they agree with each other and not with the document,
// the document is wrong.
#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "app/doctor/checks.h"
#include "host/number_text.h"
#include "host/output/scheme.h"

namespace svmscore::app {
namespace {

constexpr std::size_t kSample = 40;  // vectors that are asked, spread over the machine
constexpr std::size_t kNeeded = 5;   // that must be on the margin, both signs among them
constexpr double kAlike = 0.02;      // training stops within 0.001 by default, and up to 0.01
constexpr double kWrong = 0.1;

// The absoluteValue that each vector on the margin asks for; nothing where they are too few.
std::vector<double> AskedFor(const ModelNumbers& numbers, const MachineNumbers& machine) {
  double bounds[2] = {0.0, 0.0};
  for (const double value : machine.coefficients) {
    double& bound = bounds[value > 0.0 ? 1 : 0];
    bound = std::max(bound, std::abs(value));
  }
  std::vector<std::size_t> free;
  bool signs[2] = {false, false};
  for (std::size_t i = 0; i < machine.coefficients.size(); ++i) {
    const std::size_t sign = machine.coefficients[i] > 0.0 ? 1 : 0;
    if (std::abs(machine.coefficients[i]) > 0.999 * bounds[sign]) continue;
    signs[sign] = true;
    free.push_back(i);
  }
  std::vector<double> asked;
  if (free.size() < kNeeded || !signs[0] || !signs[1]) return asked;
  for (std::size_t at = 0; at < free.size(); at += free.size() / kSample + 1) {
    const std::size_t i = free[at];
    double sum = 0.0;
    for (std::size_t j = 0; j < machine.coefficients.size(); ++j) {
      sum += machine.coefficients[j] * numbers.kernel.Value(numbers.vectors[machine.vectors[i]],
                                                            numbers.vectors[machine.vectors[j]]);
    }
    asked.push_back((machine.coefficients[i] > 0.0 ? 1.0 : -1.0) - sum);
  }
  std::sort(asked.begin(), asked.end());
  return asked;
}

}  // namespace

void CheckMargin(const Examined& examined, FindingList& findings) {
  if (!examined.document.classification) return;
  const bool thresholds =
      output::SchemeOf(examined.document.model, examined.document.categories.size()).method !=
      output::Method::kOneAgainstAll;
  for (const MachineNumbers& machine : examined.numbers.machines) {
    const std::vector<double> asked = AskedFor(examined.numbers, machine);
    // One in ten may differ: one that is at a bound of its own, or a duplicate.
    if (asked.empty() || !(asked[asked.size() * 19 / 20] - asked[asked.size() / 20] < kAlike)) {
      continue;
    }
    const double wanted = asked[asked.size() / 2];
    // A threshold is an offset too, from the other side.
    const double offset = machine.offset - (thresholds ? machine.threshold : 0.0);
    if (std::abs(offset - wanted) < kWrong) continue;
    const bool sign = std::abs(offset + wanted) < 0.5 * kWrong;
    findings.Add(sign ? "offset-sign" : "offset-off", machine.coefficients_element,
                 fmt::format("absoluteValue is {}, and the vectors on the margin ask for {:.4g}",
                             FormatNumber(machine.offset), wanted + machine.offset - offset));
  }
}

}  // namespace svmscore::app
