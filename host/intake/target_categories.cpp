// A translator needs a target, and for a classification its categories; documents may leave both to
// be inferred.
#include "host/intake/target_categories.h"

#include <unordered_set>

#include "host/intake/declared_fields.h"
#include "host/intake/steps.h"
#include "host/text/field_text.h"
#include "host/text/number_text.h"
#include "host/xml/attributes.h"
#include "host/xml/edit.h"

namespace svmscore::intake {
namespace {

bool NamesTarget(const DOMElement* mining_field) {
  const std::string usage = FindAttribute(mining_field, "usageType").value_or("");
  return usage == "predicted" || usage == "target";
}

DOMElement* FindNamed(const DOMElement* parent, const std::string& element,
                      const std::string& attribute, const std::optional<std::string>& name) {
  for (DOMElement* child : Children(parent, element)) {
    if (FindAttribute(child, attribute) == name) return child;
  }
  return nullptr;
}

// A field for the result of a regression that names no target, as one-class models do.
void AddTarget(Intake& intake) {
  DOMElement* schema = intake.ModelChild("MiningSchema");
  DOMElement* dictionary = FindChild(intake.Root(), "DataDictionary");
  if (schema == nullptr || dictionary == nullptr) return;
  intake.Tell("target-added", schema);
  const std::string name = DeclaredFields(intake).FreshName("prediction");
  DOMElement* field = AddElement(dictionary, "DataField");
  SetAttribute(field, "name", name);
  SetAttribute(field, "optype", "continuous");
  SetAttribute(field, "dataType", "double");
  DOMElement* mining_field = AddElement(schema, "MiningField");
  SetAttribute(mining_field, "name", name);
  SetAttribute(mining_field, "usageType", "target");
}

// The last of the three elements that states an operation type decides.
void MakeCategorical(Intake& intake, const Target& target) {
  const DOMElement* deciding = nullptr;
  for (const DOMElement* element : {target.data_field, target.mining_field, target.target}) {
    if (AttributeView(element, "optype").data() != nullptr) deciding = element;
  }
  if (AttributeView(deciding, "optype") != u"continuous") return;
  intake.Tell("target-categorical", deciding);
  if (AttributeView(target.data_field, "dataType").data() == nullptr) {
    SetAttribute(target.data_field, "dataType", "double");
  }
  for (DOMElement* element : {target.data_field, target.mining_field, target.target}) {
    if (AttributeView(element, "optype") == u"continuous") {
      SetAttribute(element, "optype", "categorical");
    }
  }
}

void ListCategories(Intake& intake, const Target& target) {
  if (!ListedCategories(target).empty()) return;
  const LabelKeys keys(target.data_field);
  std::unordered_set<std::string> known;
  std::vector<std::string> labels;
  for (DOMElement* machine : Children(intake.Model(), "SupportVectorMachine")) {
    for (const LabelPlace& place : LabelsOf(machine)) {
      // A translator says that the target has no categories.
      if (!keys.CanBe(place.label)) return;
      if (known.insert(keys.Of(place.label)).second) labels.push_back(place.label);
    }
  }
  if (labels.empty()) return;
  intake.Tell("target-categories", target.data_field);
  for (const std::string& label : labels) {
    SetAttribute(AddElement(target.data_field, "Value"), "value", label);
  }
}

}  // namespace

Target FindTarget(const Intake& intake) {
  Target target;
  const DOMElement* dictionary = FindChild(intake.Root(), "DataDictionary");
  for (DOMElement* field : Children(intake.ModelChild("MiningSchema"), "MiningField")) {
    if (!NamesTarget(field)) continue;
    const auto name = FindAttribute(field, "name");
    target.mining_field = field;
    target.data_field = FindNamed(dictionary, "DataField", "name", name);
    target.target = FindNamed(intake.ModelChild("Targets"), "Target", "field", name);
    if (target.data_field != nullptr) break;
  }
  return target;
}

LabelKeys::LabelKeys(const DOMElement* data_field) {
  const auto type = ParseDataType(FindAttribute(data_field, "dataType").value_or("string"));
  if (type && IsNumberStored(type->data)) number_type_ = type;
}

bool LabelKeys::CanBe(const std::string& label) const {
  return !number_type_ || KeyFromFieldText(label, *number_type_);
}

std::string LabelKeys::Of(const std::string& label) const {
  const auto number = number_type_ ? KeyFromFieldText(label, *number_type_) : std::nullopt;
  if (!number) return label;
  return number->rest == 0 ? FormatNumber(number->number) : std::to_string(WholeOf(*number));
}

std::vector<std::string> ListedCategories(const Target& target) {
  std::vector<std::string> categories;
  for (const DOMElement* value : Children(target.data_field, "Value")) {
    if (IsValid(value)) categories.push_back(Narrow(AttributeView(value, "value")));
  }
  if (!categories.empty()) return categories;
  for (const DOMElement* value : Children(target.target, "TargetValue")) {
    if (auto text = FindAttribute(value, "value")) categories.push_back(*text);
  }
  return categories;
}

bool FitsPairs(const Intake& intake) {
  const Target target = FindTarget(intake);
  const LabelKeys keys(target.data_field);
  std::unordered_set<std::string> known;
  for (const std::string& category : ListedCategories(target)) known.insert(keys.Of(category));
  const bool listed = !known.empty();
  std::size_t machines = 0;
  for (DOMElement* machine : Children(intake.Model(), "SupportVectorMachine")) {
    ++machines;
    if (listed) continue;
    for (const LabelPlace& place : LabelsOf(machine)) known.insert(keys.Of(place.label));
  }
  return known.size() < 3 || machines == known.size() * (known.size() - 1) / 2;
}

void CompleteTarget(Intake& intake) {
  const Target target = FindTarget(intake);
  if (target.mining_field == nullptr && !intake.IsClassification()) AddTarget(intake);
  if (target.data_field == nullptr || !intake.IsClassification()) return;
  MakeCategorical(intake, target);
  ListCategories(intake, target);
}

}  // namespace svmscore::intake
