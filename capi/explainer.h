// Explaining the rows of tables with a model.
#ifndef CAPI_EXPLAINER_H_
#define CAPI_EXPLAINER_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "capi/column_view.h"
#include "capi/input_cells.h"
#include "capi/model_state.h"
#include "tools/explain/case_explainer.h"

namespace svmscore::capi {

struct ExplainerSettings {
  std::optional<std::vector<ColumnView>> background;  // nothing: the model's support vectors
  std::size_t background_rows = 0;
  std::size_t most = 0;  // rows that are drawn of the background; 0: all
  std::uint64_t seed = 1;
  std::size_t orders = 0;
  std::size_t threads = 1;
  MissingTexts missing;
};
// Throws a Refusal. `options` may be null.
ExplainerSettings ReadSettings(const svmscore_explainer_options* options);

// Used by one thread. Fails: Refusal for a table that does not fit; std::bad_alloc.
class TableExplainer {
 public:
  // Throws a Refusal for a model that is its own background and cannot be, a background without
  // rows that can be scored, and what ModelExplainer throws.
  TableExplainer(SharedModel model, ExplainerSettings settings);

  const tools::ModelExplainer& Model() const { return *explainer_; }
  // Texts and facts, which live as long as this object.
  svmscore_explainer_facts Facts() const;
  // All columns have `rows` values. Writes where `out` points, and its imbalance.
  void Explain(const std::vector<ColumnView>& columns, std::size_t rows,
               svmscore_explanations& out);

 private:
  struct TableInput;
  class TableRun;

  tools::Background MakeBackground(const tools::Explainable& explainable);

  SharedModel model_;
  ExplainerSettings settings_;
  std::uint64_t rows_seen_ = 0;  // of the background
  std::uint64_t rows_left_out_ = 0;
  std::uint64_t rows_used_ = 0;
  std::unique_ptr<tools::ModelExplainer> explainer_;
  TextList players_;
  TextList fields_;
  std::vector<double> bases_;
};

}  // namespace svmscore::capi

struct svmscore_explainer {
  svmscore::capi::TableExplainer explainer;
};

#endif  // CAPI_EXPLAINER_H_
