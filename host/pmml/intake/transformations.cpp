// A translator reads the document's derived fields or the model's, never both: here they become one
// list.
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "host/pmml/elements.h"
#include "host/pmml/intake/edit.h"
#include "host/pmml/intake/steps.h"
#include "host/tags.h"

namespace svmscore::intake {
namespace {

namespace tags = MCZandor_850::PMMLModelTags;

constexpr const char* kDerived = "DerivedField";

constexpr StepKind kMerged{
    "transformations-merged",
    "the derived fields of the model are computed together with those of the document"};
constexpr StepKind kHidden{
    "derived-field-hidden",
    "a derived field of the model takes the place of the document's one of the same name"};

// Moves the content of `from` behind that of `to` and removes `from`.
void Append(DOMElement* from, DOMElement* to) {
  MoveChildren(from, to);
  Remove(from);
}

// The holders of one name become one; null where there is none.
DOMElement* OnlyOne(Intake& intake, DOMElement* parent, const std::string& name) {
  DOMElement* first = FindChild(parent, name);
  while (DOMElement* further = FindNext(first, name)) {
    intake.Change(kMerged, further);
    Append(further, first);
  }
  return first;
}

}  // namespace

void MergeTransformations(Intake& intake) {
  DOMElement* global = OnlyOne(intake, intake.Root(), tags::XML_ELE_TRANSFORMATION);
  DOMElement* local = OnlyOne(intake, intake.Model(), tags::XML_ELE_LOCALTRANSFORMATIONS);
  if (global == nullptr || FindChild(local, kDerived) == nullptr) return;
  intake.Change(kMerged, local);
  std::unordered_map<std::string, DOMElement*> global_fields;
  for (DOMElement* field : Children(global, kDerived)) {
    if (const auto name = FindAttribute(field, tags::XML_ATT_NAME)) global_fields[*name] = field;
  }
  std::unordered_set<std::string> declared;
  for (const DOMElement* field :
       Children(FindChild(intake.Root(), tags::XML_ELE_DATADICTIONARY), "DataField")) {
    declared.insert(FindAttribute(field, tags::XML_ATT_NAME).value_or(""));
  }
  for (DOMElement* field : Children(local, kDerived)) {
    const std::string name = FindAttribute(field, tags::XML_ATT_NAME).value_or("");
    // Among the document's own it would give way to the input.
    if (declared.contains(name)) SetAttribute(field, "x-scope", "local");
    const auto found = global_fields.find(name);
    if (found == global_fields.end()) continue;
    intake.Change(kHidden, field);
    Remove(found->second);
    global_fields.erase(found);
  }
  Append(local, global);
}

}  // namespace svmscore::intake
