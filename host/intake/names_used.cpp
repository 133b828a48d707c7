// Names of derived fields and functions that already mean something else.
#include <unordered_set>

#include "host/intake/steps.h"
#include "host/transform/functions/functions.h"
#include "host/xml/edit.h"
#include "host/xml/elements.h"

namespace svmscore::intake {
namespace {

std::unordered_set<std::string> NamesIn(const DOMElement* list, const std::string& kind) {
  std::unordered_set<std::string> names;
  for (const DOMElement* element : Children(list, kind)) {
    names.insert(Narrow(AttributeView(element, "name")));
  }
  return names;
}

void CheckDerived(Intake& intake, const DOMElement* list, Kind kind,
                  const std::unordered_set<std::string>& inputs) {
  for (const DOMElement* field : Children(list, "DerivedField")) {
    const std::string name = Narrow(AttributeView(field, "name"));
    if (inputs.contains(name)) intake.Tell(kind, field, name, NameOf(field));
  }
}

}  // namespace

void CheckNamesUsed(Intake& intake) {
  std::unordered_set<std::string> declared =
      NamesIn(FindChild(intake.Root(), "DataDictionary"), "DataField");
  const DOMElement* global = FindChild(intake.Root(), "TransformationDictionary");
  CheckDerived(intake, intake.ModelChild("LocalTransformations"), "derived-field-over-input",
               declared);
  // A data field that the model does not list is not an input.
  const DOMElement* schema = intake.ModelChild("MiningSchema");
  const auto inputs = schema == nullptr ? declared : NamesIn(schema, "MiningField");
  std::erase_if(declared, [&inputs](const std::string& name) { return inputs.contains(name); });
  CheckDerived(intake, global, "derived-field-under-input", inputs);
  CheckDerived(intake, global, "derived-field-over-input", declared);
  for (const DOMElement* function : Children(global, "DefineFunction")) {
    const std::string name = Narrow(AttributeView(function, "name"));
    if (name != "if" && transform::FindFunction(name) == nullptr) continue;
    intake.Tell("function-name-taken", function, name, NameOf(function));
  }
}

}  // namespace svmscore::intake
