#include <string>
#include <utility>
#include <vector>

#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"
#include "host/xml/array_numbers.h"
#include "host/xml/tags.h"
#include "host/xml/transcoder.h"
#include "svm/translator/splitter.h"
#include "svm/translator/translator.h"

namespace MCZandor_850 {

namespace tags = PMMLModelTags;
namespace code = svmscore::code;

namespace {

// Appends the entries, and 1-based positions, of a list that the document keeps as numbers.
void AppendEntries(svmscore::ArrayNumbers& numbers, const xercesc::DOMElement* list,
                   std::vector<double>& values) {
  std::vector<double> entries = numbers.TakeEntries(list);
  if (values.empty()) {
    values = std::move(entries);
  } else {
    values.insert(values.end(), entries.begin(), entries.end());
  }
}

void AppendPositions(const svmscore::NumberList& list, std::vector<int>& indices) {
  indices.insert(indices.end(), list.positions->begin(), list.positions->end());
}

}  // namespace

void SVMTranslator::ParseVectorDictionary(xercesc::DOMElement* model_element, DOMElemUtility* util,
                                          SVMModel* model, SVMModelData* data) {
  if (model_element == nullptr || util == nullptr || model == nullptr || data == nullptr) return;
  xercesc::DOMElement* dictionary = nullptr;
  try {
    dictionary = util->GetChildElemByName(model_element, tags::XML_ELE_SVM_VECTORDICTION, true);
  } catch (const SSException&) {
    svmscore::ThrowAt(model_element, code::kChildMissing, tags::XML_ELE_SVM_VECTORDICTION,
                      tags::XML_ELE_SVMMODEL);
  }
  if (dictionary == nullptr) return;
  ParseVectorFields(dictionary, util, model, data);
  const unsigned long count = GetVectorInstances(dictionary, util);
  xercesc::DOMNodeList* instances =
      GetElementsByTagName(dictionary, tags::XML_ELE_SVM_VECTORINSTANCE);
  for (unsigned long i = 0; i < count; ++i) ParseVectorInstance(instances, util, i, data);
}

int SVMTranslator::ParseVectorFields(xercesc::DOMElement* vector_dictionary, DOMElemUtility* util,
                                     SVMModel* model, SVMModelData* data) {
  if (vector_dictionary == nullptr || util == nullptr || model == nullptr || data == nullptr) {
    return 0;
  }
  xercesc::DOMElement* fields = nullptr;
  try {
    fields = util->GetChildElemByName(vector_dictionary, tags::XML_ELE_SVM_VECTORFIELDS, true);
  } catch (const SSException&) {
    svmscore::ThrowAt(vector_dictionary, code::kChildMissing, tags::XML_ELE_SVM_VECTORFIELDS,
                      tags::XML_ELE_SVM_VECTORDICTION);
  }
  const bool some_declare_no_values = !GetEmptyScoreDictVars(data_dictionary_).empty();
  TransformationDictionary* transformations = model->GetTransformationDictionary();
  for (xercesc::DOMElement* child = GetFirstChildElt(fields); child != nullptr;
       child = GetNextSiblingElt(child)) {
    const XMLCh* name = child->getNodeName();
    if (IsEqual(name, tags::XML_ELE_EXTENSION)) continue;
    if (IsEqual(name, tags::XML_ELE_FIELDREF)) {
      std::string field = util->GetAttributeToString(child, tags::XML_ATT_SVM_FIELD, true);
      std::string replacement =
          util->GetAttributeToString(child, tags::XML_ATT_MISSREPVALUE, false);
      if (some_declare_no_values) {
        FillCateValuesToDataDict(data_dictionary_, transformations, field);
      }
      data->AddFieldRef(std::move(field), std::move(replacement));
    } else if (IsEqual(name, tags::XML_ELE_CATEGORICAL_PREDICTOR)) {
      std::string variable = util->GetAttributeToString(child, tags::XML_ATT_NAME, true);
      std::string value = util->GetAttributeToString(child, tags::XML_ATT_VALUE, true);
      const double coefficient = util->GetAttributeToDouble(child, tags::XML_ATT_COEFFICIENT, true);
      data->AddCategoricalPredictor(std::move(variable), std::move(value), coefficient);
    }
  }
  return 0;
}

unsigned long SVMTranslator::GetVectorInstances(xercesc::DOMElement* vector_dictionary,
                                                DOMElemUtility* util) {
  if (vector_dictionary == nullptr || util == nullptr) return 0;
  try {
    return util->GetNodeListLength(vector_dictionary, tags::XML_ELE_SVM_VECTORINSTANCE, true);
  } catch (const SSException&) {
    svmscore::ThrowAt(vector_dictionary, code::kLacksChildren, tags::XML_ELE_SVM_VECTORDICTION);
  }
}

// With rising indices a node list continues where it stopped; any other order would make reading a
// dictionary quadratic.
void SVMTranslator::ParseVectorInstance(xercesc::DOMNodeList* instances, DOMElemUtility* util,
                                        unsigned long index, SVMModelData* data) {
  if (instances == nullptr || util == nullptr || data == nullptr) return;
  auto* instance = static_cast<xercesc::DOMElement*>(instances->item(index));
  if (instance == nullptr) return;
  std::string id;
  try {
    id = util->GetAttributeToString(instance, tags::XML_ATT_SVM_ID, true);
  } catch (const SSException&) {
    svmscore::ThrowAt(instance, code::kAttributeMissing, tags::XML_ATT_SVM_ID,
                      tags::XML_ELE_SVM_VECTORINSTANCE);
  }
  std::vector<int> indices;
  std::vector<double> values;
  xercesc::DOMElement* array =
      util->GetChildElemByName(instance, tags::XML_ELE_SVM_REALSPARSEARRAY, false);
  if (array != nullptr) {
    ParseRealSparseArray(array, util, indices, values);
  } else {
    array = util->GetChildElemByName(instance, tags::XML_ELE_SVM_REALARRAY, false);
    ParseRealArray(array, util, indices, values);
  }
  if (!id.empty() && !values.empty() && indices.size() == values.size()) {
    data->AddVectorInstance(id, std::move(indices), std::move(values));
  }
}

void SVMTranslator::ParseRealSparseArray(xercesc::DOMElement* array, DOMElemUtility* util,
                                         std::vector<int>& indices, std::vector<double>& values) {
  if (array == nullptr || util == nullptr) return;
  const int size = util->GetAttributeToInt(array, tags::XML_ATT_SVM_N, false);
  if (svmscore::ArrayNumbers* numbers = svmscore::ArrayNumbers::Of(array)) {
    if (const svmscore::NumberList* list = numbers->Find(array)) {
      AppendPositions(*list, indices);
      return AppendEntries(*numbers, array, values);
    }
  }
  xercesc::DOMElement* indices_element = nullptr;
  try {
    indices_element = util->GetChildElemByName(array, tags::XML_ELE_SVM_INDICES, false);
  } catch (const SSException&) {
    svmscore::ThrowAt(array, code::kChildMissing, tags::XML_ELE_SVM_INDICES,
                      tags::XML_ELE_SVM_REALSPARSEARRAY);
  }
  if (indices_element == nullptr) {
    // An array without indices means explicit zeros. The loader decides how many are too many for a
    // document that is not trusted.
    for (int k = 0; k < size; ++k) {
      indices.push_back(k + 1);
      values.push_back(0.0);
    }
    return;
  }
  xercesc::DOMElement* entries =
      util->GetChildElemByName(array, tags::XML_ELE_SVM_REAL_ENTRIES, false);
  if (entries == nullptr) {
    entries = util->GetChildElemByName(array, tags::XML_ELE_SVM_ENTRIES, false);
  }
  if (entries == nullptr) {
    svmscore::ThrowAt(array, code::kChildMissing, tags::XML_ELE_SVM_ENTRIES,
                      tags::XML_ELE_SVM_REALSPARSEARRAY);
  }
  GetDataFromVectorInstance(indices_element, entries, util, indices, values);
}

void SVMTranslator::ParseRealArray(xercesc::DOMElement*, DOMElemUtility*, std::vector<int>&,
                                   std::vector<double>&) {}

void SVMTranslator::GetDataFromVectorInstance(xercesc::DOMElement* indices_element,
                                              xercesc::DOMElement* entries_element,
                                              DOMElemUtility* util, std::vector<int>& indices,
                                              std::vector<double>& values) {
  if (indices_element == nullptr || entries_element == nullptr || util == nullptr ||
      transcoder_ == nullptr) {
    return;
  }
  const char* separators = tags::XML_VAL_SVM_SEPARATORS.c_str();
  svmscore::ArrayNumbers* numbers = svmscore::ArrayNumbers::Of(indices_element);
  const auto find = [numbers](const xercesc::DOMElement* list) {
    return numbers == nullptr ? nullptr : numbers->Find(list);
  };
  if (const svmscore::NumberList* list = find(indices_element)) {
    AppendPositions(*list, indices);
  } else {
    std::string text = svmscore::ElementText(indices_element);
    SPLITTER_STR<int>(text.data(), separators, indices);
  }
  if (find(entries_element) != nullptr) {
    AppendEntries(*numbers, entries_element, values);
  } else {
    std::string text = svmscore::ElementText(entries_element);
    values.reserve(values.size() + indices.size());
    SPLITTER_STR<double>(text.data(), separators, values);
  }
  if (indices.size() == values.size()) return;
  svmscore::ThrowAt(entries_element, code::kLengthsDiffer, std::to_string(indices.size()),
                    tags::XML_ELE_SVM_INDICES, tags::XML_ELE_SVM_REALSPARSEARRAY,
                    std::to_string(values.size()), tags::XML_ELE_SVM_REAL_ENTRIES,
                    tags::XML_ELE_SVM_REALSPARSEARRAY);
}

std::string SVMTranslator::GetVectorIDAtt(xercesc::DOMElement* support_vector,
                                          DOMElemUtility* util) {
  if (support_vector == nullptr || util == nullptr) return {};
  try {
    return util->GetAttributeToString(support_vector, tags::XML_ATT_SVM_VECTORID, true);
  } catch (const SSException&) {
    svmscore::ThrowAt(support_vector, code::kAttributeMissing, tags::XML_ATT_SVM_VECTORID,
                      tags::XML_ELE_SVM_SUPPORTVECTOR);
  }
}

}  // namespace MCZandor_850
