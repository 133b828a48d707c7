// The columns of the output, and what each takes from a scored case.
#ifndef APP_SCORE_RESULT_COLUMNS_H_
#define APP_SCORE_RESULT_COLUMNS_H_

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/score/row_format.h"
#include "host/model/score_model.h"
#include "host/output/output_plan.h"
#include "tools/base/case_columns.h"

namespace svmscore::app {

// One case after scoring. Everything is borrowed, and changes with the next case.
struct ScoredCase {
  const std::string_view* cells;  // of the input row
  const output::Outcome& outcome;
  output::OutputScratch& outputs;  // computed where there are columns of output fields
  const double* decisions;         // of the first machine; null where the case has none
  std::size_t decision_stride;
};

// Where a column writes its cell: exactly one call a cell.
class CellWriter {
 public:
  CellWriter(const RowFormat& format, std::string& out) : format_(format), out_(out) {}
  void Empty() { format_.Empty(out_); }
  void Text(std::string_view text) { format_.Text(out_, text); }
  void Number(double number) { format_.Number(out_, number); }
  void Whole(long number) { format_.Whole(out_, number); }

 private:
  const RowFormat& format_;
  std::string& out_;
};

// A kind of column. Written by all threads at once.
class ResultColumn {
 public:
  explicit ResultColumn(std::string name) : name_(std::move(name)) {}
  virtual ~ResultColumn() = default;
  const std::string& Name() const { return name_; }
  virtual void Write(const ScoredCase& scored, CellWriter& cell) const = 0;

 private:
  std::string name_;
};

using ResultColumns = std::vector<std::unique_ptr<ResultColumn>>;

// Which of the result's columns are written.
enum class ColumnChoice {
  kDocument,  // the document's output fields; without any, as kComputed
  kComputed,  // those that the model's scheme computes, under plain names
  kAll,       // every one, under plain names
};

// Copied cells first, then those of the result, then with `decisions` the decision value of every
// machine if the model is a BatchModel, then the status. `copied_names` are the names of
// `columns.copied`.
ResultColumns MakeColumns(const MCZandor_850::ScoreModel& model, const output::OutputPlan& output,
                          ColumnChoice choice, const tools::CaseColumns& columns, bool decisions,
                          const std::vector<std::string>& copied_names);

}  // namespace svmscore::app

#endif  // APP_SCORE_RESULT_COLUMNS_H_
