#include <string>
#include <vector>

#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"
#include "host/xml/tags.h"
#include "svm/translator/translator.h"

namespace MCZandor_850 {

namespace tags = PMMLModelTags;

namespace {

std::string CategoryAttribute(xercesc::DOMElement* machine_element, DOMElemUtility* util,
                              const std::string& name, bool required) {
  if (machine_element == nullptr || util == nullptr) return {};
  try {
    return util->GetAttributeToString(machine_element, name, required);
  } catch (const SSException&) {
    svmscore::ThrowAt(machine_element, svmscore::code::kAttributeMissing, name,
                      tags::XML_ELE_SVM_SVM);
  }
}

// The number, or `fallback` where it is required and absent, or cannot be read.
double NumberOr(double fallback, xercesc::DOMElement* element, DOMElemUtility* util,
                const std::string& name, bool required) {
  if (element == nullptr || util == nullptr) return fallback;
  try {
    return util->GetAttributeToDouble(element, name, required);
  } catch (const SSException&) {
    return fallback;
  }
}

}  // namespace

void SVMTranslator::FillMachineAttributes(
    xercesc::DOMElement* machine_element, xercesc::DOMElement* coefficients, DOMElemUtility* util,
    const std::vector<const ScoreValue*>& categories, bool has_extension, bool target_required,
    bool alternate_required, SVMModelData::ST_SUPPORTVECTORMACHINE* machine, SVMModelData* data) {
  if (machine_element == nullptr || coefficients == nullptr || util == nullptr ||
      machine == nullptr || data == nullptr) {
    return;
  }
  const std::string target = GetTagCateAtt(machine_element, util, has_extension, target_required);
  const std::string alternate =
      GetAlternateTagCateAtt(machine_element, util, has_extension, alternate_required);
  const double threshold = GetSVMThresholdAtt(machine_element, util, data->GetDefThreshold());
  const double absolute_value = GetAbsoluteValueAtt(coefficients, util, true);
  if (!target.empty()) machine->target_index = GetIndexOfTargetCate(categories, target);
  if (!alternate.empty()) {
    machine->alternate_target_index = GetIndexOfTargetCate(categories, alternate);
  }
  machine->threshold = threshold;
  machine->absolute_value = absolute_value;
}

std::string SVMTranslator::GetTagCateAtt(xercesc::DOMElement* machine_element, DOMElemUtility* util,
                                         bool has_extension, bool required) {
  return CategoryAttribute(machine_element, util, tags::XML_ATT_PPC_TARGET_CAT,
                           required && !has_extension);
}

std::string SVMTranslator::GetAlternateTagCateAtt(xercesc::DOMElement* machine_element,
                                                  DOMElemUtility* util, bool has_extension,
                                                  bool required) {
  return CategoryAttribute(machine_element, util, tags::XML_ATT_SVM_ALTERNATETAGCATE,
                           required && !has_extension);
}

double SVMTranslator::GetSVMThresholdAtt(xercesc::DOMElement* machine_element, DOMElemUtility* util,
                                         double default_threshold) {
  return NumberOr(default_threshold, machine_element, util, tags::XML_VAL_THRESHOLD, true);
}

double SVMTranslator::GetAbsoluteValueAtt(xercesc::DOMElement* coefficients, DOMElemUtility* util,
                                          bool required) {
  return NumberOr(0.0, coefficients, util, tags::XML_ATT_SVM_ABSOLUTEVALUE, required);
}

double SVMTranslator::GetCoefficientAtt(xercesc::DOMElement* coefficient, DOMElemUtility* util) {
  return NumberOr(0.0, coefficient, util, tags::XML_ATT_VALUE, true);
}

SVMTranslator::CategoryIndex::CategoryIndex(SVMTranslator* translator,
                                            const std::vector<const ScoreValue*>& categories)
    : translator_(translator), categories_(&categories) {
  for (std::size_t i = 0; i < categories.size(); ++i) {
    if (categories[i] != nullptr) positions_.emplace(categories[i]->GetText(), static_cast<int>(i));
  }
  translator_->category_index_ = this;
}

SVMTranslator::CategoryIndex::~CategoryIndex() {
  translator_->category_index_ = nullptr;
}

int SVMTranslator::CategoryIndex::PositionOf(const std::string& text) const {
  const auto found = positions_.find(text);
  return found == positions_.end() ? static_cast<int>(categories_->size()) : found->second;
}

int SVMTranslator::GetIndexOfTargetCate(const std::vector<const ScoreValue*>& categories,
                                        const std::string& text) const {
  if (categories.empty() || text.empty()) return 0;
  if (category_index_ != nullptr && category_index_->Categories() == &categories) {
    return category_index_->PositionOf(text);
  }
  for (std::size_t i = 0; i < categories.size(); ++i) {
    if (categories[i] != nullptr && categories[i]->GetText() == text) return static_cast<int>(i);
  }
  return static_cast<int>(categories.size());
}

}  // namespace MCZandor_850
