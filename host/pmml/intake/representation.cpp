// A linear machine may be given by one coefficient a field. That is a machine with one support
// vector, the coefficients, which counts once: its kernel value is the same sum in the same order.
#include <unordered_set>

#include <fmt/format.h>

#include "host/pmml/elements.h"
#include "host/pmml/intake/steps.h"
#include "host/pmml/intake/vectors.h"
#include "host/tags.h"

namespace svmscore::intake {
namespace {

namespace tags = MCZandor_850::PMMLModelTags;

constexpr const char* kRepresentation = "svmRepresentation";

constexpr StepKind kLinear{
    "coefficient-form",
    "a linear machine given by one coefficient a field is read as one support vector"};

class LinearMachines {
 public:
  LinearMachines(Intake& intake, DOMElement* vectors, std::size_t fields)
      : intake_(intake), vectors_(vectors), reader_(intake, fields), fields_(fields) {
    for (DOMElement* instance : Children(vectors, tags::XML_ELE_SVM_VECTORINSTANCE)) {
      ids_.insert(Narrow(AttributeView(instance, u"id")));
    }
  }

  void Read(DOMElement* machine) {
    DOMElement* support = FindChild(machine, tags::XML_ELE_SVM_SUPPORTVECTORS);
    DOMElement* coefficients = FindChild(machine, tags::XML_ELE_SVM_COEFFICIENTS);
    // A translator says that the coefficients are missing.
    if (coefficients == nullptr) return;
    if (FindChild(support, tags::XML_ELE_SVM_SUPPORTVECTOR) != nullptr) {
      return intake_.Refuse(support, code::kBadContent,
                            "support vectors beside svmRepresentation Coefficients",
                            tags::XML_ELE_SVM_SVM);
    }
    WideText entries;
    if (!Gather(coefficients, entries)) return;
    intake_.Change(kLinear, machine);
    if (support != nullptr) Remove(support);
    support = MakeElement(intake_.Dom(), tags::XML_ELE_SVM_SUPPORTVECTORS);
    machine->insertBefore(support, coefficients);
    SetAttribute(AddElement(support, tags::XML_ELE_SVM_SUPPORTVECTOR), tags::XML_ATT_SVM_VECTORID,
                 AddInstance(entries));
    while (DOMElement* coefficient = FindChild(coefficients, tags::XML_ELE_SVM_COEFFICIENT)) {
      Remove(coefficient);
    }
    coefficients->removeAttribute(u"numberOfCoefficients");
    SetAttribute(AddElement(coefficients, tags::XML_ELE_SVM_COEFFICIENT), tags::XML_ATT_VALUE, "1");
  }

 private:
  // The coefficients as the text of a vector; false where they are none.
  bool Gather(const DOMElement* coefficients, WideText& entries) {
    std::size_t count = 0;
    for (const DOMElement* coefficient : Children(coefficients, tags::XML_ELE_SVM_COEFFICIENT)) {
      const WideView stated = AttributeView(coefficient, u"value");
      WideView rest = stated.data() == nullptr ? WideView(u"0") : stated;
      const WideView word = NextWord(rest);
      if (!IsNumber(word) || !NextWord(rest).empty()) {
        intake_.Refuse(coefficient, code::kBadValue, Narrow(stated), tags::XML_ATT_VALUE,
                       tags::XML_ELE_SVM_COEFFICIENT);
        return false;
      }
      entries.append(word).push_back(u' ');
      ++count;
    }
    if (count == fields_) return true;
    intake_.Refuse(coefficients, code::kLengthsDiffer, std::to_string(count),
                   tags::XML_ELE_SVM_COEFFICIENTS, tags::XML_ELE_SVM_SVM, std::to_string(fields_),
                   tags::XML_ELE_SVM_VECTORFIELDS, tags::XML_ELE_SVM_VECTORDICTION);
    return false;
  }

  std::string AddInstance(const WideText& entries) {
    std::string id;
    do {
      id = fmt::format("machine {}", ++machines_);
    } while (!ids_.insert(id).second);
    DOMElement* instance = AddElement(vectors_, tags::XML_ELE_SVM_VECTORINSTANCE);
    SetAttribute(instance, tags::XML_ATT_SVM_ID, id);
    DOMElement* array = AddElement(instance, tags::XML_ELE_SVM_REALSPARSEARRAY);
    AddText(AddElement(array, tags::XML_ELE_SVM_INDICES), reader_.AllIndices());
    AddText(AddElement(array, tags::XML_ELE_SVM_REAL_ENTRIES), entries);
    return id;
  }

  Intake& intake_;
  DOMElement* vectors_;
  VectorReader reader_;
  std::size_t fields_;
  std::size_t machines_ = 0;
  std::unordered_set<std::string> ids_;
};

}  // namespace

void UseSupportVectors(Intake& intake) {
  if (FindAttribute(intake.Model(), kRepresentation) != "Coefficients") return;
  DOMElement* vectors = intake.ModelChild(tags::XML_ELE_SVM_VECTORDICTION);
  const std::size_t fields = CountVectorFields(intake);
  if (fields == 0) return;
  // A translator says that there is no kernel.
  const bool has_other = intake.ModelChild(tags::XML_ELE_SVM_KFTPOLY) != nullptr ||
                         intake.ModelChild(tags::XML_ELE_SVM_KFTRBF) != nullptr ||
                         intake.ModelChild(tags::XML_ELE_SVM_KFTSIGMOID) != nullptr;
  if (intake.ModelChild(tags::XML_ELE_SVM_KFTLINEAR) == nullptr && has_other) {
    return intake.Refuse(intake.Model(), code::kUnsupported,
                         "svmRepresentation Coefficients without a LinearKernelType",
                         tags::XML_ELE_SVMMODEL);
  }
  LinearMachines machines(intake, vectors, fields);
  for (DOMElement* machine : Children(intake.Model(), tags::XML_ELE_SVM_SVM)) {
    machines.Read(machine);
  }
  SetAttribute(intake.Model(), kRepresentation, "SupportVectors");
  vectors->removeAttribute(u"numberOfVectors");
}

}  // namespace svmscore::intake
