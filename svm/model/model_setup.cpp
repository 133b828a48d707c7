#include <cstddef>

#include "host/model/score_case_record.h"
#include "host/model/score_dictionary.h"
#include "host/transform/transformation_dictionary.h"
#include "svm/model/model.h"

namespace MCZandor_850 {
namespace {

constexpr int kClassificationModel = 29;
constexpr int kRegressionModel = 30;

}  // namespace

SVMModel::SVMModel() = default;

SVMModel::~SVMModel() {
  certified_.reset();
  engine_.reset();
  data_.reset();
  kernel_.reset();
}

void SVMModel::SetSupportVectorMachineModel(SVMModelData* data) {
  if (data == nullptr) return;
  certified_.reset();
  engine_.reset();
  // Handing the model its own data again must not delete it.
  if (data != data_.get()) data_.reset(data);
  SetUpModelType(data->IsClassification());
  SetUpVectorField(data->GetVectorFields(), data->GetVectorFieldTypes());
  SetUpSVMKFEvaluate(data);
}

void SVMModel::SetUpModelType(bool is_classification) {
  model_type_ = is_classification ? kClassificationModel : kRegressionModel;
}

MCScore::MCStatus SVMModel::SetUpSVMKFEvaluate(SVMModelData* data) {
  if (data == nullptr || data_ == nullptr) return {};
  const SVMConst::KernelParameters parameters{
      data->GetSVMKernelType(), data_->GetSVMKernelTypeGamma(), data_->GetSVMKernelTypeCoef0(),
      data_->GetSVMKernelTypeDegree()};
  kernel_ = MCSVM_700::MakeKernel(parameters);
  SetUpEngine(parameters);
  return {};
}

void SVMModel::SetUpVectorField(const std::vector<void*>& fields,
                                const std::vector<VectorFieldType>& types) {
  if (fields.empty() || GetDictionary() == nullptr) return;
  vector_field_vars_.clear();
  for (std::size_t i = 0; i < fields.size() && i < types.size(); ++i) {
    if (types[i] == kFieldReference) {
      vector_field_vars_.push_back(FindVarByName(static_cast<ST_FIELDREF*>(fields[i])->name));
    } else if (types[i] == kCategoricalPredictor) {
      auto* predictor = static_cast<ST_CATEGORICALPREDICTOR*>(fields[i]);
      const ScoreDictVar* var = FindVarByName(predictor->name);
      vector_field_vars_.push_back(var);
      predictor->category_index =
          var != nullptr ? var->GetCategoryIndexOfText(predictor->value) : -1;
    }
  }
}

ScoreDictVar* SVMModel::FindVarByName(const std::string& name) const {
  ScoreDictVar* var = GetDictionary()->FindVar(name);
  if (var == nullptr && GetTransformationDictionary() != nullptr) {
    var = GetTransformationDictionary()->FindVar(name);
  }
  return var;
}

void SVMModel::SetUpDictVarIndex(const ScoreCaseRecord* record, bool flag) {
  if (positions_set_ || GetDictionary() == nullptr || record == nullptr) return;
  for (ScoreDictVar* var : GetDictionary()->GetVariables(flag)) {
    if (var != nullptr) var->SetCasePosition(record->GetPosition(var->GetName()));
  }
  positions_set_ = true;
}

void SVMModel::SetTargetCategories() {
  target_var_ = GetTargetVar();
  if (target_var_ == nullptr) return;
  target_category_names_.clear();
  target_categories_.clear();
  for (const ScoreValue* category : target_var_->GetCategories()) {
    if (category == nullptr) continue;
    target_category_names_.push_back(category->GetText());
    target_categories_.push_back(category);
  }
}

BaseDictionary* SVMModel::GetVarsOfRole(VarRole role) const {
  if (target_var_ == nullptr || GetDictionary() == nullptr) return nullptr;
  auto found = std::make_unique<BaseDictionary>();
  if (role == kTargetRole) {
    found->AddVar(target_var_->GetName(), target_var_);
    return found.release();
  }
  bool any = false;
  for (const ScoreDictVar* var : GetDictionary()->GetVariables()) {
    if (var != nullptr && GetVarRole(var) == role) any |= found->AddVar(var->GetName(), var);
  }
  return any ? found.release() : nullptr;
}

}  // namespace MCZandor_850
