#include "host/intake/declared_fields.h"

#include "host/transform/build_dictionary.h"
#include "host/xml/edit.h"
#include "host/xml/elements.h"

namespace svmscore::intake {

namespace {

constexpr const char* kOutputField = "OutputField";

// Whether a model's child comes after the place of its LocalTransformations.
bool FollowsTransformations(const DOMElement* child) {
  const std::string name = NameOf(child);
  return name.ends_with("KernelType") || name == "VectorDictionary" ||
         name == "SupportVectorMachine";
}

}  // namespace

bool IsValid(const DOMElement* value) {
  const WideView property = AttributeView(value, "property");
  return property.data() == nullptr || property == u"valid";
}

DeclaredFields::DeclaredFields(Intake& intake) : intake_(intake) {
  const DOMElement* schema = intake.ModelChild("MiningSchema");
  std::unordered_set<std::string> inputs;
  for (const DOMElement* field : Children(schema, "MiningField")) {
    inputs.insert(Narrow(AttributeView(field, "name")));
  }
  const std::pair<const DOMElement*, const char*> lists[] = {
      {FindChild(intake.Root(), "DataDictionary"), "DataField"},
      {FindChild(intake.Root(), "TransformationDictionary"), "DerivedField"},
      {intake.ModelChild("LocalTransformations"), "DerivedField"},
      {intake.ModelChild("Output"), kOutputField}};
  for (const auto& [list, name] : lists) {
    for (DOMElement* field : Children(list, name)) {
      const std::string text = Narrow(AttributeView(field, "name"));
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

DOMElement* DeclaredFields::Find(const std::string& name) const {
  const auto found = fields_.find(name);
  if (found == fields_.end() || NameOf(found->second) == kOutputField) return nullptr;
  return found->second;
}

DOMElement* DeclaredFields::FindHiding(const std::string& name) const {
  const auto found = hiding_.find(name);
  return found == hiding_.end() ? nullptr : found->second;
}

bool DeclaredFields::Lists(const DOMElement* field, const std::string& value) {
  const auto [found, is_new] = values_.try_emplace(field);
  if (is_new) {
    for (const DOMElement* listed : Children(field, "Value")) {
      if (IsValid(listed)) found->second.insert(Narrow(AttributeView(listed, "value")));
    }
  }
  return found->second.contains(value);
}

std::string DeclaredFields::FreshName(const std::string& wish) {
  std::string name = wish;
  // Many positions ask for the same name.
  for (int& number = tried_.try_emplace(wish, 1).first->second; fields_.contains(name);) {
    name = wish + " (" + std::to_string(++number) + ")";
  }
  return name;
}

DOMElement* DeclaredFields::AddDerived(const std::string& name, const std::string& op_type,
                                       const std::string& data_type) {
  DOMElement* field = AddElement(Transformations(), "DerivedField");
  SetAttribute(field, "name", name);
  SetAttribute(field, "optype", op_type);
  SetAttribute(field, "dataType", data_type);
  fields_[name] = field;
  return field;
}

DOMElement* DeclaredFields::Transformations() {
  if (DOMElement* global = FindChild(intake_.Root(), "TransformationDictionary")) return global;
  if (DOMElement* local = intake_.ModelChild("LocalTransformations")) return local;
  DOMElement* next = FirstElement(intake_.Model());
  while (next != nullptr && !FollowsTransformations(next)) {
    next = NextElement(next);
  }
  DOMElement* made = MakeElement(intake_.Dom(), "LocalTransformations");
  intake_.Model()->insertBefore(made, next);
  return made;
}

}  // namespace svmscore::intake
