#include "tools/score/row_scorer.h"

#include <utility>

#include "host/model/score_status.h"

namespace svmscore::tools {
namespace {

using MCZandor_850::ScoreDictVar;
using MCZandor_850::ScoreResult;

}  // namespace

RowPlan::RowPlan(const LoadedModel& of, ColumnChoice choice, bool decisions, bool reasons)
    : loaded(of),
      batch(dynamic_cast<BatchModel*>(of.model.get())),
      replaces_missing(of.model->GetMissingValuePolicy() ==
                       MCZandor_850::ScoreModel::kReplaceMissing),
      computes_output(choice == ColumnChoice::kDocument && !Output().Fields().empty()),
      reads_inputs(computes_output &&
                   (Output().InputCount() > 0 || !Output().ExtraInputs().empty())),
      gives_reasons(reasons),
      gives_decisions(decisions),
      results(MakeColumns(*loaded.model, Output(), choice, decisions, reasons)) {}

RowScorer::RowScorer(const RowPlan& plan, std::vector<const ScoreDictVar*> variables,
                     std::size_t capacity, std::shared_ptr<const reasons::CaseExaminer> examiner)
    : plan_(plan),
      capacity_(plan.batch == nullptr ? 1 : capacity),
      record_(std::move(variables), true, plan.replaces_missing),
      outputs_(plan.Output(), plan.replaces_missing),
      examiner_(std::move(examiner)) {
  if (plan.batch != nullptr) {
    const std::size_t categories = plan.Output().Targets().Target().GetCategories().size();
    batch_.emplace(*plan.batch, categories, capacity_, plan.gives_decisions);
  }
  rows_.reserve(capacity_);
  if (plan.reads_inputs) output_inputs_.reserve(capacity_ * plan.Output().InputCount());
}

RowScorer::~RowScorer() = default;

void RowScorer::Clear() {
  rows_.clear();
  output_inputs_.clear();
  input_texts_.Reset();
  if (batch_) batch_->Clear();
}

void RowScorer::Add() {
  Row row;
  if (record_.HasInvalid()) {
    row.status = RefuseInvalid();
  } else if (batch_) {
    row.place = batch_->Size();
    row.status = batch_->Add(record_).GetErrorCode();
  } else {
    ScoreResult* result = result_.release();
    row.status = plan_.loaded.model->GetScore(&record_, result, false).GetErrorCode();
    result_.reset(result);
  }
  rows_.push_back(row);
  if (!plan_.reads_inputs) return;
  const std::size_t count = plan_.Output().InputCount();
  output_inputs_.resize(output_inputs_.size() + count);
  if (record_.HasInvalid()) return;  // and no output field is computed
  plan_.Output().ReadInputs(record_, output_inputs_.data() + output_inputs_.size() - count,
                            input_texts_);
}

bool RowScorer::IsFull() const {
  return rows_.size() == capacity_ || input_texts_.BytesTaken() >= kMostTexts;
}

void RowScorer::TakePlainRows(std::size_t count) {
  rows_.resize(count);
  for (std::size_t r = 0; r < count; ++r) rows_[r] = {0, r};
  batch_->Reset(count);
}

void RowScorer::Score() {
  if (batch_) batch_->Score();
}

reasons::Ended RowScorer::Finish(std::size_t row, output::Outcome& outcome) {
  outcome = OutcomeOf(rows_[row]);
  reasons::Ended ended{outcome.status, outcome.status, rows_[row].status, nullptr, 0, {}};
  if (plan_.computes_output) {
    const transform::Value* inputs =
        plan_.reads_inputs ? output_inputs_.data() + row * plan_.Output().InputCount() : nullptr;
    outcome.status = plan_.Output().Evaluate(outcome, inputs, outputs_);
    ended.status = outcome.status;
    ended.output_field = outputs_.FirstInvalid();
  }
  if (!batch_ || rows_[row].status != 0) return ended;
  const BatchResults& results = batch_->Results();
  const std::size_t place = rows_[row].place;
  ended.own_status = results.status[place];
  if (ended.own_status == MCScore::kCannotScore) return ended;
  if (!plan_.gives_decisions && (examiner_ == nullptr || ended.status == 0)) return ended;
  const CaseBatch::Decisions decisions = batch_->DecisionsOf(place);
  ended.decisions = decisions.values;
  ended.stride = decisions.stride;
  return ended;
}

std::string RowScorer::Explain(const reasons::Ended& ended,
                               const std::vector<GivenText>& given) const {
  std::vector<reasons::Given> views;
  views.reserve(given.size());
  for (const GivenText& one : given) views.push_back({one.text, one.missing});
  return TextOf(examiner_->Examine(record_, views.data(), ended));
}

output::Outcome RowScorer::OutcomeOf(const Row& row) const {
  const output::TargetRules& targets = plan_.Output().Targets();
  if (row.status != 0) return targets.Finish({row.status, false}, nullptr);
  return batch_ ? targets.Finish(batch_->Results(), row.place) : targets.Finish({}, result_.get());
}

}  // namespace svmscore::tools
