#include <memory>

#include "host/model/scoring_log.h"
#include "host/model/ss_exception.h"
#include "host/xml/tags.h"
#include "svm/constants/messages.h"
#include "svm/translator/translator.h"

namespace MCZandor_850 {

namespace tags = PMMLModelTags;

SVMTranslator::SVMTranslator() : PMMLTranslator("") {}

ScoreModel* SVMTranslator::ParseFromTree(xercesc::DOMDocument* document,
                                         const std::string& encoding) {
  ScoringLog& log = ScoringLog::GetInstance();
  log.TraceText(1, "Enter:%s", "ParseFromTree");
  if (document == nullptr) {
    log.TraceText(1, "Exit:%s", "ParseFromTree");
    return nullptr;
  }
  NoteElement(nullptr);
  const auto util = std::make_unique<DOMElemUtility>(this, GetZandorTranscoder(encoding));
  const auto abandon = [this](SVMModel* model) { KeepAbandonedModel(model); };
  std::unique_ptr<SVMModel, decltype(abandon)> model(nullptr, abandon);
  try {
    xercesc::DOMElement* root = GetRootElement(document);
    xercesc::DOMElement* model_element = GetSVMModel(root, util.get());
    model.reset(CreateSVMModel(model_element));
    if (model) {
      // Transformations and mining fields name variables of the dictionary; the check of the target
      // needs the roles.
      SetVerionInfo(root, util.get(), model.get());
      SetDataDirectionary(root, util.get(), model.get());
      SetTransformDirectionary(root, model_element, util.get(), model.get());
      SetScoreDictVars(model_element, util.get(), model.get());
      SetSVMModel(model_element, util.get(), model.get());
    }
  } catch (SSException& error) {
    if (error.GetElement() == nullptr) error.SetElement(GetLastElement());
    throw;
  }
  log.TraceText(1, "Exit:%s", "ParseFromTree");
  return model.release();
}

ZandorTranscoder* SVMTranslator::GetZandorTranscoder(const std::string& encoding) {
  if (transcoder_ == nullptr) CreateTranscoder(encoding);
  return transcoder_;
}

xercesc::DOMElement* SVMTranslator::GetRootElement(xercesc::DOMDocument* document) {
  return document == nullptr ? nullptr : document->getDocumentElement();
}

xercesc::DOMElement* SVMTranslator::GetSVMModel(xercesc::DOMElement* root, DOMElemUtility* util) {
  if (root == nullptr || util == nullptr) return nullptr;
  return util->GetChildElemByName(root, tags::XML_ELE_SVMMODEL, true);
}

SVMModel* SVMTranslator::CreateSVMModel(xercesc::DOMElement* model_element) {
  return model_element == nullptr ? nullptr : new SVMModel;
}

void SVMTranslator::SetVerionInfo(xercesc::DOMElement* root, DOMElemUtility* util,
                                  ScoreModel* model) {
  if (root == nullptr || util == nullptr || model == nullptr) return;
  xercesc::DOMElement* application =
      util->GetElemFromNodeList(root, tags::XML_ELE_APPLICATION, 0, false);
  if (application == nullptr) return;
  const std::string version = util->GetAttributeToString(application, tags::XML_ATT_VERSION, false);
  if (version.empty()) return;
  model->SetVersionInfo(new VersionInfo(version));
}

void SVMTranslator::SetSVMModel(xercesc::DOMElement* model_element, DOMElemUtility* util,
                                SVMModel* model) {
  if (model_element == nullptr || util == nullptr || model == nullptr) return;
  auto data = std::make_unique<SVMModelData>();
  const unsigned long machines = ParseModelAttributes(model_element, util, model, data.get());
  ParseVectorDictionary(model_element, util, model, data.get());
  ParseSupportVectorMachine(machines, model_element, util, model, data.get());
  ParseKernelType(model_element, util, data.get());
  model->SetSupportVectorMachineModel(data.release());
}

}  // namespace MCZandor_850
