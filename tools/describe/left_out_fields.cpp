// Fields: the mining schema, derived fields, and the fields that vectors are made of.
#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "tools/describe/left_out.h"

namespace svmscore::tools {
namespace {

constexpr std::array kUsageTypes = {"active", "predicted", "target",          "supplementary",
                                    "group",  "order",     "frequencyWeight", "analysisWeight"};

void CheckMiningSchema(const Inspected& inspected, FindingList& findings) {
  for (const Element* field : Children(FindChild(inspected.model, "MiningSchema"), "MiningField")) {
    const std::string name = AttributeText(field, "name");
    if (!inspected.fields.contains(name)) {
      findings.Add(
          "unknown-mining-field", field,
          fmt::format("\"{}\" names no field of the DataDictionary: it is not read", name));
      continue;
    }
    const auto usage = FindAttribute(field, "usageType");
    if (!usage) continue;
    if (std::find(kUsageTypes.begin(), kUsageTypes.end(), *usage) == kUsageTypes.end()) {
      findings.Add("unknown-usage", field,
                   fmt::format("the usageType \"{}\" of \"{}\" is not known: the field is no input",
                               *usage, name));
    } else if ((*usage == "target" || *usage == "predicted") && name != inspected.target) {
      findings.Add("second-target", field,
                   fmt::format("\"{}\" is not predicted: the model's target is \"{}\"", name,
                               inspected.target));
    }
  }
}

void CheckTransformations(const Inspected& inspected, FindingList& findings) {
  const Element* global = FindChild(inspected.root, "TransformationDictionary");
  const Element* local = FindChild(inspected.model, "LocalTransformations");
  const std::string version = AttributeText(inspected.root, "version");
  if (version.starts_with('3') || version.starts_with('4')) return;
  for (const Element* element : {global, local}) {
    if (element == nullptr) continue;
    findings.Add("transformations-off", element,
                 fmt::format("its fields are not computed: the document's version is \"{}\", and "
                             "only versions 3 and 4 have derived fields",
                             version));
  }
}

void CheckVectorFields(const Inspected& inspected, FindingList& findings) {
  const Element* list = FindChild(FindChild(inspected.model, "VectorDictionary"), "VectorFields");
  CheckCount(list, "numberOfFields", inspected.vectors.Fields().size(), "vector fields", findings);
  for (const Element* field : ChildElements(list)) {
    const std::string kind = NameOf(field);
    if (kind != "FieldRef" && kind != "CategoricalPredictor" && kind != "Extension") {
      findings.Add("unknown-vector-field", field,
                   "not read: vector fields are FieldRef and CategoricalPredictor, so the vectors' "
                   "indices may mean other fields than the producer's");
    }
  }
}

}  // namespace

void CheckFields(const Inspected& inspected, FindingList& findings) {
  CheckMiningSchema(inspected, findings);
  CheckTransformations(inspected, findings);
  CheckVectorFields(inspected, findings);
}

}  // namespace svmscore::tools
