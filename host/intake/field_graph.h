// Which fields a document declares and derives, what they are computed from, and what values they
// can have.
#ifndef HOST_INTAKE_FIELD_GRAPH_H_
#define HOST_INTAKE_FIELD_GRAPH_H_

#include <cstddef>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "host/text/api.h"
#include "host/xml/attributes.h"

namespace svmscore::intake {

// Values compare as texts, and as numbers where they are numbers of a field that holds such.
class SVMSCORE_HOST_API ValueSet {
 public:
  explicit ValueSet(bool numeric) : numeric_(numeric) {}
  // What `base` holds, without a copy of it, and what is added.
  explicit ValueSet(std::shared_ptr<const ValueSet> base)
      : numeric_(base->numeric_), base_(std::move(base)) {}

  bool IsNumeric() const { return numeric_; }
  std::size_t Size() const { return values_.size() + (base_ == nullptr ? 0 : base_->Size()); }
  void Add(const std::string& value);
  bool Holds(const std::string& value) const { return HoldsKey(Key(value)); }
  // A value that differs from `value` only in case or in blanks around it; empty if there is none.
  std::string Similar(const std::string& value) const;
  // At most `count` values that `other` does not hold.
  std::vector<std::string> Without(const ValueSet& other, std::size_t count) const;

 private:
  std::string Key(const std::string& value) const;
  bool HoldsKey(const std::string& key) const {
    return values_.contains(key) || (base_ != nullptr && base_->HoldsKey(key));
  }

  bool numeric_;
  std::shared_ptr<const ValueSet> base_;  // may be null; has none of `values_`
  std::set<std::string> values_;
  // `values_` by a key that similar values share; made when first asked for.
  mutable std::unordered_map<std::string, std::string> folded_;
};

// [one thread] for each object. Lives: the document, longer than this object; what is returned, as
// long as the document. Fails: std::bad_alloc.
class SVMSCORE_HOST_API FieldGraph {
 public:
  using Values = std::shared_ptr<const ValueSet>;

  FieldGraph(const Element* root, const Element* model);

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
  // The values that the field can have, if they are a closed set: those that it lists, those that
  // replace others, or those of its expression. Null if any value is possible. Fields that only
  // pass values on share them.
  Values ValuesOf(const std::string& name) const;

 private:
  using Elements = std::unordered_map<std::string, const Element*>;
  static const Element* Find(const Elements& elements, const std::string& name);
  Values Declared(const std::string& name) const;
  Values Computed(const Element* derived, int depth) const;
  Values FromExpression(const Element* derived, const Element* expression) const;
  Values ValuesAt(const std::string& name, int depth) const;

  const Element* model_;
  Elements data_;
  Elements derived_;
  Elements schema_;
  std::vector<const Element*> all_derived_;
  std::vector<const Element*> all_mining_;
  // What elements list, once it was asked for.
  mutable std::unordered_map<const Element*, Values> listed_;
};

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

}  // namespace svmscore::intake

#endif  // HOST_INTAKE_FIELD_GRAPH_H_
