// From rows of cases to rows of Shapley values: what one thread does with one block.
#ifndef APP_EXPLAIN_EXPLANATION_ROWS_H_
#define APP_EXPLAIN_EXPLANATION_ROWS_H_

#include <atomic>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/pipeline/block_worker.h"
#include "app/pipeline/case_cells.h"
#include "app/pipeline/row_format.h"
#include "host/reasons/case_examiner.h"
#include "tools/base/case_columns.h"
#include "tools/base/cell_rules.h"
#include "tools/explain/case_explainer.h"

namespace svmscore::app {

// All that the threads of a run share; set up before, and only read while they explain.
struct ExplanationPlan {
  const tools::ModelExplainer* model = nullptr;
  tools::CaseColumns columns;
  tools::CellRules cells;
  bool replace_missing = false;
  bool gradients = false;
  std::unique_ptr<reasons::CaseExaminer> examiner;  // for the variables of `columns`
  std::unique_ptr<RowFormat> format;
  RowForm rows;
};

// The names of the columns: row, decision_of, decision, base, those of the values, of their errors
// where they are sampled, and of the gradients where these are asked for.
std::vector<std::string> ExplanationColumns(const tools::ModelExplainer& model, bool gradients);

// Used by one thread. Writes a row for each decision value of a case; those of a case that fails
// hold no numbers.
class ExplanationRows final : public BlockWorker {
 public:
  // `imbalance` becomes the largest CaseExplainer::Imbalance of the cases of all workers, unless it
  // is larger already. Both must outlive this object.
  ExplanationRows(const ExplanationPlan& plan, std::atomic<double>& imbalance);

  void FixPositions() override;

 private:
  // A row of the chunk: its place in the batch, or the status with which it stays outside.
  struct Row {
    long status = 0;
    std::size_t place = 0;
  };

  void ClearChunk() override;
  bool HasRoomInChunk() const override { return rows_.size() < chunk_rows_; }
  void TakeRow(const std::string_view* cells) override;
  void ComputeChunk() override;
  void WriteRow(std::size_t row, CaseBlock& block) override;

  void WriteDecision(std::uint64_t number, std::size_t decision, const Row* explained,
                     std::string& out) const;

  const ExplanationPlan& plan_;
  std::atomic<double>& imbalance_;
  CaseCells cells_;
  std::size_t chunk_rows_;
  tools::CaseExplainer cases_;
  std::vector<Row> rows_;
};

}  // namespace svmscore::app

#endif  // APP_EXPLAIN_EXPLANATION_ROWS_H_
