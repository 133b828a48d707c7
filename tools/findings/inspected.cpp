#include "tools/findings/inspected.h"

namespace svmscore::tools {
namespace {

Inspected Declared(const PmmlDocument& document) {
  const Element* model = FindModelElement(document.Dom());
  return {document,
          document.Dom()->getDocumentElement(),
          model,
          VectorIndex(model),
          AttributeText(model, "functionName") == "classification",
          {},
          {},
          {},
          nullptr};
}

bool IsValidValue(const Element* value) {
  const std::string property = AttributeText(value, "property");
  return property.empty() || property == "valid";
}

}  // namespace

Inspected Inspect(const LoadedModel& loaded) {
  Inspected inspected = Declared(loaded.document);
  const auto& target = *loaded.model->GetTargetVar();
  inspected.target = target.GetName();
  for (const auto* category : target.GetCategories()) {
    inspected.categories.push_back(category->GetText());
  }
  if (const auto* dictionary = loaded.model->GetDictionary()) {
    for (const auto* var : dictionary->GetVariables()) inspected.fields.insert(var->GetName());
  }
  inspected.output = loaded.output.get();
  return inspected;
}

Inspected Inspect(const PmmlDocument& document) {
  Inspected inspected = Declared(document);
  for (const Element* field : Children(FindChild(inspected.model, "MiningSchema"), "MiningField")) {
    const std::string usage = AttributeText(field, "usageType");
    if (!inspected.target.empty() || (usage != "target" && usage != "predicted")) continue;
    inspected.target = AttributeText(field, "name");
  }
  for (const Element* field : Children(FindChild(inspected.root, "DataDictionary"), "DataField")) {
    const std::string name = AttributeText(field, "name");
    inspected.fields.insert(name);
    if (name != inspected.target) continue;
    for (const Element* value : Children(field, "Value")) {
      if (IsValidValue(value)) inspected.categories.push_back(AttributeText(value, "value"));
    }
  }
  return inspected;
}

}  // namespace svmscore::tools
