#include <memory>
#include <string>

#include "host/model/ss_exception.h"
#include "host/model/var_stats.h"
#include "host/xml/tags.h"
#include "svm/translator/translator.h"

namespace MCZandor_850 {

namespace tags = PMMLModelTags;

void SVMTranslator::SetDataDirectionary(xercesc::DOMElement* root, DOMElemUtility* util,
                                        ScoreModel* model) {
  if (root == nullptr || util == nullptr || model == nullptr) return;
  xercesc::DOMElement* element =
      util->GetChildElemByName(root, tags::XML_ELE_DATADICTIONARY, false);
  if (element == nullptr) return;
  data_dictionary_ = nullptr;
  data_dictionary_ = ParseDictionary(element, true);
  if (data_dictionary_ != nullptr) model->SetScoreDictionary(data_dictionary_);
}

void SVMTranslator::SetTransformDirectionary(xercesc::DOMElement* root,
                                             xercesc::DOMElement* model_element,
                                             DOMElemUtility* util, ScoreModel* model) {
  if (root == nullptr || model_element == nullptr || util == nullptr || model == nullptr) return;
  // This system reads the transformations of versions 3 and 4, not the older ones of version 2.
  const std::string version = util->GetAttributeToString(root, tags::XML_ATT_VERSION, false);
  const bool enabled = !version.empty() && (version[0] == '3' || version[0] == '4');
  xercesc::DOMElement* element =
      util->GetChildElemByName(root, tags::XML_ELE_TRANSFORMATION, false);
  if (element == nullptr) {
    element = util->GetChildElemByName(model_element, tags::XML_ELE_LOCALTRANSFORMATIONS, false);
  }
  if (!enabled || element == nullptr) return;
  try {
    std::unique_ptr<TransformationDictionary> transformations(
        HandleTransformationDictionary(element, model->GetDictionary()));
    if (!transformations) return;
    transformations->SetUpDerivedCaseRecord();
    model->SetTransformationScoreDictionary(transformations.release());
  } catch (const SSException&) {
  }
}

void SVMTranslator::SetScoreDictVars(xercesc::DOMElement* model_element, DOMElemUtility* util,
                                     SVMModel* model) {
  if (model_element == nullptr || util == nullptr || model == nullptr) return;
  xercesc::DOMElement* schema =
      util->GetChildElemByName(model_element, tags::XML_ELE_MININGSCHEMA, false);
  if (schema == nullptr) return;
  for (xercesc::DOMElement* child = GetFirstChildElt(schema); child != nullptr;
       child = GetNextSiblingElt(child)) {
    if (IsEqual(child->getTagName(), tags::XML_ELE_MININGFIELD)) {
      ParseMiningField(child, util, model);
    }
  }
}

void SVMTranslator::ParseMiningField(xercesc::DOMElement* mining_field, DOMElemUtility* util,
                                     SVMModel* model) {
  if (mining_field == nullptr || util == nullptr || model == nullptr) return;
  ScoreDictionary* dictionary = model->GetDictionary();
  const std::string name =
      util->GetAttributeToString(mining_field, tags::XML_ATT_MININGFIELD_NAME, true);
  if (name.empty() || dictionary == nullptr) return;
  const ScoreDictVar* var = dictionary->FindVar(name);
  if (var == nullptr) return;
  SetDictVarRole(mining_field, util, model, var);
  SetDictVarMissValueReplacement(mining_field, util, model, var);
}

void SVMTranslator::SetDictVarRole(xercesc::DOMElement* mining_field, DOMElemUtility* util,
                                   SVMModel* model, const ScoreDictVar* var) {
  if (mining_field == nullptr || util == nullptr || model == nullptr || var == nullptr) return;
  ScoreModel::VarRole role = ScoreModel::kActiveRole;
  try {
    const std::string usage =
        util->GetAttributeToString(mining_field, tags::XML_ATT_MININGFIELD_USAGETYPE, true);
    if (usage == tags::XML_ATT_MF_FUT_ACTIVE) {
      role = ScoreModel::kActiveRole;
    } else if (usage == tags::XML_ATT_MF_FUT_PREDICTED || usage == tags::XML_ATT_MF_FUT_TARGET) {
      role = ScoreModel::kTargetRole;
    } else {
      role = ScoreModel::kOtherRole;
    }
  } catch (const SSException&) {
    // A field without a usage type is an input.
  }
  model->SetVarRole(var, role);
}

void SVMTranslator::SetDictVarMissValueReplacement(xercesc::DOMElement* mining_field,
                                                   DOMElemUtility* util, ScoreModel* model,
                                                   const ScoreDictVar* var) {
  constexpr int kLastKindWithReplacement = 2;
  constexpr int kStringStorage = 1;
  if (mining_field == nullptr || util == nullptr || model == nullptr || var == nullptr) return;
  const std::string text =
      util->GetAttributeToString(mining_field, tags::XML_ATT_MININGFIELD_MISSREPLACE, false);
  if (text.empty() || var->GetKindCode() > kLastKindWithReplacement) return;
  std::unique_ptr<ScoreValue> replacement;
  if (var->GetStorageType() == kStringStorage) {
    replacement = std::make_unique<StringValue>(text);
  } else {
    replacement = std::make_unique<NumericValue>(
        util->GetAttributeToDouble(mining_field, tags::XML_ATT_MININGFIELD_MISSREPLACE, false));
  }
  auto stats = std::make_unique<VarStats>();
  stats->SetMissingReplacement(replacement.get());
  // Dictionaries hold variables that may change while a document is translated; only the models'
  // view of them is constant.
  const_cast<ScoreDictVar*>(var)->SetVarStats(stats.release());
  model->SetMissingValuePolicy(ScoreModel::kReplaceMissing);
}

std::vector<int> SVMTranslator::GetEmptyScoreDictVars(ScoreDictionary* dictionary) {
  std::vector<int> positions;
  if (dictionary == nullptr) return positions;
  const std::vector<ScoreDictVar*> variables = dictionary->GetVariables();
  for (std::size_t i = 0; i < variables.size(); ++i) {
    if (variables[i] != nullptr && variables[i]->DeclaresNoValues()) {
      positions.push_back(static_cast<int>(i));
    }
  }
  return positions;
}

bool SVMTranslator::FillCateValuesToDataDict(ScoreDictionary* dictionary,
                                             TransformationDictionary* transformations,
                                             const std::string& field_name) {
  if (transcoder_ == nullptr || dictionary == nullptr || transformations == nullptr ||
      field_name.empty()) {
    return false;
  }
  const TransformVar* derived = transformations->FindDerived(field_name);
  if (derived == nullptr || derived->GetFieldName().empty()) return false;
  ScoreDictVar* var = dictionary->FindVar(derived->GetFieldName());
  if (var == nullptr || !var->DeclaresNoValues()) return false;
  const std::vector<const ScoreValue*>& encoded = derived->GetAllEncodedValues();
  if (encoded.size() != 1 || encoded[0] == nullptr) return false;
  const std::unique_ptr<ScoreValue> value = encoded[0]->Clone();
  const std::string text = encoded[0]->GetText();
  if (!value || text.empty()) return false;
  return var->AddCategory(*value, text);
}

}  // namespace MCZandor_850
