// Counts that elements state of what they hold. What is there counts; but a count that differs may
// tell of a document that was cut off.
#include "host/intake/counts.h"

#include "host/intake/steps.h"
#include "host/intake/vectors.h"
#include "host/text/number_text.h"
#include "host/xml/attributes.h"

namespace svmscore::intake {

void CheckStatedCount(Intake& intake, const DOMElement* element, const char* attribute,
                      const char* what, std::size_t actual) {
  const std::string text = AttributeText(element, attribute);
  if (text.empty() || ParseNumber(text) == static_cast<double>(actual)) return;
  intake.Tell(
      "count-disagrees", element,
      std::string(attribute) + ' ' + text + " beside " + std::to_string(actual) + ' ' + what,
      NameOf(element));
}

void CheckCounts(Intake& intake) {
  if (const DOMElement* dictionary = FindChild(intake.Root(), "DataDictionary")) {
    std::size_t count = 0;
    for (const DOMElement* field : Children(dictionary, "DataField")) count += field != nullptr;
    CheckStatedCount(intake, dictionary, "numberOfFields", "DataField elements", count);
  }
  const std::size_t fields = CountVectorFields(intake);
  CheckStatedCount(intake, FindChild(intake.ModelChild("VectorDictionary"), "VectorFields"),
                   "numberOfFields", "vector fields", fields);
  for (const DOMElement* machine : Children(intake.Model(), "SupportVectorMachine")) {
    CheckStatedCount(intake, FindChild(machine, "SupportVectors"), "numberOfAttributes",
                     "vector fields", fields);
  }
}

}  // namespace svmscore::intake
