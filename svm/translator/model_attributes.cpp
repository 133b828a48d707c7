#include <cstdint>
#include <string>

#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"
#include "host/xml/tags.h"
#include "svm/translator/translator.h"

namespace MCZandor_850 {

namespace tags = PMMLModelTags;
namespace code = svmscore::code;

namespace {

constexpr int kCategoricalType = 3;

// ASCII only, whatever the locale.
void LowerCase(std::string& text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
}

void RefuseNotScorable(xercesc::DOMElement* model_element, DOMElemUtility* util) {
  std::string scorable =
      util->GetAttributeToString(model_element, tags::XML_ATT_RM_IS_SCORABLE, false);
  LowerCase(scorable);
  if (scorable == "false") {
    svmscore::ThrowAt(model_element, code::kNotScorable, tags::XML_ATT_RM_IS_SCORABLE,
                      tags::XML_ELE_PMML);
  }
}

void ParseFunctionName(xercesc::DOMElement* model_element, DOMElemUtility* util,
                       SVMModelData* data) {
  const std::string name =
      util->GetAttributeToString(model_element, tags::XML_ATT_MINING_FUNCTIONNAME, true);
  if (name == tags::XML_VAL_SVM_CLASSIFICATION) {
    data->SetFunctionName(true);
  } else if (name == tags::XML_VAL_SVM_REGRESSION) {
    data->SetFunctionName(false);
  } else {
    svmscore::ThrowAt(model_element, code::kBadValue, name, tags::XML_ATT_MINING_FUNCTIONNAME,
                      tags::XML_ELE_SVMMODEL);
  }
}

// These three may be absent or unreadable: the data keeps its defaults.
void ParseDecisionAttributes(xercesc::DOMElement* model_element, DOMElemUtility* util,
                             SVMModelData* data) {
  try {
    data->SetDefThreshold(util->GetAttributeToDouble(model_element, tags::XML_ATT_THRESHOLD, true));
  } catch (const SSException&) {
  }
  try {
    if (util->GetAttributeToString(model_element, tags::XML_ATT_SVM_CLASSMETHOLD, true) ==
        tags::XML_ATT_SVM_ONEAGAINSTONE) {
      data->SetClassificationMethod(false);
    }
  } catch (const SSException&) {
  }
  try {
    if (util->GetAttributeToString(model_element, tags::XML_ATT_SVM_MAXWINS, true) == "true") {
      data->SetMaxWins(true);
    }
  } catch (const SSException&) {
  }
}

// k(k-1)/2 in 32 bits: the product wraps, the division truncates.
int PairCount(int categories) {
  const std::uint32_t k = static_cast<std::uint32_t>(categories);
  return static_cast<std::int32_t>(k * (k - 1u)) / 2;
}

}  // namespace

unsigned long SVMTranslator::ParseModelAttributes(xercesc::DOMElement* model_element,
                                                  DOMElemUtility* util, SVMModel* model,
                                                  SVMModelData* data) {
  if (model_element == nullptr || util == nullptr || model == nullptr || data == nullptr) return 0;
  RefuseNotScorable(model_element, util);
  ParseFunctionName(model_element, util, data);
  ParseDecisionAttributes(model_element, util, data);
  xercesc::DOMElement* targets =
      util->GetChildElemByName(model_element, tags::XML_ELE_TARGETS, false);
  if (targets != nullptr && data_dictionary_ != nullptr) HandleTargets(targets, data_dictionary_);
  const unsigned long machines = GetNumOfSVMachine(model_element, util);
  if (!DoValidationForTargets(model, machines, data)) {
    svmscore::ThrowAt(targets != nullptr ? targets : model_element, code::kInvalidContent,
                      tags::XML_ELE_TARGETS);
  }
  model->SetTargetCategories();
  return machines;
}

bool SVMTranslator::DoValidationForTargets(SVMModel* model, unsigned long machines,
                                           SVMModelData* data) {
  if (model == nullptr || data == nullptr) return false;
  const ScoreDictVar* target = model->GetTargetVar();
  if (target == nullptr) return false;
  const int categories = target->GetCategoryCount();
  if (target->GetTypeCode() == kCategoricalType && categories < 1) return false;
  bool fits = false;
  if (!data->IsClassification()) {
    fits = categories == 1 && machines == 1;
  } else if (categories > 2 && data->IsClassOneAgainstAll()) {
    fits = true;
  } else {
    // A count that wrapped below zero never matches the number of machines.
    const int pairs = PairCount(categories);
    fits = pairs >= 0 && machines == static_cast<unsigned long>(pairs);
  }
  if (fits) data->SetCateNumOfTarget(categories);
  return fits;
}

}  // namespace MCZandor_850
