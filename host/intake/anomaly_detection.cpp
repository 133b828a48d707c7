#include "host/intake/anomaly_detection.h"

#include <array>
#include <unordered_map>
#include <unordered_set>

#include "host/xml/attributes.h"
#include "host/xml/edit.h"

namespace svmscore::intake {
namespace {

constexpr std::array kTreatments = {"optype",
                                    "outliers",
                                    "lowValue",
                                    "highValue",
                                    "missingValueReplacement",
                                    "missingValueTreatment",
                                    "invalidValueTreatment",
                                    "invalidValueReplacement"};

std::unordered_map<std::string, DOMElement*> FieldsByName(const DOMElement* list,
                                                          const std::string& kind) {
  std::unordered_map<std::string, DOMElement*> fields;
  for (DOMElement* field : Children(list, kind)) {
    fields.try_emplace(FindAttribute(field, "name").value_or(""), field);
  }
  return fields;
}

// The treatment of a field that the outer schema declares reaches the inner one. False where the
// two disagree.
bool TreatsAlike(const DOMElement* outer, const DOMElement* inner) {
  for (const char* name : kTreatments) {
    const auto theirs = FindAttribute(outer, name);
    const auto ours = FindAttribute(inner, name);
    if (theirs && ours && *theirs != *ours) return false;
  }
  return true;
}

void MergeSchemas(DOMElement* outer, DOMElement* inner) {
  const auto known = FieldsByName(inner, "MiningField");
  for (const auto& [name, field] : FieldsByName(outer, "MiningField")) {
    const auto found = known.find(name);
    if (found == known.end()) continue;
    for (const char* attribute : kTreatments) {
      if (const auto text = FindAttribute(field, attribute)) {
        SetAttribute(found->second, attribute, *text);
      }
    }
    Remove(field);
  }
  MoveChildren(outer, inner);
}

// Of two outputs the outer one is what the document's user asked for; fields that only the inner
// one has are kept before it.
void MergeOutputs(DOMElement* outer, DOMElement* inner) {
  const auto asked = FieldsByName(outer, "OutputField");
  for (const auto& [name, field] : FieldsByName(inner, "OutputField")) {
    if (asked.contains(name)) Remove(field);
  }
  MoveChildren(outer, inner);
}

// Hands the outer model's child to the inner one; `merge` where both have one.
template <typename Merge>
void HandDown(DOMElement* outer, DOMElement* inner, const char* name, const Merge& merge) {
  DOMElement* theirs = FindChild(outer, name);
  if (theirs == nullptr) return;
  DOMElement* ours = FindChild(inner, name);
  if (ours == nullptr) {
    inner->insertBefore(theirs, inner->getFirstChild());
  } else {
    merge(theirs, ours);
  }
}

// What prevents the lift, or nothing.
std::string Obstacle(const DOMElement* outer, const DOMElement* inner) {
  const std::string type = FindAttribute(outer, "algorithmType").value_or("ocsvm");
  if (type != "ocsvm") return "the algorithmType " + type;
  if (FindNext(inner, "SupportVectorMachineModel") != nullptr) return "a second model";
  if (FindChild(outer, "Targets") != nullptr && FindChild(inner, "Targets") != nullptr) {
    return "Targets on both models";
  }
  const auto fields = FieldsByName(FindChild(inner, "MiningSchema"), "MiningField");
  for (const DOMElement* field : Children(FindChild(outer, "MiningSchema"), "MiningField")) {
    const std::string name = FindAttribute(field, "name").value_or("");
    const auto found = fields.find(name);
    if (found != fields.end() && !TreatsAlike(field, found->second)) {
      return "two different treatments of the field " + name;
    }
  }
  return {};
}

}  // namespace

bool LiftModel(Intake& intake, DOMElement* outer, DOMElement* inner) {
  const std::string obstacle = Obstacle(outer, inner);
  if (!obstacle.empty()) {
    intake.Refuse(outer, code::kUnsupported, obstacle, NameOf(outer));
    return false;
  }
  intake.Tell("anomaly-detection-lifted", outer);
  const auto append = [](DOMElement* theirs, DOMElement* ours) { MoveChildren(theirs, ours); };
  const auto replace = [](DOMElement* theirs, DOMElement* ours) {
    ours->getParentNode()->replaceChild(theirs, ours);
  };
  HandDown(outer, inner, "ModelVerification", replace);
  HandDown(outer, inner, "LocalTransformations", append);
  HandDown(outer, inner, "Targets", append);
  HandDown(outer, inner, "Output", MergeOutputs);
  HandDown(outer, inner, "MiningSchema", MergeSchemas);
  const auto scorable = FindAttribute(outer, "isScorable");
  if (scorable) SetAttribute(inner, "isScorable", *scorable);
  outer->getParentNode()->replaceChild(inner, outer);
  return true;
}

}  // namespace svmscore::intake
