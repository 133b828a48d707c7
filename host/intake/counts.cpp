// Counts that elements state of what they hold. What is there counts; but a count that differs may
// tell of a document that was cut off.
#include "host/intake/steps.h"
#include "host/intake/vectors.h"
#include "host/text/number_text.h"
#include "host/xml/attributes.h"

namespace svmscore::intake {
namespace {

std::size_t CountChildren(const DOMElement* parent, const char* name) {
  std::size_t count = 0;
  for (const DOMElement* child : Children(parent, name)) count += child != nullptr ? 1 : 0;
  return count;
}

// Counts only where a number is stated.
template <typename Count>
void CheckCount(Intake& intake, const DOMElement* element, const char* attribute,
                const std::string& what, const Count& count) {
  const std::string text = AttributeText(element, attribute);
  if (text.empty()) return;
  const std::size_t actual = count();
  if (ParseNumber(text) == static_cast<double>(actual)) return;
  intake.Tell("count-disagrees", element,
              attribute + (" " + text) + " beside " + std::to_string(actual) + ' ' + what,
              NameOf(element));
}

void CheckChildCount(Intake& intake, const DOMElement* element, const char* attribute,
                     const char* name) {
  CheckCount(intake, element, attribute, name + std::string(" elements"),
             [&] { return CountChildren(element, name); });
}

}  // namespace

void CheckCounts(Intake& intake) {
  const DOMElement* vectors = intake.ModelChild("VectorDictionary");
  const std::size_t fields = CountVectorFields(intake);
  const auto count_fields = [fields] { return fields; };
  CheckChildCount(intake, FindChild(intake.Root(), "DataDictionary"), "numberOfFields",
                  "DataField");
  CheckChildCount(intake, vectors, "numberOfVectors", "VectorInstance");
  CheckCount(intake, FindChild(vectors, "VectorFields"), "numberOfFields", "vector fields",
             count_fields);
  for (const DOMElement* machine : Children(intake.Model(), "SupportVectorMachine")) {
    const DOMElement* support = FindChild(machine, "SupportVectors");
    CheckChildCount(intake, support, "numberOfSupportVectors", "SupportVector");
    CheckCount(intake, support, "numberOfAttributes", "vector fields", count_fields);
    CheckChildCount(intake, FindChild(machine, "Coefficients"), "numberOfCoefficients",
                    "Coefficient");
  }
}

}  // namespace svmscore::intake
