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

constexpr StepKind kNoNumber{
    "unreadable-attribute",
    "a threshold, absoluteValue or value that is no number counts as if it were not there"};
constexpr StepKind kEmptyId{"empty-id", "a vector with an empty id is left out"};
constexpr StepKind kSameId{"duplicate-id", "of several vectors with one id the first counts"};
constexpr StepKind kUnknownId{
    "unknown-vector-id",
    "a support vector that names no vector is left out, together with its coefficient"};
constexpr StepKind kUnpaired{
    "unpaired-terms",
    "a machine has more support vectors than coefficients, or fewer: the surplus is left out"};

constexpr StepKind kExtension{
    "extension-unused",
    "an Extension that lacks what its machine needs gives it no probabilities, or no interval"};

void CheckNumber(Intake& intake, const DOMElement* element, const char* name) {
  WideView text = AttributeView(element, name);
  if (text.data() == nullptr) return;
  const WideView whole = text;
  const WideView word = NextWord(text);
  if (IsNumber(word) && NextWord(text).empty()) return;
  intake.Doubt(kNoNumber, element, code::kBadValue, Narrow(whole), name, NameOf(element));
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
      intake.Doubt(kEmptyId, instance, code::kBadValue, "", "id", "VectorInstance");
    } else if (!ids.insert(id).second) {
      intake.Doubt(kSameId, instance, code::kDuplicateName, Narrow(id), "VectorInstance");
    }
  }
  return ids;
}

void CheckMachine(Intake& intake, const DOMElement* machine,
                  const std::unordered_set<WideView>& ids) {
  CheckNumber(intake, machine, "threshold");
  const DOMElement* extension = VendorExtension(machine);
  if (extension != nullptr && !output::IsCompleteExtension(extension, intake.IsClassification())) {
    intake.Doubt(kExtension, extension, code::kLacksChildren, NameOf(extension));
  }
  const DOMElement* support = FindChild(machine, "SupportVectors");
  const DOMElement* coefficients = FindChild(machine, "Coefficients");
  if (support == nullptr || coefficients == nullptr) return;
  CheckNumber(intake, coefficients, "absoluteValue");
  std::size_t terms = 0;
  for (const DOMElement* coefficient : Children(coefficients, "Coefficient")) {
    CheckNumber(intake, coefficient, "value");
    ++terms;
  }
  std::size_t vectors = 0;
  for (const DOMElement* vector : Children(support, "SupportVector")) {
    const WideView id = AttributeView(vector, "vectorId");
    if (id.data() != nullptr && !ids.contains(id) && vectors < terms) {
      intake.Doubt(kUnknownId, vector, code::kBadContent,
                   "the vectorId \"" + Narrow(id) + "\", which no VectorInstance has,",
                   "SupportVector");
    }
    ++vectors;
  }
  if (vectors == 0 || terms == 0 || vectors == terms) return;
  intake.Doubt(kUnpaired, coefficients, code::kLengthsDiffer, std::to_string(vectors),
               "SupportVectors", "SupportVectorMachine", std::to_string(terms), "Coefficients",
               "SupportVectorMachine");
}

}  // namespace

void CheckMachines(Intake& intake) {
  CheckNumber(intake, intake.Model(), "threshold");
  const std::unordered_set<WideView> ids = CheckInstances(intake);
  for (const DOMElement* machine : Children(intake.Model(), "SupportVectorMachine")) {
    CheckMachine(intake, machine, ids);
  }
}

}  // namespace svmscore::intake
