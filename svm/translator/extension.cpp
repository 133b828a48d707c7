#include <memory>
#include <string>
#include <vector>

#include "host/model/ss_exception.h"
#include "host/xml/tags.h"
#include "host/xml/transcoder.h"
#include "svm/translator/translator.h"

namespace MCZandor_850 {

namespace tags = PMMLModelTags;

xercesc::DOMElement* SVMTranslator::GetElemOfVEMAExtension(xercesc::DOMElement* machine_element,
                                                           DOMElemUtility* util) {
  if (machine_element == nullptr || util == nullptr) return nullptr;
  xercesc::DOMElement* extension =
      util->GetChildElemByName(machine_element, tags::XML_ELE_EXTENSION, false);
  if (extension == nullptr) return nullptr;
  const std::string extender =
      util->GetAttributeToString(extension, tags::XML_ATT_EXTENSION_EXTENDER, false);
  return extender == tags::XML_VAL_EXTENSION_EXTENDER ? extension : nullptr;
}

bool SVMTranslator::GetStdDevFromVEMAExt(xercesc::DOMElement* extension, DOMElemUtility* util,
                                         double& std_dev) {
  if (extension == nullptr || util == nullptr) return false;
  xercesc::DOMElement* element =
      util->GetChildElemByName(extension, tags::XML_ELE_SVM_STANDARDDEVIATION, false);
  if (element == nullptr) return false;
  NoteElement(element);
  std_dev = VerifyDouble(svmscore::ToUtf16(svmscore::ElementText(element)).c_str());
  return true;
}

bool SVMTranslator::GetResCategoryFromVEMAExt(xercesc::DOMElement* extension, DOMElemUtility* util,
                                              const std::vector<const ScoreValue*>& categories,
                                              int& response_index, int& non_response_index) {
  if (extension == nullptr || util == nullptr) return false;
  try {
    xercesc::DOMElement* element =
        util->GetChildElemByName(extension, tags::XML_ELE_SVM_RESPONSECATEGORY, true);
    const std::string response =
        util->GetAttributeToString(element, tags::XML_ATT_SVM_RESPONSE, true);
    const std::string non_response =
        util->GetAttributeToString(element, tags::XML_ATT_SVM_NONRESPONSE, true);
    if (response.empty() || non_response.empty()) return false;
    response_index = GetIndexOfTargetCate(categories, response);
    non_response_index = GetIndexOfTargetCate(categories, non_response);
    return true;
  } catch (const SSException&) {
    return false;
  }
}

bool SVMTranslator::GetProbabilityParamFromVEMAExt(xercesc::DOMElement* extension,
                                                   DOMElemUtility* util, double& a, double& b) {
  if (extension == nullptr || util == nullptr) return false;
  try {
    xercesc::DOMElement* element =
        util->GetChildElemByName(extension, tags::XML_ELE_SVM_PROBABILITYPARAM, true);
    a = util->GetAttributeToDouble(element, tags::XML_ATT_SVM_PARAMA, true);
    b = util->GetAttributeToDouble(element, tags::XML_ATT_SVM_PARAMB, true);
    return true;
  } catch (const SSException&) {
    return false;
  }
}

bool SVMTranslator::FillVEMAExtensionToMachine(xercesc::DOMElement* machine_element,
                                               DOMElemUtility* util, bool is_classification,
                                               const std::vector<const ScoreValue*>& categories,
                                               SVMModelData::ST_SUPPORTVECTORMACHINE* machine) {
  if (machine == nullptr) return false;
  xercesc::DOMElement* extension = GetElemOfVEMAExtension(machine_element, util);
  if (extension == nullptr) return false;
  auto record = std::make_unique<ST_MACHINEEXTENSION>();
  if (!is_classification) {
    double std_dev = 0.0;
    if (!GetStdDevFromVEMAExt(extension, util, std_dev)) return false;
    record->standard_deviation = std_dev;
  } else {
    int response = 0;
    int non_response = 0;
    double a = record->a;
    double b = record->b;
    if (!GetResCategoryFromVEMAExt(extension, util, categories, response, non_response) ||
        !GetProbabilityParamFromVEMAExt(extension, util, a, b)) {
      return false;
    }
    record->response_index = response;
    record->non_response_index = non_response;
    record->a = a;
    record->b = b;
  }
  delete machine->extension;
  machine->extension = record.release();
  return true;
}

}  // namespace MCZandor_850
