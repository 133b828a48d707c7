// A linear machine may be given by one coefficient for each field. It equals a machine with a
// single support vector that holds the coefficients and has the coefficient 1: the kernel value is
// the same sum in the same order.
#include <unordered_set>

#include <fmt/format.h>

#include "host/intake/counts.h"
#include "host/intake/steps.h"
#include "host/intake/vectors.h"
#include "host/xml/attributes.h"

namespace svmscore::intake {
namespace {

constexpr const char* kRepresentation = "svmRepresentation";

class LinearMachines {
 public:
  LinearMachines(Intake& intake, DOMElement* vectors, std::size_t fields, bool linear)
      : intake_(intake),
        vectors_(vectors),
        reader_(intake, fields),
        fields_(fields),
        linear_(linear) {
    for (DOMElement* instance : Children(vectors, "VectorInstance")) {
      ids_.insert(Narrow(AttributeView(instance, "id")));
      ++instances_;
    }
  }

  void Read(DOMElement* machine) {
    DOMElement* support = FindChild(machine, "SupportVectors");
    DOMElement* coefficients = FindChild(machine, "Coefficients");
    if (FindChild(support, "SupportVector") != nullptr) {
      return intake_.Tell("coefficient-form-mistaken", support,
                          "support vectors beside svmRepresentation Coefficients",
                          "SupportVectorMachine");
    }
    // A translator says that the coefficients, or support vectors, are missing.
    if (coefficients == nullptr) return;
    if (!linear_) {
      return intake_.Refuse(intake_.Model(), code::kUnsupported,
                            "svmRepresentation Coefficients without a LinearKernelType",
                            "SupportVectorMachineModel");
    }
    WideText entries;
    if (!Gather(coefficients, entries)) return;
    if (!converted_) {
      CheckStatedCount(intake_, vectors_, "numberOfVectors", "VectorInstance elements", instances_);
    }
    converted_ = true;
    CheckStatedCount(intake_, coefficients, "numberOfCoefficients", "Coefficient elements",
                     fields_);
    intake_.Tell("coefficient-form", machine);
    if (support != nullptr) Remove(support);
    support = MakeElement(intake_.Dom(), "SupportVectors");
    machine->insertBefore(support, coefficients);
    SetAttribute(AddElement(support, "SupportVector"), "vectorId", AddInstance(entries));
    while (DOMElement* coefficient = FindChild(coefficients, "Coefficient")) {
      Remove(coefficient);
    }
    RemoveAttribute(coefficients, "numberOfCoefficients");
    SetAttribute(AddElement(coefficients, "Coefficient"), "value", "1");
  }
  // Whether a machine got a support vector.
  bool Converted() const { return converted_; }

 private:
  // The coefficients as the text of a vector; false where there is not one for each field.
  bool Gather(const DOMElement* coefficients, WideText& entries) {
    std::size_t count = 0;
    for (const DOMElement* coefficient : Children(coefficients, "Coefficient")) {
      const WideView stated = AttributeView(coefficient, "value");
      WideView rest = stated.data() == nullptr ? WideView(u"0") : stated;
      WideView word = NextWord(rest);
      if (!IsNumber(word) || !NextWord(rest).empty()) {
        intake_.Tell("bad-coefficient", coefficient, Narrow(stated), "value", "Coefficient");
        word = u"0";
      }
      entries.append(word).push_back(u' ');
      ++count;
    }
    if (count == fields_) return true;
    intake_.Refuse(coefficients, code::kLengthsDiffer, std::to_string(count), "Coefficients",
                   "SupportVectorMachine", std::to_string(fields_), "VectorFields",
                   "VectorDictionary");
    return false;
  }

  std::string AddInstance(const WideText& entries) {
    std::string id;
    do {
      id = fmt::format("machine {}", ++machines_);
    } while (!ids_.insert(id).second);
    DOMElement* instance = AddElement(vectors_, "VectorInstance");
    SetAttribute(instance, "id", id);
    DOMElement* array = AddElement(instance, "REAL-SparseArray");
    AddText(AddElement(array, "Indices"), reader_.AllIndices());
    AddText(AddElement(array, "REAL-Entries"), entries);
    return id;
  }

  Intake& intake_;
  DOMElement* vectors_;
  VectorReader reader_;
  std::size_t fields_;
  bool linear_;
  bool converted_ = false;
  std::size_t instances_ = 0;  // in the document
  std::size_t machines_ = 0;
  std::unordered_set<std::string> ids_;
};

}  // namespace

void UseSupportVectors(Intake& intake) {
  if (FindAttribute(intake.Model(), kRepresentation) != "Coefficients") return;
  DOMElement* vectors = intake.ModelChild("VectorDictionary");
  const std::size_t fields = CountVectorFields(intake);
  if (fields == 0) return;
  // A translator says that there is no kernel.
  const bool has_other = intake.ModelChild("PolynomialKernelType") != nullptr ||
                         intake.ModelChild("RadialBasisKernelType") != nullptr ||
                         intake.ModelChild("SigmoidKernelType") != nullptr;
  const bool linear = intake.ModelChild("LinearKernelType") != nullptr || !has_other;
  LinearMachines machines(intake, vectors, fields, linear);
  for (DOMElement* machine : Children(intake.Model(), "SupportVectorMachine")) {
    machines.Read(machine);
  }
  if (!machines.Converted()) return;
  SetAttribute(intake.Model(), kRepresentation, "SupportVectors");
  RemoveAttribute(vectors, "numberOfVectors");
}

}  // namespace svmscore::intake
