// The model's target, and where its categories are named.
#ifndef HOST_INTAKE_TARGET_CATEGORIES_H_
#define HOST_INTAKE_TARGET_CATEGORIES_H_

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/intake/intake.h"
#include "host/text/field_types.h"

namespace svmscore::intake {

// Each null where the document has none.
struct Target {
  DOMElement* mining_field = nullptr;
  DOMElement* data_field = nullptr;
  DOMElement* target = nullptr;  // of Targets
};

Target FindTarget(const Intake& intake);

// Turns texts of the target's data type into keys that are equal where the values are.
class LabelKeys {
 public:
  explicit LabelKeys(const DOMElement* data_field);
  std::string Of(const std::string& label) const;
  // Whether the target's type has a value that the text spells.
  bool CanBe(const std::string& label) const;

 private:
  std::optional<FieldType> number_type_;  // nothing where texts are compared
};

// The values that the target lists: those of its DataField, or else those of its Target.
std::vector<std::string> ListedCategories(const Target& target);

// Whether there is one machine for each pair of the categories that the target lists, or else the
// machines name; true of fewer than three categories.
bool FitsPairs(const Intake& intake);

// An attribute that names a category.
struct LabelPlace {
  DOMElement* element;
  std::string attribute;
  std::string label;
};
// Those of one machine that have a text, in document order.
std::vector<LabelPlace> LabelsOf(DOMElement* machine);

// The vendor extension of a machine, by which its categories are decided; null without one.
DOMElement* VendorExtension(const DOMElement* machine);

}  // namespace svmscore::intake

#endif  // HOST_INTAKE_TARGET_CATEGORIES_H_
