// Which transformations of its document a model needs.
#include "host/transform/build_dictionary.h"

namespace svmscore::transform {
namespace {

constexpr std::string_view kModel = "SupportVectorMachineModel";

// The first model of the document, even if it is inside another model element.
const Element* FindModel(const Element* root) {
  if (const Element* model = FindChild(root, kModel)) return model;
  for (const Element* child = FirstContent(root); child != nullptr; child = NextContent(child)) {
    if (const Element* model = FindChild(child, kModel)) return model;
  }
  return nullptr;
}

// The element after `element` within `root`, in document order, without extensions.
const Element* NextWithin(const Element* element, const Element* root) {
  if (const Element* child = FirstContent(element)) return child;
  while (element != root) {
    if (const Element* next = NextContent(element)) return next;
    element = static_cast<const Element*>(element->getParentNode());
  }
  return nullptr;
}

void AddNames(const Element* root, NeededByModel& needed) {
  for (const Element* at = root; at != nullptr; at = NextWithin(at, root)) {
    for (const char* attribute : {"field", "textField"}) {
      if (auto name = FindAttribute(at, attribute)) needed.names.insert(*std::move(name));
    }
    if (!IsNamed(at, "CategoricalPredictor")) continue;
    auto name = FindAttribute(at, "name");
    if (!name) continue;
    needed.names.insert(*name);
    needed.categories.emplace_back(*std::move(name), FindAttribute(at, "value").value_or(""));
  }
}

}  // namespace

NeededByModel FindNeededByModel(const xercesc::DOMDocument* document) {
  NeededByModel needed;
  const Element* root = document == nullptr ? nullptr : document->getDocumentElement();
  needed.model = root == nullptr ? nullptr : FindModel(root);
  if (needed.model == nullptr) return needed;
  for (const Element* child = FirstContent(needed.model); child != nullptr;
       child = NextContent(child)) {
    if (IsNamed(child, "Output")) AddNames(child, needed);
    if (IsNamed(child, "VectorDictionary")) {
      if (const Element* fields = FindChild(child, "VectorFields")) AddNames(fields, needed);
    }
    if (!IsNamed(child, "MiningSchema")) continue;
    needed.has_schema = true;
    for (const Element* field = FirstContent(child); field != nullptr; field = NextContent(field)) {
      if (auto name = FindAttribute(field, "name")) needed.schema.insert(*std::move(name));
    }
  }
  return needed;
}

}  // namespace svmscore::transform
