// From rows of text to rows of output: what one thread does with one block.
#ifndef APP_SCORE_CASE_SCORER_H_
#define APP_SCORE_CASE_SCORER_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/score/failures.h"
#include "app/score/plain_rows.h"
#include "app/score/row_format.h"
#include "app/table/csv_row.h"
#include "app/table/row_blocks.h"
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
  // So much text is not held back for rows that follow: a thousand cases may be two bytes each to
  // read and a megabyte each to write.
  std::size_t long_output = std::size_t{16} << 20;
};

// How the cases of a run ended.
struct Tally {
  std::uint64_t cases = 0;
  std::uint64_t scored = 0;
  std::uint64_t missing = 0;  // no prediction for lack of a value
  std::uint64_t invalid = 0;  // an invalid value, or no decidable outcome

  void Count(long status);
  void Add(const Tally& other);
};

// A block on its way through the pipeline.
struct CaseBlock {
  explicit CaseBlock(bool keeps_failures = false) : failures(keeps_failures) {}

  RowBlock rows;
  std::string out;                // of the rows that are scored and not written yet
  Tally tally;                    // of the rows of `out`
  Failures failures;              // likewise
  RowLikeCells row_like_cells;    // of the whole block, once it is done
  std::optional<CsvError> error;  // what is wrong with the row after the last one
  std::uint64_t bytes_read = 0;   // of the input, up to this block or a little further
  bool done = true;               // `out` ends with the last row
};

// Used by one thread. Takes the rows of a block in chunks: reads a chunk, lets the model score it
// as one batch, and writes it. A model that takes no batches scores case by case.
class CaseScorer {
 public:
  explicit CaseScorer(const ScoringPlan& plan);
  ~CaseScorer();
  CaseScorer(const CaseScorer&) = delete;
  CaseScorer& operator=(const CaseScorer&) = delete;

  // Scores the rows of the block up to the first broken one, or until `out` is long: then `done` is
  // false, and once `out` is written, Resume of the same scorer, on any thread, goes on with a new
  // one.
  void Score(CaseBlock& block);
  void Resume(CaseBlock& block);
  // Lets the model fix the positions of its variables in records, which must not happen on several
  // threads at once. One that takes no batches does so on the first case that it sees: it is shown
  // one without values.
  void FixPositions();

 private:
  // A row of the chunk: its place in the batch, or the status with which it stays outside.
  struct Row {
    long status = 0;
    std::size_t place = 0;
    long line = 0;  // of the table
  };

  // Makes the next rows the chunk, and lets the model score it.
  void ScoreChunk(CaseBlock& block);
  // Reads rows until the chunk is full; false at the end of the rows.
  bool ReadChunk(CsvRows& rows);
  void ReadRow(long line);
  void ReadOutputInputs();
  // Writes rows of the chunk until they end or `out` is long.
  void WriteChunk(CaseBlock& block);
  // The cells of a row of the chunk.
  const std::string_view* CellsOf(std::size_t row) const {
    return cells_.data() + row * plan_.columns.width;
  }
  void SetCells(const std::string_view* cells);
  void SetExtras(const std::string_view* cells);
  void SetCell(MCZandor_850::InputCaseRecord& record, std::size_t position,
               const std::string_view* cells, std::size_t cell);
  output::Outcome OutcomeOf(const Row& row);
  // Why the case failed: into the block, and into `reason_` where there is a column for it.
  void Explain(std::size_t row, const reasons::Ended& ended, CaseBlock& block);
  bool HasRoom(const CaseBlock& block) const;

  const ScoringPlan& plan_;
  MCZandor_850::InputCaseRecord record_;
  output::OutputScratch outputs_;
  std::unique_ptr<MCZandor_850::ScoreResult> result_;  // of a model that takes no batches
  std::unique_ptr<tools::CaseBatch> batch_;            // null for such a model
  std::optional<PlainRows> plain_rows_;  // nothing where rows must go through the record
  // A failed case that is looked at again; null until one has failed.
  std::unique_ptr<MCZandor_850::InputCaseRecord> failed_;
  std::vector<reasons::Given> given_;  // of the variables of such a case
  std::vector<std::string> read_;      // of these, the texts that are read in another spelling
  std::string reason_;                 // of the case at hand; empty where it is scored
  // What output fields depend on, of each row of the chunk: [rows][plan_.output->InputCount()].
  std::vector<transform::Value> output_inputs_;
  transform::Arena input_texts_;
  std::size_t chunk_rows_;
  std::string number_text_;
  std::vector<std::string_view> row_cells_;
  std::vector<std::string_view> cells_;  // [rows][width]
  std::vector<Row> rows_;
  std::size_t written_ = 0;        // rows of the chunk
  std::optional<CsvRows> reader_;  // of the block at hand; nothing after its last row
};

}  // namespace svmscore::app

#endif  // APP_SCORE_CASE_SCORER_H_
