// Lengths of vectors, counts, and vectors that nothing uses.
#include <unordered_set>

#include <fmt/format.h>

#include "tools/describe/left_out.h"
#include "tools/doctor/checks.h"

namespace svmscore::tools {
namespace {

// Arrays that could be made readable are sparse; one that is still dense did not fit.
void CheckLength(const Element* instance, std::size_t fields, FindingList& findings) {
  for (const Element* array : ChildElements(instance)) {
    const std::string name = NameOf(array);
    if (name == "REAL-SparseArray") {
      const std::size_t indices = TokensOf(FindChild(array, "Indices")).size();
      const std::size_t entries = TokensOf(EntriesOf(array)).size();
      if (FindChild(array, "Indices") == nullptr || indices == entries) continue;
      findings.Add("vector-length", array,
                   fmt::format("it has {} indices and {} entries", indices, entries));
    } else if (name.ends_with("Array") || name.ends_with("ARRAY")) {
      const std::size_t length = TokensOf(array).size();
      if (length == fields) continue;
      findings.Add("vector-length", array,
                   fmt::format("it has {} numbers for {} vector fields", length, fields));
    }
  }
}

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
  for (const VectorInstance& instance : examined.document.vectors.Instances()) {
    CheckLength(instance.element, examined.numbers.fields.size(), findings);
  }
  CheckUnused(examined, findings);
}

}  // namespace svmscore::tools
