// MCZandor_850::SVMModelData: one parsed model in memory.
#ifndef SVM_MODEL_MODEL_DATA_H_
#define SVM_MODEL_MODEL_DATA_H_

#include <string>
#include <unordered_map>
#include <vector>

#include "host/model/score_value.h"
#include "svm/constants/constants.h"
#include "svm/model/data_case.h"

namespace MCZandor_850 {

// What a vector field is: the kind of the record at the same position.
enum VectorFieldType : int { kFieldReference = 0, kCategoricalPredictor = 1 };

// A vector entry that is the value of a field.
struct ST_FIELDREF {
  std::string name;
  std::string missing_replacement;  // text of mapMissingTo; empty when absent
};

// A vector entry that tells whether a field has a certain category.
struct ST_CATEGORICALPREDICTOR {
  std::string name;
  std::string value;
  int category_index = -1;  // position of `value` among the field's categories; -1 for none
  double coefficient = 0.0;
};

// What the vendor extension of a machine says. Doubles that it omits are system-missing.
struct ST_MACHINEEXTENSION {
  double standard_deviation = NumericValue::GetSysmisValue();  // regression
  int response_index = -1;                                     // classification, and the rest too
  int non_response_index = -1;
  double a = NumericValue::GetSysmisValue();
  double b = NumericValue::GetSysmisValue();
};

// Filled by the translator on one thread, then read by any number of threads. It reports nothing:
// calls with useless arguments are ignored.
class SVMModelData {
 public:
  // One machine. Owns its extension record; points at support vectors that the store owns.
  struct ST_SUPPORTVECTORMACHINE {
    ST_SUPPORTVECTORMACHINE() = default;
    virtual ~ST_SUPPORTVECTORMACHINE();
    ST_SUPPORTVECTORMACHINE(const ST_SUPPORTVECTORMACHINE&) = delete;
    ST_SUPPORTVECTORMACHINE& operator=(const ST_SUPPORTVECTORMACHINE&) = delete;

    int target_index = -1;            // category position; -1 absent
    int alternate_target_index = -1;  // category position; -1 absent
    double threshold = 0.0;
    double absolute_value = 0.0;  // added to the kernel sum
    std::vector<double> coefficients;
    std::vector<MCSVM_700::SVMDataCase*> support_vectors;  // parallel to the coefficients
    ST_MACHINEEXTENSION* extension = nullptr;

    // Whether every coefficient has a vector, and every vector an entry for each index. True for
    // whatever the translator reads.
    bool IsWhole() const;
  };

  SVMModelData() = default;
  virtual ~SVMModelData();
  SVMModelData(const SVMModelData&) = delete;
  SVMModelData& operator=(const SVMModelData&) = delete;

  void SetFunctionName(bool classification) { classification_ = classification; }
  bool IsClassification() const { return classification_; }
  // Ignores counts below 1.
  void SetCateNumOfTarget(int count) {
    if (count > 0) category_count_ = count;
  }
  int GetCateNumOfTarget() const { return category_count_; }
  bool IsBinaryClassification() const { return category_count_ == 2; }
  bool IsMultiClassClassification() const { return category_count_ > 2; }
  // True: one-against-all. False: one-against-one.
  void SetClassificationMethod(bool one_against_all) { one_against_all_ = one_against_all; }
  bool IsClassOneAgainstAll() const { return one_against_all_; }
  bool IsClassOneAgainstOne() const { return !one_against_all_; }
  void SetDefThreshold(double threshold) { default_threshold_ = threshold; }
  const double& GetDefThreshold() const { return default_threshold_; }
  void SetSVMKernelType(const SVMConst::KernelFunctionType& type) { kernel_type_ = type; }
  const SVMConst::KernelFunctionType& GetSVMKernelType() const { return kernel_type_; }
  void SetSVMKernelTypeGamma(double gamma) { gamma_ = gamma; }
  double GetSVMKernelTypeGamma() const { return gamma_; }
  void SetSVMKernelTypeCoef0(double coef0) { coef0_ = coef0; }
  double GetSVMKernelTypeCoef0() const { return coef0_; }
  void SetSVMKernelTypeDegree(double degree) { degree_ = degree; }
  double GetSVMKernelTypeDegree() const { return degree_; }
  void SetVEMAExtension(bool present) { extension_present_ = present; }
  bool IsVEMAExtension() const { return extension_present_; }
  void SetAppendProbability(bool append) { append_probability_ = append; }
  bool IsAppendProbability() const { return append_probability_; }
  void SetMaxWins(bool max_wins) { max_wins_ = max_wins; }
  bool IsMaxWins() const { return max_wins_; }

  // Records in document order, ST_FIELDREF or ST_CATEGORICALPREDICTOR by the type at the same
  // position. Owned by the store.
  std::vector<void*>& GetVectorFields() { return fields_; }
  std::vector<VectorFieldType>& GetVectorFieldTypes() { return field_types_; }
  const std::vector<ST_SUPPORTVECTORMACHINE*>& GetSupportVectorMachines() const {
    return machines_;
  }

  void AddFieldRef(std::string name, std::string missing_replacement);
  void AddCategoricalPredictor(std::string name, std::string value, double coefficient);
  // Takes ownership. Null takes the place of a machine that is absent.
  void AddSupportVectorMachine(ST_SUPPORTVECTORMACHINE* machine);
  // `indices` are 1-based. Nothing happens for an empty id, an empty list, lists that differ in
  // length, or an id that is already there: the first instance of an id stays.
  void AddVectorInstance(const std::string& id, const std::vector<int>& indices,
                         const std::vector<double>& entries);
  void AddVectorInstance(const std::string& id, std::vector<int>&& indices,
                         std::vector<double>&& entries);
  // Null for an id that is empty or unknown.
  MCSVM_700::SVMDataCase* GetVectorInstance(const std::string& id) const;

 private:
  bool classification_ = false;
  double default_threshold_ = 0.0;
  bool one_against_all_ = true;
  int category_count_ = 1;
  std::vector<VectorFieldType> field_types_;
  std::vector<void*> fields_;
  std::unordered_map<std::string, MCSVM_700::SVMDataCase*> instances_;
  std::vector<ST_SUPPORTVECTORMACHINE*> machines_;
  SVMConst::KernelFunctionType kernel_type_ = SVMConst::kLinear;
  double gamma_ = 1.0;
  double coef0_ = 1.0;
  double degree_ = 1.0;
  bool extension_present_ = false;
  bool append_probability_ = false;
  bool max_wins_ = false;
};

}  // namespace MCZandor_850

#endif  // SVM_MODEL_MODEL_DATA_H_
