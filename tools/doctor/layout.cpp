// How the machines divide the categories among them.
#include <algorithm>
#include <set>
#include <utility>

#include <fmt/format.h>

#include "host/output/scheme.h"
#include "host/text/number_text.h"
#include "tools/doctor/checks.h"

namespace svmscore::tools {
namespace {

using output::Method;

std::pair<std::string, std::string> PairOf(const MachineNumbers& machine) {
  return std::minmax(machine.target, machine.alternate);
}

void CheckPairs(const ModelNumbers& numbers, FindingList& findings) {
  std::set<std::pair<std::string, std::string>> pairs;
  for (const MachineNumbers& machine : numbers.machines) {
    if (machine.target.empty() || machine.target == machine.alternate) continue;
    if (pairs.insert(PairOf(machine)).second) continue;
    findings.Add("pair-repeated", machine.element,
                 fmt::format("an earlier machine decides between \"{}\" and \"{}\"", machine.target,
                             machine.alternate));
  }
}

void CheckTargets(const Examined& examined, FindingList& findings) {
  const ModelNumbers& numbers = examined.numbers;
  if (FormPairs(numbers)) {
    findings.Add("method-contradicts-machines", examined.document.model,
                 fmt::format("the model is one-against-all, and its {} machines pair every "
                             "category with every other",
                             numbers.machines.size()));
    return;
  }
  std::set<std::string> targets;
  for (const MachineNumbers& machine : numbers.machines) {
    if (targets.insert(machine.target).second) continue;
    findings.Add("target-repeated", machine.element,
                 fmt::format("an earlier machine stands for \"{}\"", machine.target));
  }
}

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

// 4.0 to 4.2: the versions that have the decision rule and lack the attribute.
void CheckMaxWins(const Inspected& document, FindingList& findings) {
  const std::string version = AttributeText(document.root, "version");
  const bool early =
      version.starts_with("4.0") || version.starts_with("4.1") || version.starts_with("4.2");
  if (!early || AttributeText(document.model, "maxWins") != "true") return;
  findings.Add("max-wins-early", document.model,
               fmt::format("maxWins stands in a document of version {}", version));
}

}  // namespace

void CheckLayout(const Examined& examined, FindingList& findings) {
  const Inspected& document = examined.document;
  if (!document.classification) {
    CheckThresholds(examined, "a regression", findings);
    return;
  }
  CheckMaxWins(document, findings);
  for (const MachineNumbers& machine : examined.numbers.machines) {
    if (machine.target.empty() || machine.target != machine.alternate) continue;
    findings.Add("same-category-twice", machine.element,
                 fmt::format("both its categories are \"{}\"", machine.target));
  }
  switch (output::SchemeOf(document.model, document.categories.size()).method) {
    case Method::kOneAgainstOne:
      CheckPairs(examined.numbers, findings);
      break;
    case Method::kOneAgainstAll:
      CheckTargets(examined, findings);
      CheckThresholds(examined, "a one-against-all model", findings);
      break;
    case Method::kBinary:
    case Method::kRegression:
      break;
  }
}

}  // namespace svmscore::tools
