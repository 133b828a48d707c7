// A translator takes a kernel parameter of exactly -1 for one that is absent, and gives it the
// default 1.
#include "host/intake/steps.h"
#include "host/text/number_text.h"
#include "host/xml/attributes.h"
#include "host/xml/edit.h"

namespace svmscore::intake {
namespace {

// The next double beyond -1.
constexpr const char* kNeighbour = "-1.0000000000000002";

bool IsMinusOne(const DOMElement* kernel, const std::string& name) {
  const auto text = FindAttribute(kernel, name);
  return text && ParseNumber(*text) == -1.0;
}

// The one that a translator takes; null where there is none. Remarks on the others.
DOMElement* FirstKernel(Intake& intake) {
  DOMElement* first = nullptr;
  for (const char* name :
       {"LinearKernelType", "PolynomialKernelType", "RadialBasisKernelType", "SigmoidKernelType"}) {
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

}  // namespace

void TellKernelNumbersFromAbsence(Intake& intake) {
  DOMElement* kernel = FirstKernel(intake);
  const std::string kind = NameOf(kernel);
  if (kernel == nullptr || kind == "LinearKernelType") return;
  for (const std::string name : {"gamma", "coef0"}) {
    const bool used = kind != "RadialBasisKernelType" || name == "gamma";
    if (!used || !IsMinusOne(kernel, name)) continue;
    intake.Tell("kernel-minus-one", kernel);
    SetAttribute(kernel, name, kNeighbour);
  }
  // The neighbour of a whole degree is no whole degree: negative bases would have no power.
  if (kind == "PolynomialKernelType" && IsMinusOne(kernel, "degree")) {
    intake.Tell("degree-minus-one", kernel, "a degree of -1", kind);
  }
}

}  // namespace svmscore::intake
