// The rule by which machines decide: that of the oldest versions in the words of the newer ones,
// and the method of a vote that does not name it.
#include <algorithm>
#include <set>
#include <string>
#include <utility>

#include "host/intake/steps.h"
#include "host/intake/target_categories.h"
#include "host/xml/attributes.h"
#include "host/xml/edit.h"

namespace svmscore::intake {
namespace {

constexpr const char* kOldSecond = "alternateBinaryTargetCategory";

// Values above the threshold select the target category, and with this one, the largest double
// below a half, a half does too.
constexpr const char* kBelowHalf = "0.49999999999999994";

bool Has(const DOMElement* element, const std::string& attribute) {
  const auto text = FindAttribute(element, attribute);
  return text && !text->empty();
}

void ReadOldSecond(Intake& intake) {
  const std::string second = FindAttribute(intake.Model(), kOldSecond).value_or("");
  if (second.empty()) return;
  const bool old_version = FindAttribute(intake.Root(), "version").value_or("").starts_with('3');
  DOMElement* machine = intake.ModelChild("SupportVectorMachine");
  if (machine == nullptr || Has(machine, "alternateTargetCategory")) return;
  if (FindNext(machine, "SupportVectorMachine") != nullptr) {
    if (!old_version) return;
    // Nothing says which side each machine's values choose.
    return intake.Tell("alternate-unused", intake.Model(),
                       "alternateBinaryTargetCategory with several machines",
                       "SupportVectorMachineModel");
  }
  // Version 3 knew neither of these; a document that has them means the newer rule.
  const bool newer_rule = Has(intake.Model(), "threshold") || Has(intake.Model(), "maxWins") ||
                          Has(machine, "threshold");
  const bool rounds = old_version && !newer_rule;
  intake.Tell(rounds ? Kind("two-class-rounding") : Kind("alternate-on-model"), intake.Model());
  SetAttribute(machine, "alternateTargetCategory", second);
  intake.Model()->removeAttribute(u"alternateBinaryTargetCategory");
  if (!rounds) return;
  SetAttribute(intake.Model(), "maxWins", "true");
  SetAttribute(machine, "threshold", kBelowHalf);
}

void InferMethod(Intake& intake) {
  if (Has(intake.Model(), "classificationMethod")) return;
  std::set<std::pair<std::string, std::string>> pairs;
  std::set<std::string> labels;
  std::size_t machines = 0;
  for (const DOMElement* machine : Children(intake.Model(), "SupportVectorMachine")) {
    std::string first = FindAttribute(machine, "targetCategory").value_or("");
    std::string second = FindAttribute(machine, "alternateTargetCategory").value_or("");
    if (first.empty() || second.empty() || first == second) return;
    labels.insert({first, second});
    if (second < first) std::swap(first, second);
    pairs.emplace(std::move(first), std::move(second));
    ++machines;
  }
  const std::size_t wanted = labels.size() * (labels.size() - 1) / 2;
  if (labels.size() < 3 || machines != wanted || pairs.size() != wanted) return;
  // The target may list more categories than the machines name.
  if (!FitsPairs(intake)) return;
  intake.Tell("method-inferred", intake.Model());
  SetAttribute(intake.Model(), "classificationMethod", "OneAgainstOne");
}

}  // namespace

void UseOneDecisionRule(Intake& intake) {
  if (!intake.IsClassification()) return;
  ReadOldSecond(intake);
  InferMethod(intake);
}

}  // namespace svmscore::intake
