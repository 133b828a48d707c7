// From the values of rows to the cells of their results: what one thread does with a few rows.
#ifndef TOOLS_SCORE_ROW_SCORER_H_
#define TOOLS_SCORE_ROW_SCORER_H_

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/load/loader.h"
#include "host/model/batch_model.h"
#include "host/model/score_case_record.h"
#include "host/model/score_result.h"
#include "host/output/output_plan.h"
#include "host/reasons/case_examiner.h"
#include "host/transform/value/arena.h"
#include "host/transform/value/value.h"
#include "tools/score/case_batch.h"
#include "tools/score/result_columns.h"

namespace svmscore::tools {

// What a model computes of every case, made once and read by all threads that score with it. Lives:
// the model, longer than this.
struct RowPlan {
  RowPlan(const LoadedModel& of, ColumnChoice choice, bool decisions, bool reasons);

  const output::OutputPlan& Output() const { return *loaded.output; }

  const LoadedModel& loaded;
  BatchModel* batch;      // the model, where it takes batches
  bool replaces_missing;  // the model's policy is that of ScoreModel::kReplaceMissing
  bool computes_output;   // the results hold columns of output fields
  bool reads_inputs;      // and those depend on more than the model's result
  bool gives_reasons;     // the last of the results is why a case failed
  bool gives_decisions;   // some of them are decision values
  ResultColumns results;
};

// What a failed case gave for an input.
struct GivenText {
  std::string text;
  bool missing = true;
};

// Used by one thread: rows are put in one after the other, scored together, and written. Lives: the
// plan, longer than it.
class RowScorer {
 public:
  // `variables`: those of the record, first the needed ones, in their order. `examiner`: for these
  // variables; may be null, and is where the plan gives no reasons.
  RowScorer(const RowPlan& plan, std::vector<const MCZandor_850::ScoreDictVar*> variables,
            std::size_t capacity, std::shared_ptr<const reasons::CaseExaminer> examiner);
  ~RowScorer();
  RowScorer(const RowScorer&) = delete;
  RowScorer& operator=(const RowScorer&) = delete;

  // At most so many rows are put in; 1 for a model that takes no batches.
  std::size_t Capacity() const { return capacity_; }
  MCZandor_850::InputCaseRecord& Record() { return record_; }
  // What output fields read beside the record; to be set before the row is written.
  MCZandor_850::InputCaseRecord& Extras() { return outputs_.Extras(); }

  void Clear();
  // Takes the record's case as the next row. REQUIRES: there is room. Fails: std::bad_alloc.
  void Add();
  bool IsFull() const;
  std::size_t RowCount() const { return rows_.size(); }
  // The rows at once, as the numbers of their entries, which the caller writes before Score: of row
  // r PlainEntries(entry)[r]. REQUIRES: the model has plain_entries, and the plan reads no inputs.
  double* PlainEntries(std::size_t entry) { return batch_->EntriesOf(entry); }
  void TakePlainRows(std::size_t count);
  // Takes one more row so: entry e is `number(e)`. REQUIRES: also that there is room.
  template <typename Number>
  void AddPlain(const Number& number) {
    const std::size_t place = batch_->Size();
    const std::size_t entries = plan_.batch->EntryCount();
    for (std::size_t e = 0; e < entries; ++e) batch_->EntriesOf(e)[place] = number(e);
    batch_->Reset(place + 1);
    rows_.push_back({0, place});
  }
  void Score();
  // Writes the cells of a row in the order of the plan's results: calls `begin` with the position
  // of each column, which gives its sink. Of a row that failed, where reasons are wanted, `again`
  // puts its values into a record, and tells for each the text that was given and whether that
  // means missing; without `again` the reason stays empty. Fails: what these throw; std::bad_alloc.
  template <typename Begin, typename Again>
  void Write(std::size_t row, const Begin& begin, const Again& again) {
    output::Outcome outcome;
    const reasons::Ended ended = Finish(row, outcome);
    reason_.clear();
    if (examiner_ != nullptr && ended.status != 0) {
      std::vector<GivenText> given(record_.Size());
      again(record_, given);
      reason_ = Explain(ended, given);
    }
    WriteCells(outcome, ended, begin);
  }
  template <typename Begin>
  void Write(std::size_t row, const Begin& begin) {
    output::Outcome outcome;
    const reasons::Ended ended = Finish(row, outcome);
    reason_.clear();
    WriteCells(outcome, ended, begin);
  }
  // Of the row that was written last: its status, and why it failed where there is an examiner.
  long Status() const { return status_; }
  const std::string& Reason() const { return reason_; }

 private:
  // A row: its place in the batch, or the status with which it stays outside.
  struct Row {
    long status = 0;
    std::size_t place = 0;
  };

  template <typename Begin>
  void WriteCells(const output::Outcome& outcome, const reasons::Ended& ended, const Begin& begin) {
    status_ = ended.status;
    const ScoredCase scored{outcome, outputs_, ended.decisions, ended.stride, reason_};
    for (std::size_t i = 0; i < plan_.results.size(); ++i) {
      plan_.results[i]->Write(scored, begin(i));
    }
  }
  reasons::Ended Finish(std::size_t row, output::Outcome& outcome);
  output::Outcome OutcomeOf(const Row& row) const;
  std::string Explain(const reasons::Ended& ended, const std::vector<GivenText>& given) const;

  const RowPlan& plan_;
  std::size_t capacity_;
  MCZandor_850::InputCaseRecord record_;
  output::OutputScratch outputs_;
  std::optional<CaseBatch> batch_;
  std::unique_ptr<MCZandor_850::ScoreResult> result_;  // of a model that takes no batches
  // What output fields depend on, of each row: [rows][plan.Output().InputCount()].
  std::vector<transform::Value> output_inputs_;
  transform::Arena input_texts_;
  std::vector<Row> rows_;
  std::string reason_;  // of the row written last
  long status_ = 0;     // likewise
  std::shared_ptr<const reasons::CaseExaminer> examiner_;
};

}  // namespace svmscore::tools

#endif  // TOOLS_SCORE_ROW_SCORER_H_
