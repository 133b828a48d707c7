// A translator drops machine terms that it cannot resolve, and reads numbers that it cannot parse
// as their defaults, without a word. Whoever wants scores is told instead.
#include <unordered_set>

#include "host/number_text.h"
#include "host/pmml/elements.h"
#include "host/pmml/intake/edit.h"
#include "host/pmml/intake/steps.h"
#include "host/tags.h"

namespace svmscore::intake {
namespace {

namespace tags = MCZandor_850::PMMLModelTags;

void CheckNumber(const DOMElement* element, const XMLCh* name) {
  WideView text = AttributeView(element, name);
  if (text.data() == nullptr) return;
  const WideView whole = text;
  const WideView word = NextWord(text);
  if (IsNumber(word) && NextWord(text).empty()) return;
  RefuseValue(element, Narrow(name), Narrow(whole));
}

// The identifiers of all vectors, borrowed from the document.
std::unordered_set<WideView> CheckInstances(const DOMElement* vectors) {
  std::unordered_set<WideView> ids;
  for (const DOMElement* instance : Children(vectors, tags::XML_ELE_SVM_VECTORINSTANCE)) {
    const WideView id = AttributeView(instance, u"id");
    if (id.data() == nullptr) continue;
    if (id.empty()) RefuseValue(instance, tags::XML_ATT_SVM_ID, "");
    if (!ids.insert(id).second) {
      ThrowAt(instance, code::kDuplicateName, Narrow(id), tags::XML_ELE_SVM_VECTORINSTANCE);
    }
  }
  return ids;
}

void CheckMachine(const DOMElement* machine, const std::unordered_set<WideView>& ids) {
  CheckNumber(machine, u"threshold");
  const DOMElement* support = FindChild(machine, tags::XML_ELE_SVM_SUPPORTVECTORS);
  const DOMElement* coefficients = FindChild(machine, tags::XML_ELE_SVM_COEFFICIENTS);
  if (support == nullptr || coefficients == nullptr) return;
  CheckNumber(coefficients, u"absoluteValue");
  std::size_t vectors = 0;
  for (const DOMElement* vector : Children(support, tags::XML_ELE_SVM_SUPPORTVECTOR)) {
    const WideView id = AttributeView(vector, u"vectorId");
    if (id.data() != nullptr && !ids.contains(id)) {
      ThrowAt(vector, code::kBadContent,
              "the vectorId \"" + Narrow(id) + "\", which no VectorInstance has,",
              tags::XML_ELE_SVM_SUPPORTVECTOR);
    }
    ++vectors;
  }
  std::size_t terms = 0;
  for (const DOMElement* coefficient : Children(coefficients, tags::XML_ELE_SVM_COEFFICIENT)) {
    CheckNumber(coefficient, u"value");
    ++terms;
  }
  if (vectors == 0 || terms == 0 || vectors == terms) return;
  ThrowAt(coefficients, code::kLengthsDiffer, std::to_string(vectors),
          tags::XML_ELE_SVM_SUPPORTVECTORS, tags::XML_ELE_SVM_SVM, std::to_string(terms),
          tags::XML_ELE_SVM_COEFFICIENTS, tags::XML_ELE_SVM_SVM);
}

}  // namespace

void CheckMachines(Intake& intake) {
  if (!intake.Refuses()) return;
  CheckNumber(intake.Model(), u"threshold");
  const std::unordered_set<WideView> ids =
      CheckInstances(intake.ModelChild(tags::XML_ELE_SVM_VECTORDICTION));
  for (const DOMElement* machine : Children(intake.Model(), tags::XML_ELE_SVM_SVM)) {
    CheckMachine(machine, ids);
  }
}

}  // namespace svmscore::intake
