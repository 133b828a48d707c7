// The coefficients of each machine, and its absoluteValue.
#include <cmath>
#include <string>

#include <fmt/format.h>

#include "host/output/scheme.h"
#include "host/text/number_text.h"
#include "host/xml/attributes.h"
#include "tools/doctor/checks.h"

namespace svmscore::tools {
namespace {

// Coefficients are written with at least six digits; their rounding errors may add up to this
// share.
constexpr double kRounding = 1e-4;
// A machine with fewer terms may have been written by hand.
constexpr std::size_t kTrained = 10;

struct Sums {
  double positive = 0.0;
  double negative = 0.0;
  double Size() const { return positive - negative; }
};

Sums SumsOf(const MachineNumbers& machine) {
  Sums sums;
  for (const double value : machine.coefficients) {
    (value > 0.0 ? sums.positive : sums.negative) += value;
  }
  return sums;
}

// Whether a threshold decides between the machine's two categories.
bool ComparesThreshold(const Examined& examined, output::Method method,
                       const MachineNumbers& machine) {
  return examined.document.classification && method != output::Method::kOneAgainstAll &&
         output::MachineExtension(machine.element) == nullptr;
}

void CheckSide(const Examined& examined, output::Method method, const MachineNumbers& machine,
               const Sums& sums, FindingList& findings) {
  if (!examined.numbers.kernel.IsBounded() || !ComparesThreshold(examined, method, machine)) return;
  const bool radial = examined.numbers.kernel.type == KernelNumbers::Type::kRadialBasis;
  const double lowest = machine.offset + (radial ? sums.negative : -sums.Size());
  const double highest = machine.offset + (radial ? sums.positive : sums.Size());
  if (lowest <= machine.threshold && highest >= machine.threshold) return;
  const bool for_target = (lowest > machine.threshold) == examined.numbers.max_wins;
  findings.Add(
      "constant-side", machine.coefficients_element,
      fmt::format("decision values lie between {:.6g} and {:.6g}, the threshold is {}: the "
                  "machine always decides for \"{}\"",
                  lowest, highest, FormatNumber(machine.threshold),
                  for_target ? machine.target : machine.alternate));
}

// Models that learnt one class have coefficients of one sign. PMML has no word for them; producers
// say so in the free text algorithmName: "one_class", "OneClassSVM", "one-class".
bool SaysOneClass(const Element* model) {
  std::string letters;
  for (const char c : AttributeText(model, "algorithmName")) {
    if (c >= 'A' && c <= 'Z') letters += static_cast<char>(c - 'A' + 'a');
    if (c >= 'a' && c <= 'z') letters += c;
  }
  return letters.find("oneclass") != std::string::npos;
}

}  // namespace

void CheckTerms(const Examined& examined, FindingList& findings) {
  const bool signs_differ =
      examined.document.classification && !SaysOneClass(examined.document.model);
  const output::Method method =
      output::SchemeOf(examined.document.model, examined.document.categories.size()).method;
  for (const MachineNumbers& machine : examined.numbers.machines) {
    const std::size_t count = machine.coefficients.size();
    if (count == 0) continue;
    const Sums sums = SumsOf(machine);
    CheckSide(examined, method, machine, sums, findings);
    const bool one_signed = sums.positive == 0.0 || sums.negative == 0.0;
    if (one_signed && count > 1 && signs_differ) {
      findings.Add("one-signed-machine", machine.coefficients_element,
                   fmt::format("all its {} coefficients are {}", count,
                               sums.positive == 0.0 ? "negative" : "positive"));
    }
    const double sum = sums.positive + sums.negative;
    if (!one_signed && count >= kTrained && machine.offset != 0.0 &&
        std::abs(sum) > kRounding * sums.Size()) {
      findings.Add("coefficients-unbalanced", machine.coefficients_element,
                   fmt::format("its {} coefficients add up to {:.6g}", count, sum));
    }
  }
}

}  // namespace svmscore::tools
