#include "app/score/case_scorer.h"

#include "host/model/batch_model.h"
#include "host/model/score_status.h"

namespace svmscore::app {

using MCZandor_850::InputCaseRecord;
using MCZandor_850::ScoreResult;

namespace {

// So many bytes of lines wait for the log.
constexpr std::size_t kMostLogged = std::size_t{1} << 20;

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

void Tally::Count(long status) {
  ++cases;
  if (status == 0) {
    ++scored;
  } else if (status == MCScore::kInvalidValue) {
    ++invalid;
  } else {
    ++missing;
  }
}

void Tally::Add(const Tally& other) {
  cases += other.cases;
  scored += other.scored;
  missing += other.missing;
  invalid += other.invalid;
}

CaseScorer::CaseScorer(const ScoringPlan& plan)
    : plan_(plan),
      record_(plan.columns.variables, true, plan.replace_missing),
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
  record_.Clear();
  if (auto* model = dynamic_cast<BatchModel*>(plan_.model)) return model->FixPositions(record_);
  ScoreResult* result = nullptr;
  plan_.model->GetScore(&record_, result, false);
  result_.reset(result);
}

void CaseScorer::Score(CaseBlock& block) {
  block.error.reset();
  block.row_like_cells.Clear();
  rows_.clear();
  written_ = 0;
  reader_.emplace(block.rows.text.data(), block.rows.text.size(), block.rows.first_line,
                  plan_.rows);
  Resume(block);
}

void CaseScorer::Resume(CaseBlock& block) {
  block.out.clear();
  block.tally = {};
  block.failures.Clear();
  block.done = false;
  while (!block.done && HasRoom(block)) {
    if (written_ == rows_.size()) ScoreChunk(block);
    WriteChunk(block);
    block.done = !reader_ && written_ == rows_.size();
  }
}

void CaseScorer::ScoreChunk(CaseBlock& block) {
  rows_.clear();
  cells_.clear();
  output_inputs_.clear();
  input_texts_.Reset();
  written_ = 0;
  if (batch_ != nullptr) batch_->Clear();
  bool more = false;
  try {
    more = ReadChunk(*reader_);
  } catch (const CsvError& error) {
    block.error = error;
  }
  if (!more) {
    block.row_like_cells = reader_->CellsLikeRows();
    reader_.reset();
  }
  if (batch_ != nullptr) batch_->Score();
}

bool CaseScorer::ReadChunk(CsvRows& rows) {
  while (rows_.size() < chunk_rows_ && input_texts_.BytesTaken() < tools::kMostTexts) {
    if (!rows.Next(row_cells_, plan_.columns.width)) return false;
    ReadRow(rows.RowLine());
  }
  return true;
}

void CaseScorer::ReadRow(long line) {
  cells_.insert(cells_.end(), row_cells_.begin(), row_cells_.end());
  Row row;
  row.line = line;
  if (batch_ != nullptr) row.place = batch_->Size();
  const bool is_plain = plain_rows_ && plain_rows_->Take(row_cells_.data(), *batch_);
  if (batch_ != nullptr && !is_plain) {
    SetCells(row_cells_.data());
    row.status =
        record_.HasInvalid() ? tools::RefuseInvalid() : batch_->Add(record_).GetErrorCode();
    if (plan_.computes_output) ReadOutputInputs();
  }
  rows_.push_back(row);
}

void CaseScorer::ReadOutputInputs() {
  const std::size_t count = plan_.output->InputCount();
  if (count == 0) return;
  output_inputs_.resize(output_inputs_.size() + count);
  if (record_.HasInvalid()) return;  // and no output field is computed
  plan_.output->ReadInputs(record_, output_inputs_.data() + output_inputs_.size() - count,
                           input_texts_);
}

void CaseScorer::WriteChunk(CaseBlock& block) {
  const RowFormat& format = *plan_.format;
  LineSink cell(format, block.out);
  const std::size_t inputs = plan_.output->InputCount();
  while (written_ < rows_.size() && HasRoom(block)) {
    const std::size_t r = written_++;
    const std::string_view* cells = CellsOf(r);
    if (batch_ == nullptr) SetCells(cells);
    output::Outcome outcome = OutcomeOf(rows_[r]);
    const long model_status = outcome.status;
    if (plan_.computes_output) {
      SetExtras(cells);
      outcome.status =
          batch_ == nullptr
              ? plan_.output->Evaluate(outcome, record_, outputs_)
              : plan_.output->Evaluate(outcome, output_inputs_.data() + r * inputs, outputs_);
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
}

output::Outcome CaseScorer::OutcomeOf(const Row& row) {
  const output::TargetRules& targets = plan_.output->Targets();
  if (batch_ != nullptr) {
    if (row.status != 0) return targets.Finish({row.status, false}, nullptr);
    return targets.Finish(batch_->Results(), row.place);
  }
  if (record_.HasInvalid()) return targets.Finish({tools::RefuseInvalid(), false}, nullptr);
  ScoreResult* result = result_.release();
  const MCScore::MCStatus status = plan_.model->GetScore(&record_, result, false);
  result_.reset(result);
  return targets.Finish(status, result);
}

void CaseScorer::Explain(std::size_t row, const reasons::Ended& ended, CaseBlock& block) {
  const std::string_view* cells = CellsOf(row);
  const std::vector<std::size_t>& positions = plan_.columns.cells;
  if (failed_ == nullptr) {
    failed_ =
        std::make_unique<InputCaseRecord>(plan_.columns.variables, true, plan_.replace_missing);
    given_.resize(positions.size());
    read_.resize(positions.size());
  }
  for (std::size_t i = 0; i < positions.size(); ++i) {
    SetCell(*failed_, i, cells, positions[i]);
    const std::string_view cell = cells[positions[i]];
    const MCZandor_850::ScoreDictVar& var = *plan_.columns.variables[i];
    given_[i] = {cell, plan_.cells.IsMissing(cell, var)};
    if (plan_.cells.HasDecimalComma()) given_[i].read = plan_.cells.TextOf(cell, var, read_[i]);
  }
  const std::vector<reasons::Reason> found =
      plan_.examiner->Examine(*failed_, given_.data(), ended);
  block.failures.Add(block.tally.cases, rows_[row].line, found);
  if (plan_.writes_reasons) reason_ = TextOf(found);
}

void CaseScorer::SetCells(const std::string_view* cells) {
  const std::vector<std::size_t>& positions = plan_.columns.cells;
  for (std::size_t i = 0; i < positions.size(); ++i) SetCell(record_, i, cells, positions[i]);
}

void CaseScorer::SetExtras(const std::string_view* cells) {
  const std::vector<std::size_t>& positions = plan_.columns.extras;
  for (std::size_t i = 0; i < positions.size(); ++i) {
    SetCell(outputs_.Extras(), i, cells, positions[i]);
  }
}

void CaseScorer::SetCell(InputCaseRecord& record, std::size_t position,
                         const std::string_view* cells, std::size_t cell) {
  const MCZandor_850::ScoreDictVar& var = record.Variable(position);
  if (cell == tools::kNoCell || plan_.cells.IsMissing(cells[cell], var)) {
    record.SetMissing(position);
  } else {
    record.SetText(position, plan_.cells.TextOf(cells[cell], var, number_text_));
  }
}

bool CaseScorer::HasRoom(const CaseBlock& block) const {
  return block.out.size() < plan_.long_output && block.failures.Size() < kMostLogged;
}

}  // namespace svmscore::app
