// Training leaves every vector whose coefficient is not at its bound on the margin of its machine:
// its decision value is 1 or -1, with the sign of the coefficient. So the absoluteValue can be
// computed from each of them; if they agree with each other but not with the document, the document
// is wrong.
#include <algorithm>
#include <cmath>
#include <optional>

#include <fmt/format.h>

#include "host/output/scheme.h"
#include "host/text/number_text.h"
#include "tools/doctor/checks.h"

namespace svmscore::tools {
namespace {

constexpr std::size_t kSample = 40;  // vectors of each sign that are used, spread over the machine
constexpr std::size_t kNeededOnMargin = 2;  // of each sign that must be on the margin
constexpr double kAlike = 0.02;  // training stops within 0.001 by default, and up to 0.01
constexpr double kWrong = 0.1;

// The absoluteValues computed from the vectors of one sign, in ascending order.
std::vector<double> AskedFor(const ModelNumbers& numbers, const MachineNumbers& machine,
                             double sign) {
  double bound = 0.0;
  for (const double value : machine.coefficients) bound = std::max(bound, sign * value);
  std::vector<std::size_t> free;
  for (std::size_t i = 0; i < machine.coefficients.size(); ++i) {
    const double size = sign * machine.coefficients[i];
    if (size > 0.0 && size < 0.999 * bound) free.push_back(i);
  }
  std::vector<double> asked;
  for (std::size_t at = 0; at < free.size(); at += free.size() / kSample + 1) {
    double sum = 0.0;
    for (std::size_t j = 0; j < machine.coefficients.size(); ++j) {
      sum +=
          machine.coefficients[j] * numbers.kernel.Value(numbers.vectors[machine.vectors[free[at]]],
                                                         numbers.vectors[machine.vectors[j]]);
    }
    asked.push_back(sign - sum);
  }
  std::sort(asked.begin(), asked.end());
  return asked;
}

// The absoluteValue that all vectors on the margin agree on; nothing if they are too few or do not
// agree.
std::optional<double> AskedByAll(const ModelNumbers& numbers, const MachineNumbers& machine) {
  const std::vector<double> above = AskedFor(numbers, machine, 1.0);
  const std::vector<double> below = AskedFor(numbers, machine, -1.0);
  if (above.size() < kNeededOnMargin || below.size() < kNeededOnMargin) return std::nullopt;
  const double most = std::max(above.back(), below.back());
  if (!(most - std::min(above.front(), below.front()) < kAlike)) return std::nullopt;
  return (above[above.size() / 2] + below[below.size() / 2]) / 2.0;
}

}  // namespace

void CheckMargin(const Examined& examined, FindingList& findings) {
  if (!examined.document.classification) return;
  const bool thresholds =
      output::SchemeOf(examined.document.model, examined.document.categories.size()).method !=
      output::Method::kOneAgainstAll;
  for (const MachineNumbers& machine : examined.numbers.machines) {
    const std::optional<double> asked = AskedByAll(examined.numbers, machine);
    if (!asked) continue;
    // A threshold acts as an offset with the opposite sign.
    const double offset = machine.offset - (thresholds ? machine.threshold : 0.0);
    if (std::abs(offset - *asked) < kWrong) continue;
    const bool sign = std::abs(offset + *asked) < 0.5 * kWrong;
    findings.Add(sign ? KindOfFinding("offset-sign") : KindOfFinding("offset-off"),
                 machine.coefficients_element,
                 fmt::format("absoluteValue is {}, but the vectors on the margin need {:.4g}",
                             FormatNumber(machine.offset), *asked + machine.offset - offset));
  }
}

}  // namespace svmscore::tools
