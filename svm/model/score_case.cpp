#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>

#include "host/model/score_case_record.h"
#include "host/model/scoring_log.h"
#include "host/transform/transformation_dictionary.h"
#include "svm/constants/messages.h"
#include "svm/model/model.h"
#include "svm/result/cls_result.h"
#include "svm/result/reg_result.h"

namespace MCZandor_850 {

using MCScore::MCStatus;

namespace {

// The value of a field in one case: from the case itself, or, for a derived field and for an input
// that `flag` hides behind one, from the derived values. Null where it is missing.
const ScoreValue* FindValue(const ScoreDictVar& var, const ScoreCaseRecord& record,
                            const DerivedCaseRecord* derived, bool flag) {
  // The position of a derived field refers to the derived values and means nothing in the case. Its
  // name does: a case may include the value.
  const bool findable = !var.IsDerived() || !record.IsIndexedByPosition();
  const bool in_case = findable && !(flag && var.IsHiddenByDerived());
  const ScoreValue* value = in_case ? record.GetValueOf(var) : nullptr;
  if (value == nullptr && derived != nullptr) value = derived->GetDerived(var);
  return value;
}

// The entry of a field whose value can be used as it is, which is the usual case; else null.
const double* FindNumber(VectorFieldType type, const ScoreDictVar* var,
                         const InputCaseRecord* inputs, bool flag) {
  const bool in_case = type == kFieldReference && var != nullptr && inputs != nullptr &&
                       !var->IsDerived() && !(flag && var->IsHiddenByDerived());
  return in_case ? inputs->FindPlainNumber(*var) : nullptr;
}

double EntryOf(const void* field, VectorFieldType type, const ScoreDictVar* var,
               const ScoreValue* value) {
  if (var == nullptr || value == nullptr) return 0.0;
  if (type == kFieldReference) return value->GetDouble();
  if (type != kCategoricalPredictor) return 0.0;
  const int wanted = static_cast<const ST_CATEGORICALPREDICTOR*>(field)->category_index;
  return wanted >= 0 && var->GetCategoryIndex(value) == wanted ? 1.0 : 0.0;
}

}  // namespace

MCStatus SVMModel::GetScore(const ScoreCaseRecord* record, ScoreResult*& result, bool flag) {
  MCStatus status;
  try {
    status = ScoreCase(record, result, flag);
  } catch (...) {
    status = MCStatus(MCScore::kCannotScore, false);
  }
  TraceFailure(status);
  return status;
}

void SVMModel::TraceFailure(const MCStatus& status) {
  if (!status.IsError()) return;
  ScoringLog::GetInstance().TraceText(1, "MCStatus error code is :%ld", status.GetErrorCode());
}

MCStatus SVMModel::ScoreCase(const ScoreCaseRecord* record, ScoreResult*& result, bool flag) {
  MCStatus status;
  if (record == nullptr || data_ == nullptr || target_var_ == nullptr) {
    status = MCStatus(MCScore::kCannotScore, false);
  }
  if (!positions_set_ && record != nullptr && record->IsIndexedByPosition()) {
    SetUpDictVarIndex(record, flag);
  }
  if (status.IsError()) return status;
  if (result == nullptr) {
    if (data_->IsClassification()) {
      result = new SVMClsResult(target_var_);
    } else {
      result = new SVMRegResult(target_var_);
    }
  }
  std::vector<int> idx;
  std::vector<double> val;
  status = FillCaseRecord(result, record, flag, idx, val);
  if (status.IsError()) return status;
  return data_->IsClassification() ? ScoreSVMClsModel(idx, val, result)
                                   : ScoreSVMRegModel(idx, val, result);
}

MCStatus SVMModel::FillCaseRecord(ScoreResult*& result, const ScoreCaseRecord* record, bool& flag,
                                  std::vector<int>& idx, std::vector<double>& val) {
  if (record == nullptr || data_ == nullptr) return {};
  const std::size_t before = val.size();
  std::size_t read = 0;
  val.resize(before + EntryCount());
  const MCStatus status = ReadEntries(*record, flag, &result, val.data() + before, 1, read);
  val.resize(before + read);
  for (std::size_t i = 0; i < read; ++i) idx.push_back(static_cast<int>(i));
  return status;
}

MCStatus SVMModel::ReadEntries(const ScoreCaseRecord& record, bool flag, ScoreResult** result,
                               double* entries, std::size_t stride, std::size_t& read) {
  MCStatus status;
  const auto* inputs = dynamic_cast<const InputCaseRecord*>(&record);
  std::optional<DerivedCaseRecord> kept;
  std::unique_ptr<DerivedCaseRecord> borrowed;
  const DerivedCaseRecord* derived = nullptr;
  if (const TransformationDictionary* dictionary = GetTransformationDictionary()) {
    if (inputs != nullptr) {
      derived = &kept.emplace(*dictionary, dictionary->ValuesOf(*inputs));
    } else {
      borrowed = dictionary->GetValuesForDerivedVars(&record, GetDictionary());
      derived = borrowed.get();
    }
  }
  const std::vector<void*>& fields = data_->GetVectorFields();
  const std::vector<VectorFieldType>& types = data_->GetVectorFieldTypes();
  const std::size_t count = EntryCount();
  for (read = 0; read < count && !status.IsError(); ++read) {
    const ScoreDictVar* var = read < vector_field_vars_.size() ? vector_field_vars_[read] : nullptr;
    if (const double* number = FindNumber(types[read], var, inputs, flag)) {
      entries[read * stride] = *number;
      continue;
    }
    const ScoreValue* value = var != nullptr ? FindValue(*var, record, derived, flag) : nullptr;
    if (IsMissScoreValue(var, value)) {
      status = result != nullptr ? HandleMissInvalidValue(true, false, var, *result)
                                 : MissingStatus(var);
      value = GetMissReplacement(var);
    } else if (IsInvalidScoreValue(var, value)) {
      status = result != nullptr ? HandleMissInvalidValue(false, true, var, *result)
                                 : MCStatus(MCScore::kInvalidValue, false);
    }
    entries[read * stride] =
        status.IsError() ? 0.0 : EntryOf(fields[read], types[read], var, value);
  }
  // Fields of an unknown kind have no variable, so the entries no longer belong to the variables.
  if (read > vector_field_vars_.size()) status = MCStatus(MCScore::kInvalidValue, false);
  return status;
}

bool SVMModel::IsMissScoreValue(const ScoreDictVar* var, const ScoreValue* value) const {
  if (value == nullptr) return true;
  return var != nullptr && var->IsMissingValue(value);
}

bool SVMModel::IsInvalidScoreValue(const ScoreDictVar* var, const ScoreValue* value) const {
  return var != nullptr && value != nullptr && !var->IsValidValue(value);
}

const ScoreValue* SVMModel::GetMissReplacement(const ScoreDictVar* var) {
  return var != nullptr ? var->GetMissingReplacement() : nullptr;
}

MCStatus SVMModel::MissingStatus(const ScoreDictVar* var) {
  if (var == nullptr) return {};
  if (GetMissingValuePolicy() == kReplaceMissing && GetMissReplacement(var) != nullptr) return {};
  return MCStatus(MCScore::kCannotScore, false);
}

MCStatus SVMModel::HandleMissInvalidValue(bool is_missing, bool is_invalid, const ScoreDictVar* var,
                                          ScoreResult*& result) {
  if (result == nullptr || var == nullptr) return {};
  if (is_missing) {
    const MCStatus status = MissingStatus(var);
    const MVPolicy policy = GetMissingValuePolicy();
    const bool predicts = policy == kReplaceMissing || policy == kPredictMissing;
    if (status.IsError() && predicts) PredictMissing(*result);
    return status;
  }
  return is_invalid ? MCStatus(MCScore::kInvalidValue, false) : MCStatus();
}

void SVMModel::PredictMissing(ScoreResult& result) {
  const bool as_number = target_var_ != nullptr && target_var_->GetTypeCode() == 0;
  if (dynamic_cast<ScoreClsResult*>(&result) != nullptr) {
    result.SetPrediction(as_number ? static_cast<ScoreValue*>(&missing_number_) : &missing_text_);
    return;
  }
  // Any other kind could take ownership of the values.
  if (dynamic_cast<ScoreRegResult*>(&result) == nullptr) return;
  // A regression result owns its prediction, which is changed in place or replaced.
  auto* number = dynamic_cast<NumericValue*>(result.GetPrediction());
  if (!as_number) {
    result.SetPrediction(new StringValue(""));
  } else if (number != nullptr) {
    number->SetDoubleValue(NumericValue::GetSysmisValue());
  } else {
    result.SetPrediction(new NumericValue(NumericValue::GetSysmisValue()));
  }
}

MCStatus SVMModel::ScoreSVMByKernelType(const std::vector<int>& case_idx,
                                        const std::vector<double>& case_val, int machine_index,
                                        double& value) {
  const auto* machine = Machine(machine_index);
  if (machine == nullptr || kernel_ == nullptr || !machine->IsWhole()) return {};
  const std::vector<double>& coefficients = machine->coefficients;
  for (std::size_t k = 0; k < coefficients.size(); ++k) {
    const MCSVM_700::SVMDataCase& vector = *machine->support_vectors[k];
    value += coefficients[k] * kernel_->Evaluate(case_idx, case_val, vector.indices, vector.values);
  }
  value += machine->absolute_value;
  return {};
}

MCStatus SVMModel::CheckDecisions(const std::vector<double>& decisions) const {
  if (!finite_only_) return {};
  const bool finite = std::all_of(decisions.begin(), decisions.end(),
                                  [](double decision) { return std::isfinite(decision); });
  return finite ? MCStatus() : MCStatus(MCScore::kInvalidValue, false);
}

const SVMModelData::ST_SUPPORTVECTORMACHINE* SVMModel::Machine(int index) const {
  if (data_ == nullptr || index < 0) return nullptr;
  const auto& machines = data_->GetSupportVectorMachines();
  const auto position = static_cast<std::size_t>(index);
  return position < machines.size() ? machines[position] : nullptr;
}

}  // namespace MCZandor_850
