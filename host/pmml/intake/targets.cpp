// Target elements that are for fields which do not exist, or for one that has its Target already.
#include <unordered_set>

#include "host/pmml/elements.h"
#include "host/pmml/intake/edit.h"
#include "host/pmml/intake/steps.h"
#include "host/tags.h"

namespace svmscore::intake {
namespace {

namespace tags = MCZandor_850::PMMLModelTags;

constexpr StepKind kUnknown{"target-unknown",
                            "a Target for a field that does not exist is taken for the model's "
                            "target where it is the only one, and else not used"};
constexpr StepKind kDeclaredTwice{"target-declared-twice",
                                  "of several Target elements of one field the first counts"};

}  // namespace

void CheckTargets(Intake& intake) {
  std::unordered_set<std::string> fields;
  for (const DOMElement* field :
       Children(FindChild(intake.Root(), tags::XML_ELE_DATADICTIONARY), "DataField")) {
    fields.insert(Narrow(AttributeView(field, u"name")));
  }
  std::unordered_set<std::string> seen;
  for (const DOMElement* target : Children(intake.ModelChild(tags::XML_ELE_TARGETS), "Target")) {
    const auto name = FindAttribute(target, "field");
    if (name && !fields.contains(*name)) {
      intake.Doubt(kUnknown, target, code::kUnknownField, *name, "Target");
    } else if (!seen.insert(name.value_or("")).second) {
      intake.Doubt(kDeclaredTwice, target, code::kDuplicateName, name.value_or(""), "Target");
    }
  }
}

}  // namespace svmscore::intake
