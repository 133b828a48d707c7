// A translator drops machine terms that it cannot resolve, and reads numbers that it cannot parse
// as their defaults, without a word. Whoever wants scores is told.
#include <unordered_set>

#include "host/intake/steps.h"
#include "host/intake/target_categories.h"
#include "host/output/scheme.h"
#include "host/xml/edit.h"
#include "host/xml/elements.h"

namespace svmscore::intake {
namespace {

void CheckNumber(Intake& intake, Kind kind, const DOMElement* element, const char* name) {
  WideView text = AttributeView(element, name);
  if (text.data() == nullptr) return;
  const WideView whole = text;
  const WideView word = NextWord(text);
  if (IsNumber(word) && NextWord(text).empty()) return;
  intake.Tell(kind, element, Narrow(whole), name, NameOf(element));
}

// The identifiers of all vectors, borrowed from the document.
std::unordered_set<WideView> CheckInstances(Intake& intake) {
  std::unordered_set<WideView> ids;
  for (const DOMElement* instance :
       Children(intake.ModelChild("VectorDictionary"), "VectorInstance")) {
    const WideView id = AttributeView(instance, "id");
    // A translator says that there is none.
    if (id.data() == nullptr) continue;
    if (id.empty()) {
      intake.Tell("vector-dropped", instance, "an empty id", "VectorInstance");
    } else if (!ids.insert(id).second) {
      intake.Tell("vector-dropped", instance, "the id \"" + Narrow(id) + "\" of an earlier vector",
                  "VectorInstance");
    }
  }
  return ids;
}

void CheckMachine(Intake& intake, const DOMElement* machine,
                  const std::unordered_set<WideView>& ids) {
  CheckNumber(intake, "bad-threshold", machine, "threshold");
  const DOMElement* extension = VendorExtension(machine);
  if (extension != nullptr && !output::IsCompleteExtension(extension, intake.IsClassification())) {
    intake.Tell("extension-incomplete", extension, NameOf(extension));
  }
  const DOMElement* support = FindChild(machine, "SupportVectors");
  const DOMElement* coefficients = FindChild(machine, "Coefficients");
  if (support == nullptr || coefficients == nullptr) return;
  CheckNumber(intake, "bad-absolute-value", coefficients, "absoluteValue");
  std::size_t terms = 0;
  for (const DOMElement* coefficient : Children(coefficients, "Coefficient")) {
    CheckNumber(intake, "bad-coefficient", coefficient, "value");
    ++terms;
  }
  std::size_t vectors = 0;
  for (const DOMElement* vector : Children(support, "SupportVector")) {
    const WideView id = AttributeView(vector, "vectorId");
    if (id.data() != nullptr && !ids.contains(id) && vectors < terms) {
      intake.Tell("unknown-vector", vector,
                  "the vectorId \"" + Narrow(id) + "\", which no VectorInstance has,",
                  "SupportVector");
    }
    ++vectors;
  }
  if (vectors == 0 || terms == 0 || vectors == terms) return;
  intake.Tell(vectors > terms ? Kind("surplus-vectors") : Kind("surplus-coefficients"),
              coefficients, std::to_string(vectors), "SupportVectors", "SupportVectorMachine",
              std::to_string(terms), "Coefficients", "SupportVectorMachine");
}

}  // namespace

void CheckMachines(Intake& intake) {
  CheckNumber(intake, "bad-threshold", intake.Model(), "threshold");
  const std::unordered_set<WideView> ids = CheckInstances(intake);
  for (const DOMElement* machine : Children(intake.Model(), "SupportVectorMachine")) {
    CheckMachine(intake, machine, ids);
  }
}

}  // namespace svmscore::intake
