// Scoring tables and cases with a model.
#ifndef CAPI_SCORER_H_
#define CAPI_SCORER_H_

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "capi/column_view.h"
#include "capi/input_cells.h"
#include "capi/model_state.h"
#include "capi/result_table.h"
#include "tools/score/row_scorer.h"

namespace svmscore::capi {

using tools::GivenText;
using tools::RowScorer;

struct ScoringPlan : tools::RowPlan {
  ScoringPlan(SharedModel of, tools::ColumnChoice choice, bool decisions, bool reasons)
      : RowPlan(of->loaded, choice, decisions, reasons), model(std::move(of)) {}

  // Why cases with these variables fail; null where no reasons are wanted. Fails: std::bad_alloc.
  std::shared_ptr<const reasons::CaseExaminer> ExaminerOf(
      const std::vector<const MCZandor_850::ScoreDictVar*>& variables) const;

  SharedModel model;
};

struct ScorerSettings {
  tools::ColumnChoice choice = tools::ColumnChoice::kDocument;
  bool decisions = false;
  bool reasons = false;
  bool category_codes = false;
  std::size_t threads = 1;
  MissingTexts missing;
};
// Throws a Refusal. `options` may be null.
ScorerSettings ReadSettings(const svmscore_scorer_options* options);

// Used by one thread. Fails: Refusal for a table that does not fit; std::bad_alloc.
class Scorer {
 public:
  Scorer(SharedModel model, ScorerSettings settings);

  const ScoringPlan& Plan() const { return plan_; }
  const ScorerSettings& Settings() const { return settings_; }
  // The table's columns and what they hold, before anything is scored.
  const ResultTable& Outputs() const { return *table_; }

  // All columns have `rows` values.
  const ResultTable& ScoreTable(const std::vector<ColumnView>& columns, std::size_t rows);
  // Hands the last table over; the scorer makes a new one.
  std::shared_ptr<ResultTable> TakeTable();
  // Refuses a table whose columns do not fit the model, by names and types.
  void CheckTable(const std::vector<ColumnView>& columns) const;

  // The results of the case: those of the plan, in order, at most `output_count`.
  void ScoreCase(const svmscore_value* inputs, std::size_t input_count, svmscore_value* outputs,
                 std::size_t output_count);
  void ScoreNumbers(const double* inputs, std::size_t input_count, double* outputs,
                    std::size_t output_count);

 private:
  struct TableInput;
  class TableRun;

  // What one case is scored with; made at the first.
  struct Single {
    Single(const ScoringPlan& plan, const MissingTexts& missing);
    Single(const ScoringPlan& plan, const MissingTexts& missing,
           const std::vector<const MCZandor_850::ScoreDictVar*>& variables);  // of records

    RowScorer rows;
    std::vector<InputCell> cells;  // of the model's inputs
    bool takes_plain;  // where every number is an entry, numbers need not go through a record
  };
  Single& TheSingle();
  void Refill(Single& single, const svmscore_value* inputs, std::size_t input_count,
              std::vector<GivenText>& given) const;
  void SetInput(Single& single, std::size_t input, const svmscore_value& value) const;
  // Puts the inputs in as entries, and returns true, where all are numbers that need no record.
  template <typename Input>
  bool SetPlain(Single& single, const Input* inputs, std::size_t input_count) const;

  ScorerSettings settings_;
  ScoringPlan plan_;
  std::shared_ptr<ResultTable> table_;
  std::unique_ptr<Single> single_;
  // The rows of the threads of the last table, and the variables of their records.
  std::vector<std::unique_ptr<RowScorer>> rows_;
  std::vector<const MCZandor_850::ScoreDictVar*> row_variables_;
};

}  // namespace svmscore::capi

struct svmscore_scorer {
  svmscore::capi::Scorer scorer;
};

#endif  // CAPI_SCORER_H_
