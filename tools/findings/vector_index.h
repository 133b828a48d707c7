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
  std::string dropped;  // why the model leaves the vector out; empty if it does not
};

// [one thread] for each document. Lives: the document, longer than this object; what is returned,
// as long as this object. Fails: the constructor by std::bad_alloc; the rest never.
class VectorIndex {
 public:
  // `model` is the model element.
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

// The blank-separated parts of an element's text; none for null. [one thread] for each document.
// Fails: std::bad_alloc.
std::vector<std::string> TokensOf(const Element* element);
// The element with the entries of a sparse array: REAL-Entries, or else Entries; null if absent.
// [one thread] for each document. Lives: as long as the document. Fails: never.
const Element* EntriesOf(const Element* sparse_array);

// The pairs of SupportVector and Coefficient elements that become terms of the machine.
struct MachineTerms {
  std::vector<const Element*> vectors;       // all SupportVector elements
  std::vector<const Element*> coefficients;  // all Coefficient elements
  std::size_t kept = 0;
};
// [one thread] for each document. Lives: elements, as long as the document. Fails: std::bad_alloc.
MachineTerms TermsOf(const Element* machine, const VectorIndex& index);

}  // namespace svmscore::tools

#endif  // TOOLS_FINDINGS_VECTOR_INDEX_H_
