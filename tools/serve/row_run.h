// The rows of a request on their way through a model.
#ifndef TOOLS_SERVE_ROW_RUN_H_
#define TOOLS_SERVE_ROW_RUN_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "host/model/score_status.h"
#include "tools/score/cell_sink.h"
#include "tools/serve/case_cell.h"
#include "tools/serve/served_model.h"

namespace svmscore::serve {

// How rows ended.
struct RowCounts {
  std::uint64_t scored = 0;
  std::uint64_t invalid = 0;  // 90027
  std::uint64_t missing = 0;  // 90029

  std::uint64_t All() const { return scored + invalid + missing; }
  void Count(long status);
};

// Takes rows until it is full, scores and writes them, and so on. A row that cannot be understood
// fails alone. [one thread] Lives: the model, longer than this; cells and their texts, until they
// are written. Fails: std::bad_alloc.
class RowRun {
 public:
  // `single`: one row is all that comes.
  RowRun(const ServedModel& model, bool single);

  bool IsFull() const { return refused_.size() == capacity_ || scorer_->IsFull(); }
  bool IsEmpty() const { return refused_.empty(); }
  // The cells of the next row, one for each of the model's inputs, all missing. REQUIRES: not full.
  CaseCell* Add();
  // A copy of the cells of the row added last.
  std::vector<CaseCell> LastCells() {
    const CaseCell* cells = CellsOf(refused_.size() - 1);
    return {cells, cells + model_.Inputs().size()};
  }
  // Notes that the row added last has a value for the input; false where it had one.
  bool Give(std::size_t input) {
    return std::exchange(given_[input], refused_.size()) != refused_.size();
  }
  // Says that the row added last is no case, and why.
  void Refuse(std::string why) { refused_.back() = std::move(why); }
  // Takes the row added last, once its cells are filled.
  void Take();

  // Scores the rows and writes them in order: `cell(column)` gives the sink of a result of the
  // plan, the last of which is the status; `end(status, reason)` ends the row. Then it is empty.
  template <typename Cell, typename End>
  void Write(RowCounts& counts, const Cell& cell, const End& end) {
    scorer_->Score();
    const tools::RowPlan& plan = model_.Plan();
    for (std::size_t row = 0, taken = 0; row < refused_.size(); ++row) {
      if (!refused_[row].empty()) {
        for (std::size_t i = 0; i + 1 < plan.results.size(); ++i) cell(i).Empty();
        cell(plan.results.size() - 1).Whole(MCScore::kInvalidValue);
        counts.Count(MCScore::kInvalidValue);
        end(MCScore::kInvalidValue, refused_[row]);
        continue;
      }
      FillExtras(row);
      scorer_->Write(
          taken++, cell,
          [this, row](MCZandor_850::InputCaseRecord& record, std::vector<tools::GivenText>& given) {
            Refill(row, record, given);
          });
      counts.Count(scorer_->Status());
      end(scorer_->Status(), scorer_->Reason());
    }
    Clear();
  }

 private:
  CaseCell* CellsOf(std::size_t row) { return cells_.data() + row * model_.Inputs().size(); }
  void Clear();
  bool TakePlain(const CaseCell* cells);
  void FillExtras(std::size_t row);
  void Refill(std::size_t row, MCZandor_850::InputCaseRecord& record,
              std::vector<tools::GivenText>& given);

  const ServedModel& model_;
  ServedModel::ScorerLease scorer_;
  std::size_t capacity_;
  std::vector<CaseCell> cells_;  // [rows][inputs]
  // Of each input the number of the row, from 1, that had a value for it last; 0: none yet.
  std::vector<std::size_t> given_;
  std::vector<double> numbers_;       // of the inputs of a row
  std::vector<std::string> refused_;  // of each row why it is no case; empty for one that is
};

}  // namespace svmscore::serve

#endif  // TOOLS_SERVE_ROW_RUN_H_
