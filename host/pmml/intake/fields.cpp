#include "host/pmml/intake/fields.h"

#include "host/pmml/elements.h"
#include "host/pmml/intake/edit.h"
#include "host/tags.h"
#include "host/transform/build.h"
#include "host/translator.h"

namespace svmscore::intake {

namespace tags = MCZandor_850::PMMLModelTags;
using MCZandor_850::BaseTranslator;

namespace {

constexpr const char* kOutputField = "OutputField";

// Whether a model's child stands behind the place of its LocalTransformations.
bool FollowsTransformations(const DOMElement* child) {
  const std::string name = NameOf(child);
  return name.ends_with("KernelType") || name == tags::XML_ELE_SVM_VECTORDICTION ||
         name == tags::XML_ELE_SVM_SVM;
}

}  // namespace

bool IsValid(const DOMElement* value) {
  const WideView property = AttributeView(value, u"property");
  return property.data() == nullptr || property == u"valid";
}

Fields::Fields(Intake& intake) : intake_(intake) {
  const DOMElement* schema = intake.ModelChild(tags::XML_ELE_MININGSCHEMA);
  std::unordered_set<std::string> inputs;
  for (const DOMElement* field : Children(schema, tags::XML_ELE_MININGFIELD)) {
    inputs.insert(Narrow(AttributeView(field, u"name")));
  }
  const std::pair<const DOMElement*, const char*> lists[] = {
      {FindChild(intake.Root(), tags::XML_ELE_DATADICTIONARY), "DataField"},
      {FindChild(intake.Root(), tags::XML_ELE_TRANSFORMATION), "DerivedField"},
      {intake.ModelChild(tags::XML_ELE_LOCALTRANSFORMATIONS), "DerivedField"},
      {intake.ModelChild("Output"), kOutputField}};
  for (const auto& [list, name] : lists) {
    for (DOMElement* field : Children(list, name)) {
      const std::string text = Narrow(AttributeView(field, u"name"));
      const auto [known, is_new] = fields_.try_emplace(text, field);
      const bool over_input =
          !is_new && NameOf(known->second) == "DataField" && NameOf(field) == "DerivedField";
      if (!over_input) continue;
      if (transform::IsLocal(field) || (schema != nullptr && !inputs.contains(text))) {
        hiding_.emplace(text, field);
      }
    }
  }
}

DOMElement* Fields::Find(const std::string& name) const {
  const auto found = fields_.find(name);
  if (found == fields_.end() || NameOf(found->second) == kOutputField) return nullptr;
  return found->second;
}

DOMElement* Fields::FindHiding(const std::string& name) const {
  const auto found = hiding_.find(name);
  return found == hiding_.end() ? nullptr : found->second;
}

bool Fields::Lists(const DOMElement* field, const std::string& value) {
  const auto [found, is_new] = values_.try_emplace(field);
  if (is_new) {
    for (const DOMElement* listed : Children(field, "Value")) {
      if (IsValid(listed)) found->second.insert(Narrow(AttributeView(listed, u"value")));
    }
  }
  return found->second.contains(value);
}

std::string Fields::FreshName(const std::string& wish) {
  std::string name = wish;
  // Many positions have the same wish.
  for (int& number = tried_.try_emplace(wish, 1).first->second; fields_.contains(name);) {
    name = wish + " (" + std::to_string(++number) + ")";
  }
  return name;
}

DOMElement* Fields::AddDerived(const std::string& name, const std::string& op_type,
                               const std::string& data_type) {
  DOMElement* field = AddElement(Transformations(), "DerivedField");
  SetAttribute(field, "name", name);
  SetAttribute(field, "optype", op_type);
  SetAttribute(field, "dataType", data_type);
  fields_[name] = field;
  return field;
}

DOMElement* Fields::Transformations() {
  if (DOMElement* global = FindChild(intake_.Root(), tags::XML_ELE_TRANSFORMATION)) return global;
  if (DOMElement* local = intake_.ModelChild(tags::XML_ELE_LOCALTRANSFORMATIONS)) return local;
  DOMElement* next = BaseTranslator::GetFirstChildElt(intake_.Model());
  while (next != nullptr && !FollowsTransformations(next)) {
    next = BaseTranslator::GetNextSiblingElt(next);
  }
  DOMElement* made = MakeElement(intake_.Dom(), tags::XML_ELE_LOCALTRANSFORMATIONS);
  intake_.Model()->insertBefore(made, next);
  return made;
}

}  // namespace svmscore::intake
