// Attributes that have no effect, that other programs ignore, or that leave cases without scores.
#include <cmath>

#include <fmt/format.h>

#include "host/output/scheme.h"
#include "host/text/number_text.h"
#include "tools/doctor/checks.h"

namespace svmscore::tools {
namespace {

void CheckThresholds(const Examined& examined, const char* where, FindingList& findings) {
  const auto check = [&](const Element* element) {
    const auto threshold = ParseNumber(AttributeText(element, "threshold"));
    if (!threshold || *threshold == 0.0) return;
    findings.Add(
        "threshold-not-used", element,
        fmt::format("the threshold {} is not compared in {}", FormatNumber(*threshold), where));
  };
  check(examined.document.model);
  for (const MachineNumbers& machine : examined.numbers.machines) check(machine.element);
}

// Versions 4.0 to 4.2 have the decision rule but not the attribute.
void CheckMaxWins(const Inspected& document, FindingList& findings) {
  const std::string version = AttributeText(document.root, "version");
  const bool early =
      version.starts_with("4.0") || version.starts_with("4.1") || version.starts_with("4.2");
  if (!early || AttributeText(document.model, "maxWins") != "true") return;
  findings.Add("max-wins-early", document.model,
               fmt::format("the document uses maxWins, which version {} lacks", version));
}

void CheckDegree(const KernelNumbers& kernel, FindingList& findings) {
  if (kernel.type != KernelNumbers::Type::kPolynomial) return;
  if (kernel.degree == std::floor(kernel.degree)) return;
  findings.Add("fractional-degree", kernel.element,
               fmt::format("the degree is {}", FormatNumber(kernel.degree)));
}

}  // namespace

void CheckAttributes(const Examined& examined, FindingList& findings) {
  const Inspected& document = examined.document;
  CheckDegree(examined.numbers.kernel, findings);
  if (!document.classification) {
    CheckThresholds(examined, "a regression", findings);
    return;
  }
  CheckMaxWins(document, findings);
  const auto scheme = output::SchemeOf(document.model, document.categories.size());
  if (scheme.method == output::Method::kOneAgainstAll) {
    CheckThresholds(examined, "a one-against-all model", findings);
  }
}

}  // namespace svmscore::tools
