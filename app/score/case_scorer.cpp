#include "app/score/case_scorer.h"

#include "host/model/batch_model.h"
#include "host/model/score_status.h"

namespace svmscore::app {

using MCZandor_850::InputCaseRecord;
using MCZandor_850::ScoreResult;

namespace {

// A line of output, as the columns of results write it.
class LineSink final : public tools::CellSink {
 public:
  LineSink(const RowFormat& format, std::string& out) : format_(format), out_(out) {}
  void Empty() override { format_.Empty(out_); }
  void Text(std::string_view text) override { format_.Text(out_, text); }
  void Number(double number) override { format_.Number(out_, number); }
  void Whole(long number) override { format_.Whole(out_, number); }

 private:
  const RowFormat& format_;
  std::string& out_;
};

}  // namespace

CaseScorer::CaseScorer(const ScoringPlan& plan)
    : BlockWorker(plan.rows, plan.columns.width, plan.long_output),
      plan_(plan),
      cells_(plan.columns, plan.cells, plan.replace_missing),
      outputs_(*plan.output, plan.replace_missing) {
  auto* model = dynamic_cast<BatchModel*>(plan.model);
  chunk_rows_ = tools::CasesAtOnce(model, plan.columns.width);
  if (model == nullptr) return;
  const std::size_t categories = plan.output->Targets().Target().GetCategories().size();
  batch_ =
      std::make_unique<tools::CaseBatch>(*model, categories, chunk_rows_, plan.writes_decisions);
  const bool reads_record = plan.computes_output && plan.output->InputCount() > 0;
  if (!reads_record) plain_rows_.emplace(*model, plan.columns, plan.cells);
}

CaseScorer::~CaseScorer() = default;

void CaseScorer::FixPositions() {
  const InputCaseRecord& record = cells_.Record();
  if (auto* model = dynamic_cast<BatchModel*>(plan_.model)) return model->FixPositions(record);
  ScoreResult* result = nullptr;
  plan_.model->GetScore(&record, result, false);
  result_.reset(result);
}

void CaseScorer::ClearChunk() {
  rows_.clear();
  output_inputs_.clear();
  input_texts_.Reset();
  if (batch_ != nullptr) batch_->Clear();
}

bool CaseScorer::HasRoomInChunk() const {
  return rows_.size() < chunk_rows_ && input_texts_.BytesTaken() < tools::kMostTexts;
}

void CaseScorer::TakeRow(const std::string_view* cells) {
  Row row;
  if (batch_ != nullptr) row.place = batch_->Size();
  const bool is_plain = plain_rows_ && plain_rows_->Take(cells, *batch_);
  if (batch_ != nullptr && !is_plain) {
    const InputCaseRecord& record = cells_.Read(cells);
    row.status = record.HasInvalid() ? tools::RefuseInvalid() : batch_->Add(record).GetErrorCode();
    if (plan_.computes_output) ReadOutputInputs();
  }
  rows_.push_back(row);
}

void CaseScorer::ComputeChunk() {
  if (batch_ != nullptr) batch_->Score();
}

void CaseScorer::ReadOutputInputs() {
  const std::size_t count = plan_.output->InputCount();
  if (count == 0) return;
  output_inputs_.resize(output_inputs_.size() + count);
  if (cells_.Record().HasInvalid()) return;  // and no output field is computed
  plan_.output->ReadInputs(cells_.Record(), output_inputs_.data() + output_inputs_.size() - count,
                           input_texts_);
}

void CaseScorer::WriteRow(std::size_t r, CaseBlock& block) {
  const RowFormat& format = *plan_.format;
  LineSink cell(format, block.out);
  const std::size_t inputs = plan_.output->InputCount();
  const std::string_view* cells = CellsOf(r);
  if (batch_ == nullptr) cells_.Read(cells);
  output::Outcome outcome = OutcomeOf(rows_[r]);
  const long model_status = outcome.status;
  if (plan_.computes_output) {
    SetExtras(cells);
    outcome.status = batch_ == nullptr ? plan_.output->Evaluate(outcome, cells_.Record(), outputs_)
                                       : plan_.output->Evaluate(
                                             outcome, output_inputs_.data() + r * inputs, outputs_);
  }
  const bool decided = batch_ != nullptr && rows_[r].status == 0 &&
                       batch_->Results().status[rows_[r].place] != MCScore::kCannotScore;
  tools::CaseBatch::Decisions decisions{nullptr, 0};
  if (decided && (plan_.writes_decisions || outcome.status != 0)) {
    decisions = batch_->DecisionsOf(rows_[r].place);
  }
  if (outcome.status != 0) {
    long own_status = model_status;
    if (batch_ != nullptr && rows_[r].status == 0) {
      own_status = batch_->Results().status[rows_[r].place];
    }
    Explain(r,
            {outcome.status, model_status, own_status, decisions.values, decisions.stride,
             outputs_.FirstInvalid()},
            block);
  } else if (plan_.writes_reasons) {
    reason_.clear();
  }
  block.tally.Count(outcome.status);
  const tools::ScoredCase scored{outcome, outputs_, decisions.values, decisions.stride, reason_};
  std::size_t column = 0;
  for (const std::size_t position : plan_.columns.copied) {
    format.Begin(block.out, column++);
    if (cells[position].empty()) {
      cell.Empty();
    } else {
      cell.Text(cells[position]);
    }
  }
  for (const auto& result : plan_.results) {
    format.Begin(block.out, column++);
    result->Write(scored, cell);
  }
  format.EndRow(block.out);
}

output::Outcome CaseScorer::OutcomeOf(const Row& row) {
  const output::TargetRules& targets = plan_.output->Targets();
  if (batch_ != nullptr) {
    if (row.status != 0) return targets.Finish({row.status, false}, nullptr);
    return targets.Finish(batch_->Results(), row.place);
  }
  if (cells_.Record().HasInvalid()) return targets.Finish({tools::RefuseInvalid(), false}, nullptr);
  ScoreResult* result = result_.release();
  const MCScore::MCStatus status = plan_.model->GetScore(&cells_.Record(), result, false);
  result_.reset(result);
  return targets.Finish(status, result);
}

void CaseScorer::Explain(std::size_t row, const reasons::Ended& ended, CaseBlock& block) {
  const std::vector<reasons::Reason> found = cells_.ReasonsOf(*plan_.examiner, CellsOf(row), ended);
  block.failures.Add(block.tally.cases, LineOf(row), found);
  if (plan_.writes_reasons) reason_ = TextOf(found);
}

void CaseScorer::SetExtras(const std::string_view* cells) {
  const std::vector<std::size_t>& positions = plan_.columns.extras;
  for (std::size_t i = 0; i < positions.size(); ++i) {
    cells_.Set(outputs_.Extras(), i, cells, positions[i]);
  }
}

}  // namespace svmscore::app
