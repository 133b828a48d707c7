#include "capi/row_scorer.h"

#include <utility>

#include "capi/document_lock.h"
#include "host/model/score_status.h"

namespace svmscore::capi {
namespace {

using MCZandor_850::ScoreDictVar;
using MCZandor_850::ScoreResult;

}  // namespace

ScoringPlan::ScoringPlan(SharedModel of_model, tools::ColumnChoice choice, bool decisions,
                         bool reasons)
    : model(std::move(of_model)),
      computes_output(choice == tools::ColumnChoice::kDocument && !Output().Fields().empty()),
      reads_inputs(computes_output &&
                   (Output().InputCount() > 0 || !Output().ExtraInputs().empty())),
      gives_reasons(reasons),
      gives_decisions(decisions),
      results(tools::MakeColumns(*model->loaded.model, Output(), choice, decisions, reasons)) {}

RowScorer::RowScorer(const ScoringPlan& plan, std::vector<const ScoreDictVar*> variables,
                     std::size_t capacity)
    : plan_(plan),
      capacity_(plan.model->batch == nullptr ? 1 : capacity),
      record_(variables, true, plan.model->replaces_missing),
      outputs_(plan.Output(), plan.model->replaces_missing) {
  if (plan.model->batch != nullptr) {
    const std::size_t categories = plan.Output().Targets().Target().GetCategories().size();
    batch_.emplace(*plan.model->batch, categories, capacity_, plan.gives_decisions);
  }
  if (plan.gives_reasons) {
    const DocumentLock lock(plan.model->document_mutex);
    examiner_.emplace(plan.model->loaded, variables);
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
    row.status = tools::RefuseInvalid();
  } else if (batch_) {
    row.place = batch_->Size();
    row.status = batch_->Add(record_).GetErrorCode();
  } else {
    ScoreResult* result = result_.release();
    row.status = plan_.model->loaded.model->GetScore(&record_, result, false).GetErrorCode();
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
  return rows_.size() == capacity_ || input_texts_.BytesTaken() >= tools::kMostTexts;
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
  if (!plan_.gives_decisions && (!plan_.gives_reasons || ended.status == 0)) return ended;
  const tools::CaseBatch::Decisions decisions = batch_->DecisionsOf(place);
  ended.decisions = decisions.values;
  ended.stride = decisions.stride;
  return ended;
}

std::string RowScorer::Explain(const reasons::Ended& ended,
                               const std::vector<GivenText>& given) const {
  std::vector<reasons::Given> views;
  for (const GivenText& one : given) views.push_back({one.text, one.missing});
  return TextOf(examiner_->Examine(record_, views.data(), ended));
}

output::Outcome RowScorer::OutcomeOf(const Row& row) const {
  const output::TargetRules& targets = plan_.Output().Targets();
  if (row.status != 0) return targets.Finish({row.status, false}, nullptr);
  return batch_ ? targets.Finish(batch_->Results(), row.place) : targets.Finish({}, result_.get());
}

}  // namespace svmscore::capi
