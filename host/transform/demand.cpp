// What a model asks of the transformations of its document.
#include "host/transform/build.h"

namespace svmscore::transform {
namespace {

constexpr std::string_view kModel = "SupportVectorMachineModel";

// The first model of the document, also where it stands inside another model element.
const Element* FindModel(const Element* root) {
  if (const Element* model = FindChild(root, kModel)) return model;
  for (const Element* child = FirstContent(root); child != nullptr; child = NextContent(child)) {
    if (const Element* model = FindChild(child, kModel)) return model;
  }
  return nullptr;
}

// The element after `element` within `root`, in document order, extensions left out.
const Element* NextWithin(const Element* element, const Element* root) {
  if (const Element* child = FirstContent(element)) return child;
  while (element != root) {
    if (const Element* next = NextContent(element)) return next;
    element = static_cast<const Element*>(element->getParentNode());
  }
  return nullptr;
}

void AddNames(const Element* root, Demand& demand) {
  for (const Element* at = root; at != nullptr; at = NextWithin(at, root)) {
    for (const char* attribute : {"field", "textField"}) {
      if (auto name = FindAttribute(at, attribute)) demand.names.insert(*std::move(name));
    }
    if (!IsNamed(at, "CategoricalPredictor")) continue;
    auto name = FindAttribute(at, "name");
    if (!name) continue;
    demand.names.insert(*name);
    demand.categories.emplace_back(*std::move(name), FindAttribute(at, "value").value_or(""));
  }
}

}  // namespace

Demand DemandOf(const xercesc::DOMDocument* document) {
  Demand demand;
  const Element* root = document == nullptr ? nullptr : document->getDocumentElement();
  demand.model = root == nullptr ? nullptr : FindModel(root);
  if (demand.model == nullptr) return demand;
  for (const Element* child = FirstContent(demand.model); child != nullptr;
       child = NextContent(child)) {
    if (IsNamed(child, "Output")) AddNames(child, demand);
    if (IsNamed(child, "VectorDictionary")) {
      if (const Element* fields = FindChild(child, "VectorFields")) AddNames(fields, demand);
    }
    if (!IsNamed(child, "MiningSchema")) continue;
    demand.has_schema = true;
    for (const Element* field = FirstContent(child); field != nullptr; field = NextContent(field)) {
      if (auto name = FindAttribute(field, "name")) demand.schema.insert(*std::move(name));
    }
  }
  return demand;
}

}  // namespace svmscore::transform
