// The vector dictionary of a document: which vectors a model keeps, and why it drops the others.
#ifndef TOOLS_FINDINGS_VECTOR_INDEX_H_
#define TOOLS_FINDINGS_VECTOR_INDEX_H_

#include <string>
#include <unordered_map>
#include <vector>

#include "host/xml/attributes.h"

namespace svmscore::tools {

struct VectorInstance {
  const Element* element = nullptr;
  std::string id;
  std::string dropped;  // why the model has no such vector; empty for one that it has
};

class VectorIndex {
 public:
  explicit VectorIndex(const Element* model);

  const std::vector<VectorInstance>& Instances() const { return instances_; }
  // True for the id of a vector that the model keeps.
  bool IsKept(const std::string& id) const { return kept_.contains(id); }
  std::size_t KeptCount() const { return kept_.size(); }
  // The elements that are vector fields, in their order.
  const std::vector<const Element*>& Fields() const { return fields_; }

 private:
  std::vector<VectorInstance> instances_;
  std::unordered_map<std::string, const Element*> kept_;
  std::vector<const Element*> fields_;
};

// The blank-separated parts of an element's text; none for null.
std::vector<std::string> TokensOf(const Element* element);
// The element with the entries of a sparse array: REAL-Entries, or else Entries.
const Element* EntriesOf(const Element* sparse_array);

// The pairs of SupportVector and Coefficient elements that become terms of the machine.
struct MachineTerms {
  std::vector<const Element*> vectors;       // all SupportVector elements
  std::vector<const Element*> coefficients;  // all Coefficient elements
  std::size_t kept = 0;
};
MachineTerms TermsOf(const Element* machine, const VectorIndex& index);

}  // namespace svmscore::tools

#endif  // TOOLS_FINDINGS_VECTOR_INDEX_H_
