// Inputs and derived fields that no score needs, and fields that are read without being inputs.
#include <fmt/format.h>

#include "host/intake/field_graph.h"
#include "tools/doctor/checks.h"

namespace svmscore::tools {

void CheckNeeds(const Examined& examined, FindingList& findings) {
  const Inspected& document = examined.document;
  if (document.vectors.Fields().empty()) return;
  const intake::FieldGraph graph(document.root, document.model);
  const auto needed = graph.Needed(true);
  for (const Element* field : graph.AllMining()) {
    const std::string name = AttributeText(field, "name");
    if (graph.IsActive(name) && graph.DataField(name) != nullptr && !needed.contains(name)) {
      findings.Add("unused-field", field, fmt::format("no score depends on \"{}\"", name));
    }
  }
  for (const Element* field : graph.AllDerived()) {
    const std::string name = AttributeText(field, "name");
    // The file does not hold fields that were added while it was read.
    if (needed.contains(name) || document.document.LineOf(field) == 0) continue;
    findings.Add("unused-derived-field", field, fmt::format("no score depends on \"{}\"", name));
  }
  for (const std::string& name : graph.Needed(false)) {
    const Element* mining = graph.MiningField(name);
    if (graph.DataField(name) == nullptr || mining == nullptr || graph.IsActive(name)) continue;
    findings.Add("inactive-field", mining,
                 fmt::format("vectors need \"{}\", and its usageType is \"{}\"", name,
                             AttributeText(mining, "usageType")));
  }
}

}  // namespace svmscore::tools
