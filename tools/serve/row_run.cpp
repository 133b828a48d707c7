#include "tools/serve/row_run.h"

#include <algorithm>

namespace svmscore::serve {

using MCZandor_850::InputCaseRecord;

void RowCounts::Count(long status) {
  if (status == 0) {
    ++scored;
  } else if (status == MCScore::kInvalidValue) {
    ++invalid;
  } else {
    ++missing;
  }
}

RowRun::RowRun(const ServedModel& model, bool single)
    : model_(model), scorer_(model, single), capacity_(scorer_->Capacity()) {
  cells_.resize(capacity_ * model.Inputs().size());
  given_.resize(model.Inputs().size());
  if (!model.PlainEntries().empty()) numbers_.resize(model.RecordInputs());
  scorer_->Clear();
}

CaseCell* RowRun::Add() {
  CaseCell* cells = CellsOf(refused_.size());
  refused_.emplace_back();
  std::fill(cells, cells + model_.Inputs().size(), CaseCell());
  return cells;
}

// Numbers that are entries as they are go past the record.
bool RowRun::TakePlain(const CaseCell* cells) {
  if (numbers_.empty()) return false;
  for (std::size_t i = 0; i < numbers_.size(); ++i) {
    if (!cells[i].IsNumber(numbers_[i])) return false;
  }
  const std::vector<std::size_t>& entries = model_.PlainEntries();
  scorer_->AddPlain([this, &entries](std::size_t entry) { return numbers_[entries[entry]]; });
  return true;
}

void RowRun::Take() {
  const CaseCell* cells = CellsOf(refused_.size() - 1);
  if (TakePlain(cells)) return;
  InputCaseRecord& record = scorer_->Record();
  for (std::size_t i = 0; i < model_.RecordInputs(); ++i) cells[i].Put(record, i, model_.Cells());
  scorer_->Add();
}

void RowRun::Clear() {
  refused_.clear();
  std::fill(given_.begin(), given_.end(), 0);
  scorer_->Clear();
}

void RowRun::FillExtras(std::size_t row) {
  const CaseCell* cells = CellsOf(row) + model_.RecordInputs();
  const std::size_t extras = model_.Inputs().size() - model_.RecordInputs();
  for (std::size_t i = 0; i < extras; ++i) cells[i].Put(scorer_->Extras(), i, model_.Cells());
}

void RowRun::Refill(std::size_t row, InputCaseRecord& record,
                    std::vector<tools::GivenText>& given) {
  const CaseCell* cells = CellsOf(row);
  for (std::size_t i = 0; i < given.size(); ++i) {
    cells[i].Put(record, i, model_.Cells());
    given[i] = cells[i].Given(*model_.Inputs()[i], model_.Cells());
  }
}

}  // namespace svmscore::serve
