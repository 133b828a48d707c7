#include "tools/score/case_batch.h"

#include <algorithm>

namespace svmscore::tools {
namespace {

// Keeps the rows of a matrix from starting at addresses that fall into one set of the cache.
constexpr std::size_t kPadding = 8;

}  // namespace

CaseBatch::CaseBatch(BatchModel& model, std::size_t categories, std::size_t capacity)
    : model_(model),
      stride_(capacity + kPadding),
      entries_(std::max<std::size_t>(model.EntryCount(), 1) * stride_),
      status_(capacity),
      category_(capacity),
      has_interval_(std::make_unique<bool[]>(capacity)) {
  numbers_.resize((5 + categories + model.DecisionCount()) * stride_);
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
  results_.decisions = columns(model.DecisionCount());
  results_.stride = stride_;
}

MCScore::MCStatus CaseBatch::Add(const MCZandor_850::ScoreCaseRecord& record) {
  const MCScore::MCStatus status =
      model_.ReadCase(record, false, entries_.data() + count_, stride_);
  if (!status.IsError()) ++count_;
  return status;
}

void CaseBatch::Score() {
  model_.ScoreBatch({entries_.data(), stride_, count_}, results_);
}

}  // namespace svmscore::tools
