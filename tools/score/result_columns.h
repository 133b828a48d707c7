// The columns of the output, and what each takes from a scored case.
#ifndef TOOLS_SCORE_RESULT_COLUMNS_H_
#define TOOLS_SCORE_RESULT_COLUMNS_H_

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/model/score_model.h"
#include "host/output/output_plan.h"
#include "tools/score/cell_sink.h"

namespace svmscore::tools {

// One case after scoring. Everything is borrowed, and changes with the next case.
struct ScoredCase {
  const output::Outcome& outcome;
  output::OutputScratch& outputs;  // computed where there are columns of output fields
  const double* decisions;         // of the first machine; null where the case has none
  std::size_t decision_stride;
  std::string_view reason = {};  // why the case failed, in words; empty where it did not
};

// What the cells of a column hold unless they are empty. kCategory: texts that are categories of
// the target. kAny: a text, a number or a whole number, as it comes.
enum class CellKind { kText, kCategory, kNumber, kWhole, kAny };

// A kind of column. Written by all threads at once.
class ResultColumn {
 public:
  ResultColumn(std::string name, CellKind kind) : name_(std::move(name)), kind_(kind) {}
  virtual ~ResultColumn() = default;
  const std::string& Name() const { return name_; }
  CellKind Kind() const { return kind_; }
  virtual void Write(const ScoredCase& scored, CellSink& cell) const = 0;

 private:
  std::string name_;
  CellKind kind_;
};

using ResultColumns = std::vector<std::unique_ptr<ResultColumn>>;

// Which of the result's columns are written.
enum class ColumnChoice {
  kDocument,  // the document's output fields; without any, as kComputed
  kComputed,  // those that the model's scheme computes, under plain names
  kAll,       // every one, under plain names
};

// The columns of the result, then with `decisions` the decision value of every machine if the model
// is a BatchModel, then the status, then with `reasons` why a case failed.
ResultColumns MakeColumns(const MCZandor_850::ScoreModel& model, const output::OutputPlan& output,
                          ColumnChoice choice, bool decisions, bool reasons);

}  // namespace svmscore::tools

#endif  // TOOLS_SCORE_RESULT_COLUMNS_H_
