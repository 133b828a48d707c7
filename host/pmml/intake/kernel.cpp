// A translator takes a kernel parameter of exactly -1 for one that is absent, and gives it the
// default 1.
#include <array>

#include "host/number_text.h"
#include "host/pmml/elements.h"
#include "host/pmml/intake/edit.h"
#include "host/pmml/intake/steps.h"
#include "host/tags.h"

namespace svmscore::intake {
namespace {

namespace tags = MCZandor_850::PMMLModelTags;

constexpr StepKind kMinusOne{
    "kernel-minus-one",
    "a kernel parameter of -1 is scored as -1.0000000000000002, its nearest neighbour; results "
    "may differ in their last digits"};

// The next double beyond -1.
constexpr const char* kNeighbour = "-1.0000000000000002";

bool IsMinusOne(const DOMElement* kernel, const std::string& name) {
  const auto text = FindAttribute(kernel, name);
  return text && ParseNumber(*text) == -1.0;
}

}  // namespace

void TellKernelNumbersFromAbsence(Intake& intake) {
  const std::array<DOMElement*, 4> kernels = {
      intake.ModelChild(tags::XML_ELE_SVM_KFTLINEAR), intake.ModelChild(tags::XML_ELE_SVM_KFTPOLY),
      intake.ModelChild(tags::XML_ELE_SVM_KFTRBF), intake.ModelChild(tags::XML_ELE_SVM_KFTSIGMOID)};
  DOMElement* kernel = nullptr;
  for (DOMElement* found : kernels) {
    if (found == nullptr) continue;
    if (kernel != nullptr) {
      return intake.Refuse(found, code::kBadContent, "a second kernel", tags::XML_ELE_SVMMODEL);
    }
    kernel = found;
  }
  if (kernel == nullptr || kernel == kernels[0]) return;
  for (const std::string& name : {tags::XML_ATT_SVM_GAMMA, tags::XML_ATT_SVM_BIAS}) {
    // The radial kernel has no coef0.
    if (!IsMinusOne(kernel, name) || (kernel == kernels[2] && name != tags::XML_ATT_SVM_GAMMA)) {
      continue;
    }
    intake.Change(kMinusOne, kernel);
    SetAttribute(kernel, name, kNeighbour);
  }
  // The neighbour of a whole degree is no whole degree: negative bases would have no power.
  if (kernel == kernels[1] && IsMinusOne(kernel, tags::XML_ATT_SVM_DEGREE)) {
    intake.Refuse(kernel, code::kUnsupported, "a degree of -1", NameOf(kernel));
  }
}

}  // namespace svmscore::intake
