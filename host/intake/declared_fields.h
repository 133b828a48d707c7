// The fields that a document declares or derives, by name.
#ifndef HOST_INTAKE_DECLARED_FIELDS_H_
#define HOST_INTAKE_DECLARED_FIELDS_H_

#include <string>
#include <unordered_map>
#include <unordered_set>

#include "host/intake/intake.h"

namespace svmscore::intake {

// Built once, after the lists of derived fields were made one; keeps up with the fields that are
// added through it.
class DeclaredFields {
 public:
  explicit DeclaredFields(Intake& intake);

  // The DataField or DerivedField of that name; null if absent.
  DOMElement* Find(const std::string& name) const;
  // The DerivedField that takes the place of the DataField of its name; null if absent.
  DOMElement* FindHiding(const std::string& name) const;
  // Whether `field` lists `value` among its valid values, spelled exactly so.
  bool Lists(const DOMElement* field, const std::string& value);
  // `wish` itself, or if a field already has that name, a new name that begins with it.
  std::string FreshName(const std::string& wish);
  // A new derived field without its expression.
  DOMElement* AddDerived(const std::string& name, const std::string& op_type,
                         const std::string& data_type);

 private:
  DOMElement* Transformations();

  Intake& intake_;
  std::unordered_map<std::string, DOMElement*> fields_;  // output fields too
  std::unordered_map<std::string, DOMElement*> hiding_;
  std::unordered_map<std::string, int> tried_;  // by wish, the last number that was added to it
  std::unordered_map<const DOMElement*, std::unordered_set<std::string>> values_;
};

// Whether a Value element lists a valid value: neither a missing nor an invalid one.
bool IsValid(const DOMElement* value);

}  // namespace svmscore::intake

#endif  // HOST_INTAKE_DECLARED_FIELDS_H_
