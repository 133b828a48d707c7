#include <array>
#include <string>
#include <utility>

#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"
#include "host/xml/tags.h"
#include "svm/translator/translator.h"

namespace MCZandor_850 {

namespace tags = PMMLModelTags;

namespace {

// What a host returns for an attribute that is absent. A document that states exactly this number
// is read as if the attribute were absent.
constexpr double kAbsent = -1.0;

}  // namespace

void SVMTranslator::ParseKernelType(xercesc::DOMElement* model_element, DOMElemUtility* util,
                                    SVMModelData* data) {
  if (model_element == nullptr || util == nullptr || data == nullptr) return;
  const std::array<std::pair<const std::string*, SVMConst::KernelFunctionType>, 4> kinds = {{
      {&tags::XML_ELE_SVM_KFTLINEAR, SVMConst::kLinear},
      {&tags::XML_ELE_SVM_KFTPOLY, SVMConst::kPolynomial},
      {&tags::XML_ELE_SVM_KFTRBF, SVMConst::kRadialBasis},
      {&tags::XML_ELE_SVM_KFTSIGMOID, SVMConst::kSigmoid},
  }};
  xercesc::DOMElement* kernel = nullptr;
  for (const auto& [tag, kind] : kinds) {
    kernel = util->GetChildElemByName(model_element, *tag, false);
    if (kernel != nullptr) {
      data->SetSVMKernelType(kind);
      break;
    }
  }
  if (kernel == nullptr) {
    svmscore::ThrowAt(model_element, svmscore::code::kChildMissing, tags::XML_ELE_SVM_KFTLINEAR,
                      tags::XML_ELE_SVMMODEL);
  }
  const double gamma = util->GetAttributeToDouble(kernel, tags::XML_ATT_SVM_GAMMA, false);
  if (gamma != kAbsent) data->SetSVMKernelTypeGamma(gamma);
  const double coef0 = util->GetAttributeToDouble(kernel, tags::XML_ATT_SVM_BIAS, false);
  if (coef0 != kAbsent) data->SetSVMKernelTypeCoef0(coef0);
  const double degree = util->GetAttributeToDouble(kernel, tags::XML_ATT_SVM_DEGREE, false);
  if (degree != kAbsent) data->SetSVMKernelTypeDegree(degree);
}

}  // namespace MCZandor_850
