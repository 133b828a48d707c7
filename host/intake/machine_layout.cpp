// How the machines of a classification divide the categories among them.
#include <algorithm>
#include <set>
#include <string>
#include <unordered_set>
#include <utility>

#include "host/intake/steps.h"
#include "host/intake/target_categories.h"
#include "host/output/scheme.h"
#include "host/xml/attributes.h"

namespace svmscore::intake {
namespace {

using output::Method;
using output::Percentages;
using output::Scheme;

struct NamedMachine {
  const DOMElement* element;
  std::string target;
  std::string alternate;

  bool NamesTwo() const { return !target.empty() && !alternate.empty() && target != alternate; }
};

std::vector<NamedMachine> MachinesOf(const Intake& intake) {
  std::vector<NamedMachine> machines;
  for (const DOMElement* machine : Children(intake.Model(), "SupportVectorMachine")) {
    machines.push_back({machine, AttributeText(machine, "targetCategory"),
                        AttributeText(machine, "alternateTargetCategory")});
  }
  return machines;
}

// Categories of equal value are one.
std::size_t CountCategories(const Intake& intake) {
  const Target target = FindTarget(intake);
  const LabelKeys keys(target.data_field);
  std::unordered_set<std::string> categories;
  for (const std::string& category : ListedCategories(target)) {
    categories.insert(keys.Of(category));
  }
  return categories.size();
}

// Whether the machines are one for each pair of the categories that they name, three at least.
bool FormPairs(const std::vector<NamedMachine>& machines) {
  std::set<std::string> names;
  std::set<std::pair<std::string, std::string>> pairs;
  for (const NamedMachine& machine : machines) {
    if (!machine.NamesTwo()) return false;
    names.insert({machine.target, machine.alternate});
    if (!pairs.insert(std::minmax(machine.target, machine.alternate)).second) return false;
  }
  return names.size() > 2 && pairs.size() == names.size() * (names.size() - 1) / 2;
}

void TellOf(Intake& intake, Kind kind, const DOMElement* at, const std::string& what) {
  intake.Tell(kind, at, what, NameOf(at));
}

void CheckOneAgainstOne(Intake& intake, const std::vector<NamedMachine>& machines) {
  std::set<std::pair<std::string, std::string>> pairs;
  for (const NamedMachine& machine : machines) {
    if (!machine.NamesTwo()) continue;
    if (pairs.insert(std::minmax(machine.target, machine.alternate)).second) continue;
    TellOf(intake, "pair-repeated", machine.element,
           "a second decision between \"" + machine.target + "\" and \"" + machine.alternate + '"');
  }
}

void CheckOneAgainstAll(Intake& intake, const std::vector<NamedMachine>& machines,
                        std::size_t categories) {
  if (FormPairs(machines)) {
    // An unknown method was already reported to count as one-against-all.
    const std::string method = AttributeText(intake.Model(), "classificationMethod");
    if (!method.empty() && method != "OneAgainstAll") return;
    TellOf(intake, "method-contradicts-machines", intake.Model(),
           "one-against-all, with " + std::to_string(machines.size()) +
               " machines that pair every category with every other,");
    return;
  }
  std::set<std::string> targets;
  for (const NamedMachine& machine : machines) {
    if (targets.insert(machine.target).second) continue;
    TellOf(intake, "target-repeated", machine.element,
           "a second machine for \"" + machine.target + '"');
  }
  if (machines.size() == categories) return;
  TellOf(intake, "machine-count", intake.Model(),
         std::to_string(machines.size()) + " machines for " + std::to_string(categories) +
             " categories, where one-against-all has one for each,");
}

// Of two categories the model's own results hold the percentages in the order response,
// nonResponse.
void CheckResponse(Intake& intake, const NamedMachine& machine) {
  const DOMElement* pair = FindChild(VendorExtension(machine.element), "ResponseCategory");
  const std::vector<std::string> categories = ListedCategories(FindTarget(intake));
  const std::string response = AttributeText(pair, "response");
  if (response != categories.back() || response == categories.front()) return;
  intake.Tell("percentages-exchanged", pair,
              "the response \"" + response +
                  "\" is the second category of the target: the model's results hold its "
                  "percentage as that of \"" +
                  categories.front() +
                  "\", and the other way round; the columns of this program put them right");
}

}  // namespace

void CheckLayout(Intake& intake) {
  if (!intake.IsClassification()) return;
  const std::vector<NamedMachine> machines = MachinesOf(intake);
  const std::size_t categories = CountCategories(intake);
  // A translator says that it lacks them.
  if (machines.empty() || categories == 0) return;
  for (const NamedMachine& machine : machines) {
    if (machine.target.empty() || machine.target != machine.alternate) continue;
    TellOf(intake, "same-category-twice", machine.element,
           '"' + machine.target + "\" as both categories");
  }
  const Scheme scheme = output::SchemeOf(intake.Model(), categories);
  if (scheme.method == Method::kBinary && scheme.percentages == Percentages::kProbabilities) {
    CheckResponse(intake, machines.back());
  } else if (scheme.method == Method::kOneAgainstAll) {
    CheckOneAgainstAll(intake, machines, categories);
  } else if (scheme.method == Method::kOneAgainstOne) {
    // Probabilities go by the position of the machines, whatever categories these vote for.
    if (scheme.percentages != Percentages::kProbabilities) {
      return CheckOneAgainstOne(intake, machines);
    }
    if (AttributeText(intake.Model(), "classificationMethod") == "OneAgainstOne") return;
    TellOf(intake, "method-not-used", intake.Model(),
           "machines with an Extension, which makes them one-against-one,");
  }
}

}  // namespace svmscore::intake
