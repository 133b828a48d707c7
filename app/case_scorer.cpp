#include "app/case_scorer.h"

#include <algorithm>

#include <fmt/format.h>

#include "host/score_status.h"

namespace svmscore::app {

using MCZandor_850::InputCaseRecord;
using MCZandor_850::ScoreResult;

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
      outputs_(*plan.output, plan.replace_missing) {}

CaseScorer::~CaseScorer() = default;

void CaseScorer::FixPositions() {
  record_.Clear();
  ScoreResult* result = nullptr;
  plan_.model->GetScore(&record_, result, false);
  result_.reset(result);
}

void CaseScorer::Score(CaseBlock& block) {
  block.out.clear();
  block.tally = {};
  block.error.reset();
  CsvRows rows(block.rows.text.data(), block.rows.text.size(), block.rows.first_line);
  try {
    while (rows.Next(cells_)) {
      if (cells_.size() != plan_.columns.width) {
        const bool empty = cells_.size() == 1 && cells_[0].empty();
        throw CsvError(rows.RowLine(),
                       fmt::format("{} where the header has {} cells",
                                   empty ? std::string("an empty line")
                                         : fmt::format("a row of {}", cells_.size()),
                                   plan_.columns.width));
      }
      ScoreRow(block);
    }
  } catch (const CsvError& error) {
    block.error = error;
  }
}

void CaseScorer::ScoreRow(CaseBlock& block) {
  const output::Outcome outcome = ScoreCells();
  block.tally.Count(outcome.status);
  if (plan_.computes_output) plan_.output->Evaluate(outcome, record_, outputs_);
  const ScoredCase scored{cells_, record_, outcome, outputs_};
  const RowFormat& format = *plan_.format;
  CellWriter cell(format, block.out);
  for (std::size_t i = 0; i < plan_.results.size(); ++i) {
    format.Begin(block.out, i);
    plan_.results[i]->Write(scored, cell);
  }
  format.EndRow(block.out);
}

output::Outcome CaseScorer::ScoreCells() {
  const CaseColumns& columns = plan_.columns;
  for (std::size_t i = 0; i < columns.cells.size(); ++i) SetCell(record_, i, columns.cells[i]);
  for (std::size_t i = 0; plan_.computes_output && i < columns.extras.size(); ++i) {
    SetCell(outputs_.Extras(), i, columns.extras[i]);
  }
  const output::TargetRules& targets = plan_.output->Targets();
  if (record_.HasInvalid()) return targets.Finish({MCScore::kInvalidValue, false}, nullptr);
  ScoreResult* result = result_.release();
  const MCScore::MCStatus status = plan_.model->GetScore(&record_, result, false);
  result_.reset(result);
  return targets.Finish(status, result);
}

void CaseScorer::SetCell(InputCaseRecord& record, std::size_t position, std::size_t cell) {
  if (cell == kNoCell || IsMissing(cells_[cell])) {
    record.SetMissing(position);
  } else {
    record.SetText(position, cells_[cell]);
  }
}

bool CaseScorer::IsMissing(std::string_view cell) const {
  return cell.empty() || std::find(plan_.missing_tokens.begin(), plan_.missing_tokens.end(),
                                   cell) != plan_.missing_tokens.end();
}

}  // namespace svmscore::app
