// A translator drops machine terms that it cannot resolve, and reads numbers that it cannot parse
// as their defaults, without a word. Whoever wants scores is told.
#include <unordered_set>

#include "host/intake/counts.h"
#include "host/intake/finite_numbers.h"
#include "host/intake/steps.h"
#include "host/intake/target_categories.h"
#include "host/output/scheme.h"
#include "host/text/number_text.h"
#include "host/xml/array_numbers.h"
#include "host/xml/edit.h"
#include "host/xml/elements.h"

namespace svmscore::intake {
namespace {

bool IsUnreadable(WideView text) {
  if (text.data() == nullptr) return false;
  return !IsNumber(NextWord(text)) || !NextWord(text).empty();
}

void CheckNumber(Intake& intake, Kind kind, const DOMElement* element, const char* name,
                 WideView text) {
  if (IsUnreadable(text)) intake.Tell(kind, element, Narrow(text), name, NameOf(element));
}

void CheckNumber(Intake& intake, Kind kind, const DOMElement* element, const char* name) {
  CheckNumber(intake, kind, element, name, AttributeView(element, name));
}

void CheckOffset(Intake& intake, const DOMElement* coefficients) {
  if (!IsUnreadable(AttributeView(coefficients, "absoluteValue"))) return;
  const std::string text = Narrow(AttributeView(coefficients, "absoluteValue"));
  intake.Error("bad-absolute-value", coefficients, text, "absoluteValue", "Coefficients");
}

// Whether a translator keeps the vector: one without values is left out.
bool HasValues(const DOMElement* instance, const ArrayNumbers* numbers) {
  const DOMElement* array = FindChild(instance, "REAL-SparseArray");
  if (array == nullptr) return false;
  if (numbers != nullptr && numbers->Find(array) != nullptr) return true;
  const DOMElement* indices = FindChild(array, "Indices");
  if (indices == nullptr) {
    const auto length = ParseNumber(Narrow(AttributeView(array, "n")));
    return length && TruncateToInt(*length) > 0;
  }
  if (numbers != nullptr && numbers->Find(indices) != nullptr) return true;
  WideText joined;
  WideView text = TextView(indices, joined);
  return !NextWord(text).empty();
}

// The identifiers of all vectors that are kept, borrowed from the document.
std::unordered_set<WideView> CheckInstances(Intake& intake) {
  std::unordered_set<WideView> ids;
  const ArrayNumbers* numbers = ArrayNumbers::Of(intake.Root());
  std::size_t count = 0;
  const DOMElement* dictionary = intake.ModelChild("VectorDictionary");
  for (const DOMElement* instance : Children(dictionary, "VectorInstance")) {
    ++count;
    const WideView id = AttributeView(instance, "id");
    // A translator says that there is none.
    if (id.data() == nullptr) continue;
    if (id.empty()) {
      intake.Tell("vector-dropped", instance, "an empty id", "VectorInstance");
    } else if (HasValues(instance, numbers) && !ids.insert(id).second) {
      intake.Tell("vector-dropped", instance, "the id \"" + Narrow(id) + "\" of an earlier vector",
                  "VectorInstance");
    }
  }
  CheckStatedCount(intake, dictionary, "numberOfVectors", "VectorInstance elements", count);
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
  CheckOffset(intake, coefficients);
  if (AttributeView(coefficients, "absoluteValue").data() == nullptr) {
    intake.Tell("no-absolute-value", coefficients);
  }
  std::size_t terms = 0;
  bool all_zero = true;
  bool any_number = false;
  for (const DOMElement* coefficient : Children(coefficients, "Coefficient")) {
    const WideView value = AttributeView(coefficient, "value");
    if (value.data() == nullptr) intake.Tell("no-coefficient-value", coefficient);
    CheckNumber(intake, "bad-coefficient", coefficient, "value", value);
    CheckFiniteAttribute(intake, coefficient, "value", value);
    if (all_zero || !any_number) {
      const std::optional<double> number = ParseNumber(Narrow(value));
      any_number = any_number || number;
      all_zero = all_zero && number.value_or(0.0) == 0.0;
    }
    ++terms;
  }
  if (!any_number && terms > 0) {
    intake.Error("empty-machine", machine, "no coefficient that is a number", NameOf(machine));
  } else if (all_zero && terms > 0) {
    intake.Tell("zero-machine", coefficients, std::to_string(terms) + " coefficients of 0",
                "Coefficients");
  }
  std::size_t vectors = 0;
  std::size_t left = 0;
  for (const DOMElement* vector : Children(support, "SupportVector")) {
    const WideView id = AttributeView(vector, "vectorId");
    const bool pairs = vectors < terms;
    const bool known = pairs && ids.contains(id);
    if (known) ++left;
    if (pairs && !known && id.data() != nullptr) {
      intake.Tell("unknown-vector", vector,
                  "the vectorId \"" + Narrow(id) + "\", which no VectorInstance with values has,",
                  "SupportVector");
    }
    ++vectors;
  }
  CheckStatedCount(intake, support, "numberOfSupportVectors", "SupportVector elements", vectors);
  CheckStatedCount(intake, coefficients, "numberOfCoefficients", "Coefficient elements", terms);
  // A translator says which of the two lists is empty.
  if (vectors == 0 || terms == 0) return;
  if (left == 0) intake.Error("empty-machine", machine, "no term that is left", NameOf(machine));
  if (vectors == terms) return;
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
