// Target elements that are for fields which do not exist, or for one that has its Target already.
#include <unordered_set>

#include "host/intake/steps.h"
#include "host/xml/attributes.h"
#include "host/xml/edit.h"

namespace svmscore::intake {
namespace {

constexpr StepKind kUnknownTarget{
    "target-unknown",
    "a Target for a field that does not exist is taken for the model's "
    "target where it is the only one, and else not used"};
constexpr StepKind kDeclaredTwice{"target-declared-twice",
                                  "of several Target elements of one field the first counts"};

}  // namespace

void CheckTargets(Intake& intake) {
  std::unordered_set<std::string> fields;
  for (const DOMElement* field :
       Children(FindChild(intake.Root(), "DataDictionary"), "DataField")) {
    fields.insert(Narrow(AttributeView(field, "name")));
  }
  std::unordered_set<std::string> seen;
  for (const DOMElement* target : Children(intake.ModelChild("Targets"), "Target")) {
    const auto name = FindAttribute(target, "field");
    if (name && !fields.contains(*name)) {
      intake.Doubt(kUnknownTarget, target, code::kUnknownField, *name, "Target");
    } else if (!seen.insert(name.value_or("")).second) {
      intake.Doubt(kDeclaredTwice, target, code::kDuplicateName, name.value_or(""), "Target");
    }
  }
}

}  // namespace svmscore::intake
