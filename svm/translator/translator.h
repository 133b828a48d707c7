// MCZandor_850::SVMTranslator: from a document to a model.
#ifndef SVM_TRANSLATOR_TRANSLATOR_H_
#define SVM_TRANSLATOR_TRANSLATOR_H_

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/translate/dom_elem_utility.h"
#include "host/translate/translator.h"
#include "host/xml/array_numbers.h"
#include "svm/model/model.h"
#include "svm/model/model_data.h"

namespace MCZandor_850 {

// One member function for each piece of the document, one source file for each stage. All elements,
// utilities, models and dictionaries are borrowed, except where a function says that it hands
// something over. Every function does nothing (and returns null, 0, false or an empty text) when a
// pointer that it needs is null. Failures are SSExceptions at the element where they happened;
// what was already put into the model or its data stays there.
class SVMTranslator : public PMMLTranslator, public svmscore::ReadsArrayNumbers {
 public:
  SVMTranslator();

  // driver.cpp: the order of the stages.
  using PMMLTranslator::ParseFromTree;
  // Null for a null document. A model whose translation fails stays with the translator.
  // [one thread] Owns: the caller the model. Lives: the document for the call; the model until
  // deleted, also without the translator. Fails: SSException, std::bad_alloc.
  ScoreModel* ParseFromTree(xercesc::DOMDocument* document, const std::string& encoding) override;
  // Creates the transcoder on first use; later encodings change nothing.
  ZandorTranscoder* GetZandorTranscoder(const std::string& encoding);
  xercesc::DOMElement* GetRootElement(xercesc::DOMDocument* document);
  xercesc::DOMElement* GetSVMModel(xercesc::DOMElement* root, DOMElemUtility* util);
  // A new model that the caller owns; null for a null element.
  SVMModel* CreateSVMModel(xercesc::DOMElement* model_element);
  // The version of the program that wrote the document.
  void SetVerionInfo(xercesc::DOMElement* root, DOMElemUtility* util, ScoreModel* model);
  // Reads the body of the model element and hands the model its data once all of it is read.
  void SetSVMModel(xercesc::DOMElement* model_element, DOMElemUtility* util, SVMModel* model);

  // model_attributes.cpp: the attributes of the model element, and the check of its target.
  // Returns the number of machines.
  unsigned long ParseModelAttributes(xercesc::DOMElement* model_element, DOMElemUtility* util,
                                     SVMModel* model, SVMModelData* data);
  // True where the number of machines fits the target; then the data has its category count.
  bool DoValidationForTargets(SVMModel* model, unsigned long machines, SVMModelData* data);

  // dictionaries.cpp: variables, derived fields, roles and replacements.
  // The dictionary becomes the model's, and later stages look fields up in it.
  void SetDataDirectionary(xercesc::DOMElement* root, DOMElemUtility* util, ScoreModel* model);
  // Transformations that cannot be built leave the model without any.
  void SetTransformDirectionary(xercesc::DOMElement* root, xercesc::DOMElement* model_element,
                                DOMElemUtility* util, ScoreModel* model);
  void SetScoreDictVars(xercesc::DOMElement* model_element, DOMElemUtility* util, SVMModel* model);
  void ParseMiningField(xercesc::DOMElement* mining_field, DOMElemUtility* util, SVMModel* model);
  void SetDictVarRole(xercesc::DOMElement* mining_field, DOMElemUtility* util, SVMModel* model,
                      const ScoreDictVar* var);
  void SetDictVarMissValueReplacement(xercesc::DOMElement* mining_field, DOMElemUtility* util,
                                      ScoreModel* model, const ScoreDictVar* var);
  // Positions of the variables that declare no values, in dictionary order.
  std::vector<int> GetEmptyScoreDictVars(ScoreDictionary* dictionary);
  // Gives the variable behind the derived field `field_name` the one category that the field
  // encodes. True where one was added: not for a variable that declares its values, nor for a
  // category that it has.
  bool FillCateValuesToDataDict(ScoreDictionary* dictionary,
                                TransformationDictionary* transformations,
                                const std::string& field_name);

  // vector_dictionary.cpp: vector fields and support vectors.
  void ParseVectorDictionary(xercesc::DOMElement* model_element, DOMElemUtility* util,
                             SVMModel* model, SVMModelData* data);
  // Always 0.
  int ParseVectorFields(xercesc::DOMElement* vector_dictionary, DOMElemUtility* util,
                        SVMModel* model, SVMModelData* data);
  unsigned long GetVectorInstances(xercesc::DOMElement* vector_dictionary, DOMElemUtility* util);
  // An instance without an id or without values is left out.
  void ParseVectorInstance(xercesc::DOMNodeList* instances, DOMElemUtility* util,
                           unsigned long index, SVMModelData* data);
  // Appends 1-based indices and the values at them.
  void ParseRealSparseArray(xercesc::DOMElement* array, DOMElemUtility* util,
                            std::vector<int>& indices, std::vector<double>& values);
  // Does nothing: dense arrays are not read.
  void ParseRealArray(xercesc::DOMElement* array, DOMElemUtility* util, std::vector<int>& indices,
                      std::vector<double>& values);
  void GetDataFromVectorInstance(xercesc::DOMElement* indices_element,
                                 xercesc::DOMElement* entries_element, DOMElemUtility* util,
                                 std::vector<int>& indices, std::vector<double>& values);
  std::string GetVectorIDAtt(xercesc::DOMElement* support_vector, DOMElemUtility* util);

  // machines.cpp: machines, their support vectors and coefficients.
  unsigned long GetNumOfSVMachine(xercesc::DOMElement* model_element, DOMElemUtility* util);
  bool IsRequireOfTagCate(SVMModelData* data) const;
  bool IsRequireOfAlternateTagCate(SVMModelData* data) const;
  void ParseSupportVectorMachine(unsigned long machines, xercesc::DOMElement* model_element,
                                 DOMElemUtility* util, SVMModel* model, SVMModelData* data);
  xercesc::DOMElement* GetElemOfSVMachine(xercesc::DOMNodeList* machines, unsigned long index);
  // Always true. A null machine leaves the outputs as they are.
  bool DoValidationForMachine(xercesc::DOMElement* machine_element, DOMElemUtility* util,
                              xercesc::DOMElement*& support_vectors,
                              xercesc::DOMElement*& coefficients, unsigned long& coefficient_count);
  xercesc::DOMElement* GetElemOfSupportVectors(xercesc::DOMElement* machine_element,
                                               DOMElemUtility* util);
  xercesc::DOMElement* GetElemOfCoefficients(xercesc::DOMElement* machine_element,
                                             DOMElemUtility* util);
  unsigned long GetNumOfSupportVector(xercesc::DOMElement* support_vectors, DOMElemUtility* util);
  unsigned long GetNumOfCoefficient(xercesc::DOMElement* coefficients, DOMElemUtility* util);
  xercesc::DOMElement* GetElemOfSupportVector(xercesc::DOMNodeList* support_vectors,
                                              unsigned long index);
  xercesc::DOMElement* GetElemOfCoefficient(xercesc::DOMNodeList* coefficients,
                                            unsigned long index);
  // Pairs the i-th coefficient with the i-th support vector. A pair whose support vector is not
  // among the data's instances is left out.
  bool MapCoefficientToDataSet(xercesc::DOMElement* support_vectors,
                               xercesc::DOMElement* coefficients, DOMElemUtility* util,
                               unsigned long coefficient_count, SVMModelData* data,
                               SVMModelData::ST_SUPPORTVECTORMACHINE* machine);

  // machine_attributes.cpp: what a machine says of its targets, threshold and offset.
  void FillMachineAttributes(xercesc::DOMElement* machine_element,
                             xercesc::DOMElement* coefficients, DOMElemUtility* util,
                             const std::vector<const ScoreValue*>& categories, bool has_extension,
                             bool target_required, bool alternate_required,
                             SVMModelData::ST_SUPPORTVECTORMACHINE* machine, SVMModelData* data);
  // A machine with the vendor extension need not name its categories.
  std::string GetTagCateAtt(xercesc::DOMElement* machine_element, DOMElemUtility* util,
                            bool has_extension, bool required);
  std::string GetAlternateTagCateAtt(xercesc::DOMElement* machine_element, DOMElemUtility* util,
                                     bool has_extension, bool required);
  // `default_threshold` where the machine states none, or one that cannot be read.
  double GetSVMThresholdAtt(xercesc::DOMElement* machine_element, DOMElemUtility* util,
                            double default_threshold);
  // Both are 0.0 where the attribute is required and absent, or cannot be read.
  double GetAbsoluteValueAtt(xercesc::DOMElement* coefficients, DOMElemUtility* util,
                             bool required);
  double GetCoefficientAtt(xercesc::DOMElement* coefficient, DOMElemUtility* util);
  // Position of the category with that text; the number of categories where none has it; 0 for an
  // empty list or text.
  int GetIndexOfTargetCate(const std::vector<const ScoreValue*>& categories,
                           const std::string& text) const;
  // As long as this object lives, looking up one of these categories takes constant time. Only one
  // may exist at a time.
  class CategoryIndex {
   public:
    CategoryIndex(SVMTranslator* translator, const std::vector<const ScoreValue*>& categories);
    ~CategoryIndex();
    CategoryIndex(const CategoryIndex&) = delete;
    CategoryIndex& operator=(const CategoryIndex&) = delete;

    const std::vector<const ScoreValue*>* Categories() const { return categories_; }
    // The position of the first category with the text, or the number of categories.
    int PositionOf(const std::string& text) const;

   private:
    SVMTranslator* translator_;
    const std::vector<const ScoreValue*>* categories_;
    std::unordered_map<std::string, int> positions_;
  };

  // extension.cpp: what the producer's extension adds to a machine.
  // Null unless the machine's first Extension is the vendor's.
  xercesc::DOMElement* GetElemOfVEMAExtension(xercesc::DOMElement* machine_element,
                                              DOMElemUtility* util);
  // These return false, and the extension does not count, where something is absent.
  bool GetStdDevFromVEMAExt(xercesc::DOMElement* extension, DOMElemUtility* util, double& std_dev);
  bool GetResCategoryFromVEMAExt(xercesc::DOMElement* extension, DOMElemUtility* util,
                                 const std::vector<const ScoreValue*>& categories,
                                 int& response_index, int& non_response_index);
  bool GetProbabilityParamFromVEMAExt(xercesc::DOMElement* extension, DOMElemUtility* util,
                                      double& a, double& b);
  // True where the machine was given an extension record.
  bool FillVEMAExtensionToMachine(xercesc::DOMElement* machine_element, DOMElemUtility* util,
                                  bool is_classification,
                                  const std::vector<const ScoreValue*>& categories,
                                  SVMModelData::ST_SUPPORTVECTORMACHINE* machine);

  // kernel_element.cpp
  void ParseKernelType(xercesc::DOMElement* model_element, DOMElemUtility* util,
                       SVMModelData* data);

 private:
  // Of the last document that had one. Kept alive by the base, whatever becomes of the model.
  ScoreDictionary* data_dictionary_ = nullptr;
  const CategoryIndex* category_index_ = nullptr;  // while machines are read
};

}  // namespace MCZandor_850

#endif  // SVM_TRANSLATOR_TRANSLATOR_H_
