#include "explainer.h"

#include <algorithm>

#include "call.h"
#include "pace.h"

namespace nb = nanobind;

namespace svmscore::python {
namespace {

// Where the numbers of a row begin. Throws for an array that is too small.
template <typename Array>
auto* At(const Array& array, std::size_t row, std::size_t of_row, std::size_t rows) {
  if (array.size() != of_row * rows) throw nb::value_error("an array of another size");
  return array.data() + row * of_row;
}

}  // namespace

Explainer::Explainer(const Model& model, const Columns* background, std::uint64_t rows,
                     std::uint64_t seed, std::uint64_t orders, int threads) {
  svmscore_explainer_options options = SVMSCORE_INIT(svmscore_explainer_options);
  if (background != nullptr) {
    static const svmscore_column none{};  // a table without columns is one, too
    options.background = background->All().empty() ? &none : background->All().data();
    options.background_column_count = background->All().size();
    options.background_row_count = background->RowCount();
  }
  options.rows = rows;
  options.seed = seed;
  options.orders = orders;
  options.threads = threads;
  svmscore_explainer* explainer = nullptr;
  svmscore_error* error = nullptr;
  int status = SVMSCORE_OK;
  {
    const nb::gil_scoped_release release;
    status = svmscore_explainer_new(model.Get(), &options, &explainer, &error);
  }
  Check(status, error);
  explainer_.reset(explainer);
}

nb::dict Explainer::Facts() const {
  svmscore_explainer_facts facts = SVMSCORE_INIT(svmscore_explainer_facts);
  svmscore_error* error = nullptr;
  Check(svmscore_explainer_get_facts(explainer_.get(), &facts, &error), error);
  nb::list bases;
  for (std::size_t m = 0; m < facts.machine_count; ++m) bases.append(facts.bases[m]);
  nb::dict told;
  told["players"] = Texts(facts.players, facts.player_count);
  told["fields"] = Texts(facts.fields, facts.field_count);
  told["bases"] = bases;
  told["sampled"] = facts.sampled != 0;
  told["background_rows"] = facts.background_rows;
  told["background_rows_left_out"] = facts.background_rows_left_out;
  return told;
}

double Explainer::Explain(const Columns& columns, Numbers decisions, Numbers values,
                          std::optional<Numbers> errors, std::optional<Numbers> gradients,
                          Wholes status) {
  svmscore_explainer_facts facts = SVMSCORE_INIT(svmscore_explainer_facts);
  svmscore_error* error = nullptr;
  Check(svmscore_explainer_get_facts(explainer_.get(), &facts, &error), error);
  const std::size_t machines = facts.machine_count;
  const std::size_t players = machines * facts.player_count;
  const std::size_t fields = machines * facts.field_count;
  const std::size_t end = columns.RowCount();
  double imbalance = 0.0;
  // A case may take long.
  Pace pace(64, 1);
  std::size_t start = 0;
  // A table without rows is looked at as well: its columns may not fit.
  do {
    const std::size_t rows = std::min(pace.Rows(), end - start);
    const Clock::time_point begin = Clock::now();
    svmscore_explanations out = SVMSCORE_INIT(svmscore_explanations);
    out.decisions = At(decisions, start, machines, end);
    out.values = At(values, start, players, end);
    if (errors) out.errors = At(*errors, start, players, end);
    if (gradients) out.gradients = At(*gradients, start, fields, end);
    out.status = At(status, start, 1, end);
    int result = SVMSCORE_OK;
    {
      const nb::gil_scoped_release release;
      const std::lock_guard lock(mutex_);
      const std::vector<svmscore_column> block = columns.Rows(start, rows);
      result = svmscore_explain(explainer_.get(), block.data(), block.size(), rows, &out, &error);
    }
    Check(result, error);
    imbalance = std::max(imbalance, out.imbalance);
    pace.Took(Clock::now() - begin);
    HandleSignals();
    start += rows;
  } while (start < end);
  return imbalance;
}

}  // namespace svmscore::python
