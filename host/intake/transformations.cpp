// A translator reads the document's derived fields or the model's, never both: here they become one
// list.
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "host/intake/steps.h"
#include "host/xml/attributes.h"
#include "host/xml/edit.h"

namespace svmscore::intake {
namespace {

constexpr const char* kDerived = "DerivedField";

// Moves the content of `from` behind that of `to` and removes `from`.
void Append(DOMElement* from, DOMElement* to) {
  MoveChildren(from, to);
  Remove(from);
}

// Merges the containers of that name into one; null if there is none.
DOMElement* OnlyOne(Intake& intake, DOMElement* parent, const std::string& name) {
  DOMElement* first = FindChild(parent, name);
  while (DOMElement* further = FindNext(first, name)) {
    intake.Tell("transformations-merged", further);
    Append(further, first);
  }
  return first;
}

}  // namespace

void MergeTransformations(Intake& intake) {
  DOMElement* global = OnlyOne(intake, intake.Root(), "TransformationDictionary");
  DOMElement* local = OnlyOne(intake, intake.Model(), "LocalTransformations");
  if (FindChild(global, kDerived) != nullptr || FindChild(local, kDerived) != nullptr) {
    AllowDerivedFields(intake);
  }
  if (global == nullptr || FindChild(local, kDerived) == nullptr) return;
  intake.Tell("transformations-merged", local);
  std::unordered_map<std::string, DOMElement*> global_fields;
  for (DOMElement* field : Children(global, kDerived)) {
    if (const auto name = FindAttribute(field, "name")) global_fields[*name] = field;
  }
  std::unordered_set<std::string> declared;
  for (const DOMElement* field :
       Children(FindChild(intake.Root(), "DataDictionary"), "DataField")) {
    declared.insert(FindAttribute(field, "name").value_or(""));
  }
  for (DOMElement* field : Children(local, kDerived)) {
    const std::string name = FindAttribute(field, "name").value_or("");
    // In the document's list the input would take precedence over it.
    if (declared.contains(name)) SetAttribute(field, "x-scope", "local");
    const auto found = global_fields.find(name);
    if (found == global_fields.end()) continue;
    intake.Tell("derived-field-hidden", field, name, kDerived);
    Remove(found->second);
    global_fields.erase(found);
  }
  Append(local, global);
}

}  // namespace svmscore::intake
