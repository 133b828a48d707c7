// Which fields a document declares and derives, what they are computed from, and what values they
// can have.
#ifndef APP_DOCTOR_FIELD_GRAPH_H_
#define APP_DOCTOR_FIELD_GRAPH_H_

#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "app/elements.h"
#include "app/inspected.h"

namespace svmscore::app {

// Values compare as texts, and as numbers where they are numbers of a field that holds such.
struct ValueSet {
  bool numeric = false;
  std::set<std::string> values;

  void Add(const std::string& value) { values.insert(Key(value)); }
  bool Holds(const std::string& value) const { return values.contains(Key(value)); }
  // One that differs from `value` in case or in blanks around it only; empty without one.
  std::string Similar(const std::string& value) const;

 private:
  std::string Key(const std::string& value) const;
};

class FieldGraph {
 public:
  explicit FieldGraph(const Inspected& inspected);

  const Element* DataField(const std::string& name) const { return Find(data_, name); }
  const Element* Derived(const std::string& name) const { return Find(derived_, name); }
  const Element* MiningField(const std::string& name) const { return Find(schema_, name); }
  // All DerivedField and MiningField elements, in document order.
  const std::vector<const Element*>& AllDerived() const { return all_derived_; }
  const std::vector<const Element*>& AllMining() const { return all_mining_; }
  bool IsActive(const std::string& name) const;

  // The fields that vector positions need, directly and through derived fields; with `outputs`,
  // those too that output fields and verification records name.
  std::unordered_set<std::string> Needed(bool outputs) const;
  // What the field can be, where that is a closed set: the values that it lists, and those that
  // replace others; or what its expression gives. Nothing where anything may come.
  std::optional<ValueSet> ValuesOf(const std::string& name) const;

 private:
  using Elements = std::unordered_map<std::string, const Element*>;
  static const Element* Find(const Elements& elements, const std::string& name);
  std::optional<ValueSet> Declared(const std::string& name) const;
  std::optional<ValueSet> Computed(const Element* derived, int depth) const;
  std::optional<ValueSet> Values(const std::string& name, int depth) const;

  const Inspected& inspected_;
  Elements data_;
  Elements derived_;
  Elements schema_;
  std::vector<const Element*> all_derived_;
  std::vector<const Element*> all_mining_;
};

// The text of a cell of a row of an InlineTable, whose element may have a prefix; nothing where the
// row lacks it.
std::optional<std::string> CellOf(const Element* row, const std::string& column);

// Calls `visit` for every element below `element`, in document order.
template <typename Visit>
void ForEachBelow(const Element* element, const Visit& visit) {
  const Element* at = element == nullptr ? nullptr : element->getFirstElementChild();
  while (at != nullptr) {
    visit(at);
    const Element* next = at->getFirstElementChild();
    for (const Element* up = at; next == nullptr && up != element;
         up = static_cast<const Element*>(up->getParentNode())) {
      next = up->getNextElementSibling();
    }
    at = next;
  }
}

}  // namespace svmscore::app

#endif  // APP_DOCTOR_FIELD_GRAPH_H_
