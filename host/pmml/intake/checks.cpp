// A translator drops machine terms that it cannot resolve, and reads numbers that it cannot parse
// as their defaults, without a word. Whoever wants scores is told.
#include <unordered_set>

#include "host/output/scheme.h"
#include "host/pmml/elements.h"
#include "host/pmml/intake/edit.h"
#include "host/pmml/intake/steps.h"
#include "host/pmml/intake/target.h"
#include "host/tags.h"

namespace svmscore::intake {
namespace {

namespace tags = MCZandor_850::PMMLModelTags;

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

void CheckNumber(Intake& intake, const DOMElement* element, const XMLCh* name) {
  WideView text = AttributeView(element, name);
  if (text.data() == nullptr) return;
  const WideView whole = text;
  const WideView word = NextWord(text);
  if (IsNumber(word) && NextWord(text).empty()) return;
  intake.Doubt(kNoNumber, element, code::kBadValue, Narrow(whole), Narrow(name), NameOf(element));
}

// The identifiers of all vectors, borrowed from the document.
std::unordered_set<WideView> CheckInstances(Intake& intake) {
  std::unordered_set<WideView> ids;
  for (const DOMElement* instance : Children(intake.ModelChild(tags::XML_ELE_SVM_VECTORDICTION),
                                             tags::XML_ELE_SVM_VECTORINSTANCE)) {
    const WideView id = AttributeView(instance, u"id");
    // A translator says that there is none.
    if (id.data() == nullptr) continue;
    if (id.empty()) {
      intake.Doubt(kEmptyId, instance, code::kBadValue, "", tags::XML_ATT_SVM_ID,
                   tags::XML_ELE_SVM_VECTORINSTANCE);
    } else if (!ids.insert(id).second) {
      intake.Doubt(kSameId, instance, code::kDuplicateName, Narrow(id),
                   tags::XML_ELE_SVM_VECTORINSTANCE);
    }
  }
  return ids;
}

void CheckMachine(Intake& intake, const DOMElement* machine,
                  const std::unordered_set<WideView>& ids) {
  CheckNumber(intake, machine, u"threshold");
  const DOMElement* extension = VendorExtension(machine);
  if (extension != nullptr && !output::IsCompleteExtension(extension, intake.IsClassification())) {
    intake.Doubt(kExtension, extension, code::kLacksChildren, NameOf(extension));
  }
  const DOMElement* support = FindChild(machine, tags::XML_ELE_SVM_SUPPORTVECTORS);
  const DOMElement* coefficients = FindChild(machine, tags::XML_ELE_SVM_COEFFICIENTS);
  if (support == nullptr || coefficients == nullptr) return;
  CheckNumber(intake, coefficients, u"absoluteValue");
  std::size_t terms = 0;
  for (const DOMElement* coefficient : Children(coefficients, tags::XML_ELE_SVM_COEFFICIENT)) {
    CheckNumber(intake, coefficient, u"value");
    ++terms;
  }
  std::size_t vectors = 0;
  for (const DOMElement* vector : Children(support, tags::XML_ELE_SVM_SUPPORTVECTOR)) {
    const WideView id = AttributeView(vector, u"vectorId");
    if (id.data() != nullptr && !ids.contains(id) && vectors < terms) {
      intake.Doubt(kUnknownId, vector, code::kBadContent,
                   "the vectorId \"" + Narrow(id) + "\", which no VectorInstance has,",
                   tags::XML_ELE_SVM_SUPPORTVECTOR);
    }
    ++vectors;
  }
  if (vectors == 0 || terms == 0 || vectors == terms) return;
  intake.Doubt(kUnpaired, coefficients, code::kLengthsDiffer, std::to_string(vectors),
               tags::XML_ELE_SVM_SUPPORTVECTORS, tags::XML_ELE_SVM_SVM, std::to_string(terms),
               tags::XML_ELE_SVM_COEFFICIENTS, tags::XML_ELE_SVM_SVM);
}

}  // namespace

void CheckMachines(Intake& intake) {
  CheckNumber(intake, intake.Model(), u"threshold");
  const std::unordered_set<WideView> ids = CheckInstances(intake);
  for (const DOMElement* machine : Children(intake.Model(), tags::XML_ELE_SVM_SVM)) {
    CheckMachine(intake, machine, ids);
  }
}

}  // namespace svmscore::intake
