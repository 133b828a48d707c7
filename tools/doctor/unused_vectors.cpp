// Vectors that no machine uses.
#include <string>
#include <unordered_set>

#include <fmt/format.h>

#include "tools/doctor/checks.h"

namespace svmscore::tools {

void CheckVectorsUsed(const Examined& examined, FindingList& findings) {
  std::unordered_set<std::string> named;
  for (const MachineNumbers& machine : examined.numbers.machines) {
    for (const Element* vector :
         Children(FindChild(machine.element, "SupportVectors"), "SupportVector")) {
      named.insert(AttributeText(vector, "vectorId"));
    }
  }
  for (const VectorInstance& instance : examined.document.vectors.Instances()) {
    if (!instance.dropped.empty() || named.contains(instance.id)) continue;
    findings.Add("unused-vector", instance.element,
                 fmt::format("no machine uses the vector \"{}\"", instance.id));
  }
}

}  // namespace svmscore::tools
