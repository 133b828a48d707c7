// A translator compares the categories that machines name with those of the target letter by
// letter; documents mean values of the target's type.
#include <unordered_map>

#include "host/intake/steps.h"
#include "host/intake/target_categories.h"
#include "host/xml/attributes.h"
#include "host/xml/edit.h"

namespace svmscore::intake {
namespace {

void AddLabel(DOMElement* element, const std::string& attribute, std::vector<LabelPlace>& places) {
  const auto label = FindAttribute(element, attribute);
  if (label && !label->empty()) places.push_back({element, attribute, *label});
}

// Names the second category of a lone machine that names the first.
void NameSecond(Intake& intake, DOMElement* machine, const std::vector<std::string>& categories) {
  const auto first = FindAttribute(machine, "targetCategory");
  const auto second = FindAttribute(machine, "alternateTargetCategory");
  if (categories.size() != 2 || !first || (second && !second->empty()) ||
      VendorExtension(machine) != nullptr) {
    return;
  }
  if (*first != categories[0] && *first != categories[1]) return;
  intake.Tell("second-category", machine);
  SetAttribute(machine, "alternateTargetCategory",
               *first == categories[0] ? categories[1] : categories[0]);
}

}  // namespace

DOMElement* VendorExtension(const DOMElement* machine) {
  // Only the first one counts.
  DOMElement* extension = FindChild(machine, "Extension");
  const bool is_vendor = FindAttribute(extension, "extender") == "svmscore";
  return is_vendor ? extension : nullptr;
}

std::vector<LabelPlace> LabelsOf(DOMElement* machine) {
  std::vector<LabelPlace> places;
  AddLabel(machine, "targetCategory", places);
  AddLabel(machine, "alternateTargetCategory", places);
  DOMElement* response = FindChild(VendorExtension(machine), "ResponseCategory");
  AddLabel(response, "response", places);
  AddLabel(response, "nonResponse", places);
  return places;
}

void MatchLabels(Intake& intake) {
  if (!intake.IsClassification()) return;
  const Target target = FindTarget(intake);
  // A translator says that there is no target.
  if (target.data_field == nullptr) return;
  const LabelKeys keys(target.data_field);
  std::unordered_map<std::string, std::string> category_of;  // by key
  std::vector<std::string> categories;
  for (const std::string& category : ListedCategories(target)) {
    if (category_of.try_emplace(keys.Of(category), category).second) {
      categories.push_back(category);
    }
  }
  std::size_t machines = 0;
  for (DOMElement* machine : Children(intake.Model(), "SupportVectorMachine")) {
    ++machines;
    for (const LabelPlace& place : LabelsOf(machine)) {
      const auto found = category_of.find(keys.Of(place.label));
      if (found == category_of.end()) {
        intake.TellNearName(place.label, categories, "unknown-category", place.element, place.label,
                            place.attribute, NameOf(place.element));
        continue;
      }
      if (found->second == place.label) continue;
      intake.Tell("category-spelling", place.element);
      SetAttribute(place.element, place.attribute, found->second);
    }
  }
  if (machines == 1) {
    NameSecond(intake, intake.ModelChild("SupportVectorMachine"), categories);
  }
}

}  // namespace svmscore::intake
