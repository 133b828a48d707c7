// A document read by the translator, one stage after another.
#ifndef TESTS_TRANSLATOR_TRANSLATION_STAGES_H_
#define TESTS_TRANSLATOR_TRANSLATION_STAGES_H_

#include <string>

#include "host/xml/document.h"
#include "svm/translator/translator.h"

namespace svmscore_test {

// Keeps what was read, so that it can be inspected.
struct Reading {
  explicit Reading(const std::string& text)
      : document(svmscore::PmmlDocument::FromText(text, "test.pmml")),
        util(&translator, translator.GetZandorTranscoder("UTF-8")) {
    xercesc::DOMElement* root = translator.GetRootElement(document.Dom());
    svm = translator.GetSVMModel(root, &util);
    translator.SetVerionInfo(root, &util, &model);
    translator.SetDataDirectionary(root, &util, &model);
    translator.SetTransformDirectionary(root, svm, &util, &model);
    translator.SetScoreDictVars(svm, &util, &model);
    const unsigned long count = translator.ParseModelAttributes(svm, &util, &model, &data);
    translator.ParseVectorDictionary(svm, &util, &model, &data);
    translator.ParseSupportVectorMachine(count, svm, &util, &model, &data);
    translator.ParseKernelType(svm, &util, &data);
  }

  const MCZandor_850::SVMModelData::ST_SUPPORTVECTORMACHINE& Machine(std::size_t i = 0) const {
    return *data.GetSupportVectorMachines().at(i);
  }
  const MCZandor_850::ScoreDictVar& Var(const std::string& name) const {
    return *model.GetDictionary()->FindVar(name);
  }

  svmscore::PmmlDocument document;
  MCZandor_850::SVMTranslator translator;
  MCZandor_850::DOMElemUtility util;
  xercesc::DOMElement* svm = nullptr;
  MCZandor_850::SVMModel model;
  MCZandor_850::SVMModelData data;
};

}  // namespace svmscore_test

#endif  // TESTS_TRANSLATOR_TRANSLATION_STAGES_H_
