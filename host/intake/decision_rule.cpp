// The rule by which machines decide: rewrites the rule of the oldest versions in the form of the
// newer ones, adds a voting method that the document leaves out, and takes categories that no
// machine names out of the decision.
#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/intake/declared_fields.h"
#include "host/intake/steps.h"
#include "host/intake/target_categories.h"
#include "host/xml/attributes.h"
#include "host/xml/edit.h"

namespace svmscore::intake {
namespace {

constexpr const char* kOldSecond = "alternateBinaryTargetCategory";

// Values above the threshold select the target category. With this threshold, the largest double
// below 0.5, the value 0.5 does too.
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

// The categories that machines name where each names two and there is one machine for each pair of
// them, by keys; else empty.
std::set<std::string> PairedCategories(const Intake& intake, const LabelKeys& keys) {
  std::set<std::pair<std::string, std::string>> pairs;
  std::set<std::string> names;
  std::size_t machines = 0;
  for (const DOMElement* machine : Children(intake.Model(), "SupportVectorMachine")) {
    std::string first = FindAttribute(machine, "targetCategory").value_or("");
    std::string second = FindAttribute(machine, "alternateTargetCategory").value_or("");
    if (first.empty() || second.empty()) return {};
    first = keys.Of(first);
    second = keys.Of(second);
    if (first == second) return {};
    names.insert({first, second});
    if (second < first) std::swap(first, second);
    pairs.emplace(std::move(first), std::move(second));
    ++machines;
  }
  const std::size_t wanted = names.size() * (names.size() - 1) / 2;
  if (machines != wanted || pairs.size() != wanted) return {};
  return names;
}

// Leaves categories out of the target that no machine names; false, and nothing is left out, where
// a machine names one that the target does not list.
bool LeaveOutUnused(Intake& intake, const Target& target, const LabelKeys& keys,
                    const std::set<std::string>& names) {
  std::set<std::string> listed;
  for (const std::string& category : ListedCategories(target)) listed.insert(keys.Of(category));
  if (listed.empty()) return true;
  if (!std::includes(listed.begin(), listed.end(), names.begin(), names.end())) return false;
  if (listed.size() == names.size()) return true;
  intake.Tell("category-unused", target.data_field);
  const auto is_unused = [&](const DOMElement* value) {
    const auto text = FindAttribute(value, "value");
    return text && !names.contains(keys.Of(*text));
  };
  bool in_field = false;
  for (DOMElement* value : Children(target.data_field, "Value")) {
    if (!IsValid(value)) continue;
    in_field = true;
    if (is_unused(value)) SetAttribute(value, "property", "invalid");
  }
  if (in_field) return true;
  std::vector<DOMElement*> unused;
  for (DOMElement* value : Children(target.target, "TargetValue")) {
    if (is_unused(value)) unused.push_back(value);
  }
  for (DOMElement* value : unused) Remove(value);
  return true;
}

// Machines that name two categories each decide between pairs, whatever the standard's default is.
void InferMethod(Intake& intake) {
  if (Has(intake.Model(), "classificationMethod")) return;
  const Target target = FindTarget(intake);
  if (target.data_field == nullptr) return;
  const LabelKeys keys(target.data_field);
  const std::set<std::string> names = PairedCategories(intake, keys);
  if (names.empty() || !LeaveOutUnused(intake, target, keys, names) || names.size() < 3) return;
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
