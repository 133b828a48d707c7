#include "tools/score/case_batch.h"

#include <algorithm>
#include <limits>

#include "host/model/score_status.h"
#include "host/model/scoring_log.h"

namespace svmscore::tools {
namespace {

constexpr std::size_t kCells = std::size_t{64} * 1024;
constexpr std::size_t kLeastCases = 32;
constexpr std::size_t kMostCases = 512;

// Keeps the rows of a matrix from starting at addresses that fall into one set of the cache.
constexpr std::size_t kPadding = 8;

}  // namespace

std::size_t CasesAtOnce(const BatchModel* model, std::size_t width) {
  if (model != nullptr) width = std::max(width, model->EntryCount() + model->DecisionCount());
  return std::clamp(kCells / std::max<std::size_t>(width, 1), kLeastCases, kMostCases);
}

long RefuseInvalid() {
  MCZandor_850::ScoringLog::GetInstance().TraceText(1, "MCStatus error code is :%ld",
                                                    MCScore::kInvalidValue);
  return MCScore::kInvalidValue;
}

CaseBatch::CaseBatch(BatchModel& model, std::size_t categories, std::size_t capacity,
                     bool decisions)
    : model_(model),
      stride_(capacity + kPadding),
      entries_(std::max<std::size_t>(model.EntryCount(), 1) * stride_),
      status_(capacity),
      category_(capacity),
      has_interval_(std::make_unique<bool[]>(capacity)) {
  const std::size_t decision_count = decisions ? model.DecisionCount() : 0;
  numbers_.resize((5 + categories + decision_count) * stride_);
  double* next = numbers_.data();
  const auto columns = [&next, this](std::size_t count) {
    double* first = next;
    next += count * stride_;
    return first;
  };
  results_.status = status_.data();
  results_.category = category_.data();
  results_.has_interval = has_interval_.get();
  results_.value = columns(1);
  results_.confidence = columns(1);
  results_.std_dev = columns(1);
  results_.lower = columns(1);
  results_.upper = columns(1);
  results_.percents = columns(categories);
  if (decisions) results_.decisions = columns(decision_count);
  results_.stride = stride_;
}

MCScore::MCStatus CaseBatch::Add(const MCZandor_850::ScoreCaseRecord& record) {
  const MCScore::MCStatus status =
      model_.ReadCase(record, false, entries_.data() + count_, stride_);
  if (!status.IsError()) ++count_;
  return status;
}

CaseBatch::Decisions CaseBatch::DecisionsOf(std::size_t position) {
  if (results_.decisions != nullptr) return {results_.decisions + position, results_.stride};
  decisions_.assign(model_.DecisionCount(), std::numeric_limits<double>::quiet_NaN());
  BatchResults again;
  again.decisions = decisions_.data();
  again.stride = 1;
  model_.ScoreBatch({entries_.data() + position, stride_, 1}, again);
  return {decisions_.data(), 1};
}

void CaseBatch::Score() {
  model_.ScoreBatch({entries_.data(), stride_, count_}, results_);
}

}  // namespace svmscore::tools
