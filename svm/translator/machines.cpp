#include <memory>
#include <string>
#include <vector>

#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"
#include "host/xml/tags.h"
#include "svm/translator/translator.h"

namespace MCZandor_850 {

namespace tags = PMMLModelTags;
namespace code = svmscore::code;

namespace {

// The child `name` of a machine, which must exist.
xercesc::DOMElement* ChildOfMachine(xercesc::DOMElement* machine_element, DOMElemUtility* util,
                                    const std::string& name) {
  if (machine_element == nullptr || util == nullptr) return nullptr;
  try {
    return util->GetChildElemByName(machine_element, name, true);
  } catch (const SSException&) {
    svmscore::ThrowAt(machine_element, code::kChildMissing, name, tags::XML_ELE_SVM_SVM);
  }
}

// The number of children `name` of `list`, which must have at least one; `list_name` is its name.
unsigned long CountOf(xercesc::DOMElement* list, DOMElemUtility* util, const std::string& name,
                      const std::string& list_name) {
  if (list == nullptr || util == nullptr) return 0;
  try {
    return util->GetNodeListLength(list, name, true);
  } catch (const SSException&) {
    svmscore::ThrowAt(list, code::kLacksChildren, list_name);
  }
}

xercesc::DOMElement* ItemOf(xercesc::DOMNodeList* list, unsigned long index,
                            const std::string& name) {
  if (list == nullptr) svmscore::ThrowAt(nullptr, code::kLacksChildren, name);
  return static_cast<xercesc::DOMElement*>(list->item(index));
}

}  // namespace

unsigned long SVMTranslator::GetNumOfSVMachine(xercesc::DOMElement* model_element,
                                               DOMElemUtility* util) {
  if (model_element == nullptr || util == nullptr) return 0;
  const unsigned long count = util->GetNodeListLength(model_element, tags::XML_ELE_SVM_SVM, true);
  if (count == 0) {
    svmscore::ThrowAt(model_element, code::kChildMissing, tags::XML_ELE_SVM_SVM,
                      tags::XML_ELE_SVMMODEL);
  }
  return count;
}

bool SVMTranslator::IsRequireOfTagCate(SVMModelData* data) const {
  return data != nullptr && data->IsClassification();
}

bool SVMTranslator::IsRequireOfAlternateTagCate(SVMModelData* data) const {
  if (data == nullptr || !data->IsClassification()) return false;
  return data->IsBinaryClassification() ||
         (data->IsMultiClassClassification() && data->IsClassOneAgainstOne());
}

void SVMTranslator::ParseSupportVectorMachine(unsigned long machines,
                                              xercesc::DOMElement* model_element,
                                              DOMElemUtility* util, SVMModel* model,
                                              SVMModelData* data) {
  if (model_element == nullptr || util == nullptr || model == nullptr || data == nullptr) return;
  const bool is_classification = data->IsClassification();
  const bool target_required = IsRequireOfTagCate(data);
  const bool alternate_required = IsRequireOfAlternateTagCate(data);
  const std::vector<const ScoreValue*>& categories = model->GetTargetCategories();
  const CategoryIndex index(this, categories);
  xercesc::DOMNodeList* list = GetElementsByTagName(model_element, tags::XML_ELE_SVM_SVM);
  // The last machine decides for the model.
  bool has_extension = false;
  bool failed = false;
  for (unsigned long i = 0; i < machines; ++i) {
    xercesc::DOMElement* element = GetElemOfSVMachine(list, i);
    xercesc::DOMElement* support_vectors = nullptr;
    xercesc::DOMElement* coefficients = nullptr;
    unsigned long count = 0;
    failed = !DoValidationForMachine(element, util, support_vectors, coefficients, count);
    if (failed) break;
    auto machine = std::make_unique<SVMModelData::ST_SUPPORTVECTORMACHINE>();
    failed =
        !MapCoefficientToDataSet(support_vectors, coefficients, util, count, data, machine.get());
    if (failed) break;
    has_extension =
        FillVEMAExtensionToMachine(element, util, is_classification, categories, machine.get());
    FillMachineAttributes(element, coefficients, util, categories, has_extension, target_required,
                          alternate_required, machine.get(), data);
    data->AddSupportVectorMachine(machine.release());
  }
  data->SetVEMAExtension(has_extension);
  data->SetAppendProbability(has_extension);
  if (failed) svmscore::ThrowAt(model_element, code::kInvalidContent, tags::XML_ELE_SVM_SVM);
}

xercesc::DOMElement* SVMTranslator::GetElemOfSVMachine(xercesc::DOMNodeList* machines,
                                                       unsigned long index) {
  if (machines == nullptr) {
    svmscore::ThrowAt(nullptr, code::kChildMissing, tags::XML_ELE_SVM_SVM, tags::XML_ELE_SVMMODEL);
  }
  return static_cast<xercesc::DOMElement*>(machines->item(index));
}

bool SVMTranslator::DoValidationForMachine(xercesc::DOMElement* machine_element,
                                           DOMElemUtility* util,
                                           xercesc::DOMElement*& support_vectors,
                                           xercesc::DOMElement*& coefficients,
                                           unsigned long& coefficient_count) {
  if (machine_element == nullptr || util == nullptr) return true;
  support_vectors = GetElemOfSupportVectors(machine_element, util);
  coefficients = GetElemOfCoefficients(machine_element, util);
  // Counting them all is only for the message that there are none.
  if (util->GetChildElemByName(support_vectors, tags::XML_ELE_SVM_SUPPORTVECTOR, false) ==
      nullptr) {
    GetNumOfSupportVector(support_vectors, util);
  }
  coefficient_count = GetNumOfCoefficient(coefficients, util);
  return true;
}

xercesc::DOMElement* SVMTranslator::GetElemOfSupportVectors(xercesc::DOMElement* machine_element,
                                                            DOMElemUtility* util) {
  return ChildOfMachine(machine_element, util, tags::XML_ELE_SVM_SUPPORTVECTORS);
}

xercesc::DOMElement* SVMTranslator::GetElemOfCoefficients(xercesc::DOMElement* machine_element,
                                                          DOMElemUtility* util) {
  return ChildOfMachine(machine_element, util, tags::XML_ELE_SVM_COEFFICIENTS);
}

unsigned long SVMTranslator::GetNumOfSupportVector(xercesc::DOMElement* support_vectors,
                                                   DOMElemUtility* util) {
  return CountOf(support_vectors, util, tags::XML_ELE_SVM_SUPPORTVECTOR,
                 tags::XML_ELE_SVM_SUPPORTVECTORS);
}

unsigned long SVMTranslator::GetNumOfCoefficient(xercesc::DOMElement* coefficients,
                                                 DOMElemUtility* util) {
  return CountOf(coefficients, util, tags::XML_ELE_SVM_COEFFICIENT, tags::XML_ELE_SVM_COEFFICIENTS);
}

xercesc::DOMElement* SVMTranslator::GetElemOfSupportVector(xercesc::DOMNodeList* support_vectors,
                                                           unsigned long index) {
  return ItemOf(support_vectors, index, tags::XML_ELE_SVM_SUPPORTVECTOR);
}

xercesc::DOMElement* SVMTranslator::GetElemOfCoefficient(xercesc::DOMNodeList* coefficients,
                                                         unsigned long index) {
  return ItemOf(coefficients, index, tags::XML_ELE_SVM_COEFFICIENT);
}

bool SVMTranslator::MapCoefficientToDataSet(xercesc::DOMElement* support_vectors,
                                            xercesc::DOMElement* coefficients, DOMElemUtility* util,
                                            unsigned long coefficient_count, SVMModelData* data,
                                            SVMModelData::ST_SUPPORTVECTORMACHINE* machine) {
  if (coefficient_count == 0 || machine == nullptr) return true;
  if (support_vectors == nullptr || coefficients == nullptr || util == nullptr || data == nullptr) {
    return false;
  }
  xercesc::DOMNodeList* vector_list =
      GetElementsByTagName(support_vectors, tags::XML_ELE_SVM_SUPPORTVECTOR);
  xercesc::DOMNodeList* coefficient_list =
      GetElementsByTagName(coefficients, tags::XML_ELE_SVM_COEFFICIENT);
  bool more = vector_list != nullptr;
  for (unsigned long i = 0; i < coefficient_count; ++i) {
    // Beyond its end a list would be searched from its beginning.
    xercesc::DOMElement* vector_element = more ? GetElemOfSupportVector(vector_list, i) : nullptr;
    more = vector_element != nullptr;
    xercesc::DOMElement* coefficient_element = GetElemOfCoefficient(coefficient_list, i);
    const std::string id = GetVectorIDAtt(vector_element, util);
    const double value = GetCoefficientAtt(coefficient_element, util);
    MCSVM_700::SVMDataCase* instance = data->GetVectorInstance(id);
    if (instance == nullptr) continue;
    machine->coefficients.push_back(value);
    machine->support_vectors.push_back(instance);
  }
  return true;
}

}  // namespace MCZandor_850
