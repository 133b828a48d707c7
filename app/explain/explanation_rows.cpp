#include "app/explain/explanation_rows.h"

#include "host/model/score_status.h"

namespace svmscore::app {
namespace {

// The cells of a row, one after the other.
class Cells {
 public:
  Cells(const RowFormat& format, std::string& out) : format_(format), out_(out) {}

  void Whole(std::uint64_t number) { Begin().Whole(out_, static_cast<long>(number)); }
  void Text(const std::string& text) { Begin().Text(out_, text); }
  void Number(double number) { Begin().Number(out_, number); }
  void Numbers(const double* numbers, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) Number(numbers[i]);
  }
  void EmptyUpTo(std::size_t count) {
    while (column_ < count) Begin().Empty(out_);
  }
  void End() { format_.EndRow(out_); }

 private:
  const RowFormat& Begin() {
    format_.Begin(out_, column_++);
    return format_;
  }

  const RowFormat& format_;
  std::string& out_;
  std::size_t column_ = 0;
};

std::size_t ColumnCount(const tools::ModelExplainer& model, bool gradients) {
  const std::size_t of_players = model.Values().IsSampled() ? 2 : 1;
  return 4 + of_players * model.PlayerList().size() + (gradients ? model.Fields().size() : 0);
}

void RaiseTo(std::atomic<double>& largest, double number) {
  double known = largest.load(std::memory_order_relaxed);
  while (number > known && !largest.compare_exchange_weak(known, number)) {
  }
}

}  // namespace

std::vector<std::string> ExplanationColumns(const tools::ModelExplainer& model, bool gradients) {
  std::vector<std::string> names = {"row", "decision_of", "decision", "base"};
  const auto add_players = [&](const char* what) {
    for (const tools::Player& player : model.PlayerList()) {
      names.push_back(what + ('(' + player.name) + ')');
    }
  };
  add_players("phi");
  if (model.Values().IsSampled()) add_players("error");
  if (!gradients) return names;
  for (const std::string& field : model.Fields()) names.push_back("gradient(" + field + ")");
  return names;
}

ExplanationRows::ExplanationRows(const ExplanationPlan& plan, std::atomic<double>& imbalance)
    : BlockWorker(plan.rows, plan.columns.width),
      plan_(plan),
      imbalance_(imbalance),
      cells_(plan.columns, plan.cells, plan.replace_missing),
      chunk_rows_(tools::CasesExplainedAtOnce(*plan.model, plan.gradients)),
      cases_(*plan.model, chunk_rows_, plan.gradients) {}

void ExplanationRows::FixPositions() {
  plan_.model->Batch().FixPositions(cells_.Record());
}

void ExplanationRows::ClearChunk() {
  rows_.clear();
  cases_.Clear();
}

void ExplanationRows::TakeRow(const std::string_view* cells) {
  const MCZandor_850::InputCaseRecord& record = cells_.Read(cells);
  const std::size_t place = cases_.Size();
  const long status = record.HasInvalid() ? MCScore::kInvalidValue : cases_.Add(record);
  rows_.push_back({status, place});
}

void ExplanationRows::ComputeChunk() {
  cases_.Explain();
}

void ExplanationRows::WriteRow(std::size_t r, CaseBlock& block) {
  Row& row = rows_[r];
  const double* decisions = nullptr;
  bool decided = false;
  if (row.status == 0 && !cases_.IsExplained(row.place)) {
    row.status = MCScore::kInvalidValue;
    decisions = cases_.Decisions(row.place);
    decided = cases_.IsDecided(row.place);
  }
  if (row.status == 0) {
    RaiseTo(imbalance_, cases_.Imbalance(row.place));
  } else if (decided) {
    block.failures.Add(block.tally.cases, LineOf(r), {{.cause = reasons::Cause::kNotExplained}});
  } else {
    const reasons::Ended ended{row.status, row.status, row.status, decisions, 1, {}};
    block.failures.Add(block.tally.cases, LineOf(r),
                       cells_.ReasonsOf(*plan_.examiner, CellsOf(r), ended));
  }
  block.tally.Count(row.status);
  const std::uint64_t number = block.first_row + RowsWritten() + 1;
  for (std::size_t m = 0; m < plan_.model->Decisions().size(); ++m) {
    WriteDecision(number, m, row.status == 0 ? &row : nullptr, block.out);
  }
}

void ExplanationRows::WriteDecision(std::uint64_t number, std::size_t decision,
                                    const Row* explained, std::string& out) const {
  const tools::ModelExplainer& model = *plan_.model;
  Cells cells(*plan_.format, out);
  cells.Whole(number);
  cells.Text(model.Decisions()[decision]);
  if (explained != nullptr) {
    const std::size_t players = model.PlayerList().size();
    cells.Number(cases_.Decisions(explained->place)[decision]);
    cells.Number(model.Values().Base(decision));
    cells.Numbers(cases_.Values(explained->place, decision), players);
    if (model.Values().IsSampled()) {
      cells.Numbers(cases_.Errors(explained->place, decision), players);
    }
    if (plan_.gradients) {
      cells.Numbers(cases_.Gradients(explained->place, decision), model.Fields().size());
    }
  }
  cells.EmptyUpTo(ColumnCount(model, plan_.gradients));
  cells.End();
}

}  // namespace svmscore::app
