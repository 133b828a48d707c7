// Lengths of vectors, counts, and vectors that nothing uses.
#include <unordered_set>

#include <fmt/format.h>

#include "tools/describe/left_out.h"
#include "tools/doctor/checks.h"

namespace svmscore::tools {
namespace {

void CheckUnused(const Examined& examined, FindingList& findings) {
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
                 fmt::format("no machine names the vector \"{}\"", instance.id));
  }
}

}  // namespace

void CheckCounts(const Examined& examined, FindingList& findings) {
  const Element* dictionary = FindChild(examined.document.root, "DataDictionary");
  std::size_t fields = 0;
  for (const Element* field : Children(dictionary, "DataField")) {
    // A field that was added while the document was read is not among those that it counts.
    if (examined.document.document.LineOf(field) > 0) ++fields;
  }
  CheckCount(dictionary, "numberOfFields", fields, "DataField elements", findings);
  CheckUnused(examined, findings);
}

}  // namespace svmscore::tools
