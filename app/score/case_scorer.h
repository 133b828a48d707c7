// From rows of text to rows of output: what one thread does with one block.
#ifndef APP_SCORE_CASE_SCORER_H_
#define APP_SCORE_CASE_SCORER_H_

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/pipeline/block_worker.h"
#include "app/pipeline/case_cells.h"
#include "app/pipeline/row_format.h"
#include "app/score/plain_rows.h"
#include "app/table/csv_row.h"
#include "host/model/score_case_record.h"
#include "host/model/score_model.h"
#include "host/output/output_plan.h"
#include "host/reasons/case_examiner.h"
#include "tools/base/case_columns.h"
#include "tools/base/cell_rules.h"
#include "tools/score/case_batch.h"
#include "tools/score/result_columns.h"

namespace svmscore::app {

// All that the threads of a run share; set up before, and only read while they score.
struct ScoringPlan {
  MCZandor_850::ScoreModel* model = nullptr;
  tools::CaseColumns columns;
  tools::CellRules cells;
  bool replace_missing = false;
  const output::OutputPlan* output = nullptr;
  bool computes_output = false;                     // the results hold columns of output fields
  std::unique_ptr<reasons::CaseExaminer> examiner;  // for the variables of `columns`
  bool logs_failures = false;                       // each failed case is written to the log
  bool writes_reasons = false;                      // the results hold the column of reasons
  bool writes_decisions = false;                    // the results hold those of decision values
  tools::ResultColumns results;                     // after the copied cells
  std::unique_ptr<RowFormat> format;
  RowForm rows;
  // So much text is not held back for rows that follow.
  std::size_t long_output = std::size_t{16} << 20;
};

// Used by one thread. A model that takes no batches scores case by case.
class CaseScorer final : public BlockWorker {
 public:
  explicit CaseScorer(const ScoringPlan& plan);
  ~CaseScorer() override;

  // A model that takes no batches fixes positions on the first case that it sees: it is shown one
  // without values.
  void FixPositions() override;

 private:
  // A row of the chunk: its place in the batch, or the status with which it stays outside.
  struct Row {
    long status = 0;
    std::size_t place = 0;
  };

  void ClearChunk() override;
  bool HasRoomInChunk() const override;
  void TakeRow(const std::string_view* cells) override;
  void ComputeChunk() override;
  void WriteRow(std::size_t row, CaseBlock& block) override;

  void ReadOutputInputs();
  void SetExtras(const std::string_view* cells);
  output::Outcome OutcomeOf(const Row& row);
  // Why the case failed: into the block, and into `reason_` where there is a column for it.
  void Explain(std::size_t row, const reasons::Ended& ended, CaseBlock& block);

  const ScoringPlan& plan_;
  CaseCells cells_;
  output::OutputScratch outputs_;
  std::unique_ptr<MCZandor_850::ScoreResult> result_;  // of a model that takes no batches
  std::unique_ptr<tools::CaseBatch> batch_;            // null for such a model
  std::optional<PlainRows> plain_rows_;  // nothing where rows must go through the record
  std::string reason_;                   // of the case at hand; empty where it is scored
  // What output fields depend on, of each row of the chunk: [rows][plan_.output->InputCount()].
  std::vector<transform::Value> output_inputs_;
  transform::Arena input_texts_;
  std::size_t chunk_rows_;
  std::vector<Row> rows_;
};

}  // namespace svmscore::app

#endif  // APP_SCORE_CASE_SCORER_H_
