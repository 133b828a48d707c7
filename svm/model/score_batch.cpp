#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>

#include "svm/model/model.h"
#include "svm/model/workspace.h"

namespace MCZandor_850 {

using MCScore::MCStatus;
using MCSVM_700::packed::DecisionColumns;
using svmscore::BatchCases;
using svmscore::BatchResults;

namespace {

constexpr double kNone = -1.0;

template <typename T>
void Put(T* column, std::size_t position, T value) {
  if (column != nullptr) column[position] = value;
}

}  // namespace

std::size_t SVMModel::EntryCount() const {
  if (data_ == nullptr) return 0;
  return std::min(data_->GetVectorFields().size(), data_->GetVectorFieldTypes().size());
}

std::size_t SVMModel::DecisionCount() const {
  if (data_ == nullptr) return 0;
  const std::size_t machines = data_->GetSupportVectorMachines().size();
  return data_->IsClassification() ? machines : std::min<std::size_t>(machines, 1);
}

std::pair<int, int> SVMModel::DecisionCategories(std::size_t decision) const {
  const auto* machine = decision < DecisionCount() ? Machine(static_cast<int>(decision)) : nullptr;
  if (machine == nullptr) return {-1, -1};
  return {machine->target_index, machine->alternate_target_index};
}

const ScoreDictVar* SVMModel::PlainEntry(std::size_t entry) const {
  // With a field of an unknown kind, entries no longer belong to the variables.
  if (vector_field_vars_.size() < EntryCount() || entry >= EntryCount()) return nullptr;
  const ScoreDictVar* var = vector_field_vars_[entry];
  const bool reference = data_->GetVectorFieldTypes()[entry] == kFieldReference;
  return reference && var != nullptr && !var->IsDerived() ? var : nullptr;
}

void SVMModel::FixPositions(const ScoreCaseRecord& record) {
  if (record.IsIndexedByPosition()) SetUpDictVarIndex(&record, false);
}

MCStatus SVMModel::ReadCase(const ScoreCaseRecord& record, bool flag, double* entries,
                            std::size_t stride) {
  MCStatus status(MCScore::kCannotScore, false);
  try {
    std::size_t read = 0;
    if (data_ != nullptr && target_var_ != nullptr) {
      status = ReadEntries(record, flag, nullptr, entries, stride, read);
    }
  } catch (...) {
    status = MCStatus(MCScore::kCannotScore, false);
  }
  TraceFailure(status);
  return status;
}

void SVMModel::ScoreBatch(const BatchCases& cases, const BatchResults& results) {
  if (data_ == nullptr || target_var_ == nullptr) {
    return FailBatch(MCStatus(MCScore::kCannotScore, false), cases.count, results);
  }
  try {
    DecisionColumns decisions{results.decisions, results.stride};
    if (decisions.values == nullptr) {
      auto& columns = ThisThreadsWorkspace().columns;
      columns.Reserve(std::max<std::size_t>(DecisionCount(), 1) * cases.count);
      decisions = {columns.data(), cases.count};
    }
    const MCStatus decided = DecideBatch(cases, results, decisions);
    if (decided.IsError()) return FailBatch(decided, cases.count, results);
    if (results.status == nullptr) return;
    const bool classifies = data_->IsClassification();
    for (std::size_t c = 0; c < cases.count; ++c) {
      const MCStatus status =
          classifies ? FinishCategory(decisions, c, results)
                     : FinishValue(DecisionCount() > 0 ? decisions.values[c] : 0.0, c, results);
      TraceFailure(status);
      results.status[c] = status.GetErrorCode();
    }
  } catch (...) {
    FailBatch(MCStatus(MCScore::kCannotScore, false), cases.count, results);
  }
}

void SVMModel::FailBatch(const MCStatus& status, std::size_t count, const BatchResults& results) {
  for (std::size_t c = 0; results.status != nullptr && c < count; ++c) {
    TraceFailure(status);
    results.status[c] = status.GetErrorCode();
  }
}

MCStatus SVMModel::DecideBatch(const BatchCases& cases, const BatchResults& results,
                               DecisionColumns decisions) {
  Workspace& workspace = ThisThreadsWorkspace();
  if (results.decisions == nullptr && CertifiesVotes()) {
    const bool shares = results.percents != nullptr || results.confidence != nullptr;
    certified_->DecideMany({cases.entries, cases.stride}, cases.count, workspace.certified,
                           workspace.scratch, decisions, WantedOf(shares));
    return {};
  }
  if (EngineFits()) {
    engine_->DecideMany({cases.entries, cases.stride}, cases.count, workspace.scratch, decisions);
    return {};
  }
  workspace.idx.resize(EntryCount());
  workspace.val.resize(EntryCount());
  std::iota(workspace.idx.begin(), workspace.idx.end(), 0);
  for (std::size_t c = 0; c < cases.count; ++c) {
    for (std::size_t e = 0; e < workspace.val.size(); ++e) {
      workspace.val[e] = cases.entries[e * cases.stride + c];
    }
    const MCStatus status =
        DecideByDefinition(workspace.idx, workspace.val, {decisions.values + c, decisions.stride});
    if (status.IsError()) return status;
  }
  return {};
}

MCStatus SVMModel::FinishCategory(DecisionColumns decisions, std::size_t c,
                                  const BatchResults& results) {
  const std::size_t categories = target_categories_.size();
  Put(results.category, c, -1);
  Put(results.confidence, c, kNone);
  for (std::size_t k = 0; k < categories; ++k) Put(results.percents, k * results.stride + c, kNone);
  Put(results.value, c, NumericValue::GetSysmisValue());
  Put(results.std_dev, c, kNone);
  Put(results.has_interval, c, false);
  Workspace& workspace = ThisThreadsWorkspace();
  workspace.decisions.resize(DecisionCount());
  if (workspace.decisions.empty() || EntryCount() == 0) return {};
  for (std::size_t m = 0; m < workspace.decisions.size(); ++m) {
    workspace.decisions[m] = decisions.values[m * decisions.stride + c];
  }
  const MCStatus checked = CheckDecisions(workspace.decisions);
  if (checked.IsError()) return checked;
  int winner = 0;
  double confidence = 0.0;
  std::vector<double>& percents = workspace.percents;
  percents.assign(categories, 0.0);
  const MCStatus status = DoVotingForSVMCls(workspace.decisions, winner, confidence, percents);
  if (status.IsError()) return status;
  if (!IsCategory(winner)) return MCStatus(MCScore::kInvalidValue, false);
  Put(results.category, c, winner);
  if (prediction_only_ || percents.size() != categories) return status;
  Put(results.confidence, c, confidence);
  for (std::size_t k = 0; k < categories; ++k) {
    Put(results.percents, k * results.stride + c, percents[k]);
  }
  return status;
}

MCStatus SVMModel::FinishValue(double decision, std::size_t c, const BatchResults& results) {
  Put(results.category, c, -1);
  Put(results.confidence, c, kNone);
  double std_dev = kNone;
  double lower = 0.0;
  double upper = 0.0;
  // Without entries nothing is computed, and the value is missing.
  const bool computed = EntryCount() > 0;
  const double value = computed ? decision : NumericValue::GetSysmisValue();
  if (computed && finite_only_ && !std::isfinite(value)) {
    Put(results.value, c, NumericValue::GetSysmisValue());
    Put(results.std_dev, c, kNone);
    Put(results.has_interval, c, false);
    return MCStatus(MCScore::kInvalidValue, false);
  }
  const bool has_interval = computed && IntervalAround(value, std_dev, lower, upper);
  Put(results.value, c, value);
  Put(results.std_dev, c, std_dev);
  Put(results.has_interval, c, has_interval);
  Put(results.lower, c, lower);
  Put(results.upper, c, upper);
  return {};
}

}  // namespace MCZandor_850
