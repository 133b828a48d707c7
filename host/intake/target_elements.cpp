// Target elements that are for fields which do not exist, or for one that has its Target already.
#include <unordered_set>

#include "host/intake/steps.h"
#include "host/xml/attributes.h"
#include "host/xml/edit.h"

namespace svmscore::intake {

void CheckTargets(Intake& intake) {
  std::vector<std::string> names;
  for (const DOMElement* field :
       Children(FindChild(intake.Root(), "DataDictionary"), "DataField")) {
    names.push_back(Narrow(AttributeView(field, "name")));
  }
  const std::unordered_set<std::string> fields(names.begin(), names.end());
  std::unordered_set<std::string> seen;
  for (const DOMElement* target : Children(intake.ModelChild("Targets"), "Target")) {
    const auto name = FindAttribute(target, "field");
    if (name && !fields.contains(*name)) {
      intake.TellNearName(*name, names, "target-unknown", target, *name, "Target");
    } else if (!seen.insert(name.value_or("")).second) {
      intake.Tell("target-declared-twice", target, name.value_or(""), "Target");
    }
  }
}

}  // namespace svmscore::intake
