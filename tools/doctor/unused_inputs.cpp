// Inputs and derived fields that nothing needs, or that are no inputs.
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
      findings.Add("unused-field", field,
                   fmt::format("nothing that is scored depends on \"{}\"", name));
    }
  }
  for (const Element* field : graph.AllDerived()) {
    const std::string name = AttributeText(field, "name");
    // The file does not hold fields that were added while it was read.
    if (needed.contains(name) || document.document.LineOf(field) == 0) continue;
    findings.Add("unused-derived-field", field,
                 fmt::format("nothing that is scored depends on \"{}\"", name));
  }
  for (const std::string& name : graph.Needed(false)) {
    const Element* data = graph.DataField(name);
    if (data == nullptr || graph.IsActive(name)) continue;
    const Element* mining = graph.MiningField(name);
    std::string why = "and the mining schema does not list it";
    if (mining != nullptr) {
      why = fmt::format("and its usageType is \"{}\"", AttributeText(mining, "usageType"));
    }
    findings.Add("inactive-field", mining != nullptr ? mining : data,
                 fmt::format("vectors need \"{}\", {}", name, why));
  }
}

}  // namespace svmscore::tools
