// A translator treats a kernel parameter of exactly -1 as absent, and uses the default 1.
#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "host/intake/steps.h"
#include "host/text/number_text.h"
#include "host/xml/attributes.h"
#include "host/xml/edit.h"
#include "host/xml/transcoder.h"

namespace svmscore::intake {
namespace {

// The next double beyond -1.
constexpr const char* kNeighbour = "-1.0000000000000002";

constexpr std::array kKernelNames = {"LinearKernelType", "PolynomialKernelType",
                                     "RadialBasisKernelType", "SigmoidKernelType"};
constexpr std::array kParameters = {"gamma", "coef0", "degree"};

template <typename List>
bool Holds(const List& list, const std::string& name) {
  return std::find(list.begin(), list.end(), name) != list.end();
}

std::vector<std::string> ParametersOf(const std::string& kernel) {
  if (kernel == "PolynomialKernelType") return {"gamma", "coef0", "degree"};
  if (kernel == "RadialBasisKernelType") return {"gamma"};
  if (kernel == "SigmoidKernelType") return {"gamma", "coef0"};
  return {};
}

bool IsMinusOne(const DOMElement* kernel, const std::string& name) {
  const auto text = FindAttribute(kernel, name);
  return text && ParseNumber(*text) == -1.0;
}

// The kernel element that a translator uses; null if absent. Remarks on the others.
DOMElement* FirstKernel(Intake& intake) {
  for (const DOMElement* child = FirstElement(intake.Model()); child != nullptr;
       child = NextElement(child)) {
    const std::string name = NameOf(child);
    if (!IsKernelName(name) || Holds(kKernelNames, name)) continue;
    intake.Tell("unknown-kernel", child, "the kernel " + name, NameOf(intake.Model()));
  }
  DOMElement* first = nullptr;
  for (const char* name : kKernelNames) {
    for (DOMElement* kernel : Children(intake.Model(), name)) {
      if (first == nullptr) {
        first = kernel;
      } else {
        intake.Tell("second-kernel", kernel, "a second kernel", "SupportVectorMachineModel");
      }
    }
  }
  return first;
}

// Attributes that no kernel has, beside parameters that this one lacks.
void CheckKernelAttributes(Intake& intake, const DOMElement* kernel) {
  const std::vector<std::string> parameters = ParametersOf(NameOf(kernel));
  std::string absent;
  for (const std::string& name : parameters) {
    if (FindAttribute(kernel, name)) continue;
    absent += absent.empty() ? name : ", " + name;
  }
  bool misnamed = false;
  const xercesc::DOMNamedNodeMap* attributes = kernel->getAttributes();
  for (XMLSize_t i = 0; i < attributes->getLength(); ++i) {
    const std::string name = ToUtf8(attributes->item(i)->getNodeName());
    const bool foreign =
        name.starts_with("x-") || name.starts_with("xmlns") || name.find(':') != std::string::npos;
    if (foreign || name == "description" || Holds(parameters, name)) continue;
    if (Holds(kParameters, name)) {
      intake.Tell("attribute-ignored", kernel, "attribute " + name, NameOf(kernel));
      continue;
    }
    misnamed = !absent.empty();
    intake.Tell(misnamed ? Kind("kernel-parameter-misnamed") : Kind("unknown-kernel-attribute"),
                kernel, "attribute " + name + (misnamed ? ", without " + absent : ""),
                NameOf(kernel));
  }
  if (!absent.empty() && !misnamed) {
    intake.Tell("kernel-parameter-absent", kernel, "it does not state " + absent + ": 1 is used");
  }
}

void CheckGamma(Intake& intake, const DOMElement* kernel) {
  const std::string text = AttributeText(kernel, "gamma");
  const auto gamma = ParseNumber(text);
  if (!gamma || !(*gamma < 0.0)) return;
  intake.Tell("negative-gamma", kernel, text, "gamma", NameOf(kernel));
}

}  // namespace

bool IsKernelName(const std::string& name) {
  return name.ends_with("KernelType") || name.ends_with("Kernel");
}

void TellKernelNumbersFromAbsence(Intake& intake) {
  DOMElement* kernel = FirstKernel(intake);
  const std::string kind = NameOf(kernel);
  if (kernel == nullptr) return;
  CheckKernelAttributes(intake, kernel);
  if (kind == "RadialBasisKernelType") CheckGamma(intake, kernel);
  for (const std::string& name : ParametersOf(kind)) {
    if (name == "degree" || !IsMinusOne(kernel, name)) continue;
    intake.Tell("kernel-minus-one", kernel);
    SetAttribute(kernel, name, kNeighbour);
  }
  // The double next to a whole degree is not whole, and negative bases would have no power.
  if (kind == "PolynomialKernelType" && IsMinusOne(kernel, "degree")) {
    intake.Tell("degree-minus-one", kernel, "a degree of -1", kind);
  }
}

}  // namespace svmscore::intake
