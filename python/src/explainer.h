// Explaining, as the extension module offers it.
#ifndef PYTHON_SRC_EXPLAINER_H_
#define PYTHON_SRC_EXPLAINER_H_

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>

#include <nanobind/nanobind.h>
#include <nanobind/ndarray.h>

#include <svmscore.h>

#include "columns.h"
#include "model.h"

namespace svmscore::python {

// Numbers of NumPy's that are written.
using Numbers = nanobind::ndarray<double, nanobind::c_contig, nanobind::device::cpu>;
using Wholes = nanobind::ndarray<std::int64_t, nanobind::c_contig, nanobind::device::cpu>;

// A model with a background. The interpreter lock is released while rows are explained; tables of
// several threads wait for each other.
class Explainer {
 public:
  // `background`: null for the model's support vectors; `rows` and `orders`: 0 for all of it, and
  // as many as the model chooses.
  Explainer(const Model& model, const Columns* background, std::uint64_t rows, std::uint64_t seed,
            std::uint64_t orders, int threads);

  // players, fields, bases, sampled, background_rows, background_rows_left_out.
  nanobind::dict Facts() const;
  // Fills arrays of the sizes that svmscore_explanations has; None is not wanted. Gives the
  // imbalance.
  double Explain(const Columns& columns, Numbers decisions, Numbers values,
                 std::optional<Numbers> errors, std::optional<Numbers> gradients, Wholes status);

 private:
  struct Free {
    void operator()(svmscore_explainer* explainer) const { svmscore_explainer_free(explainer); }
  };

  std::unique_ptr<svmscore_explainer, Free> explainer_;
  std::mutex mutex_;
};

}  // namespace svmscore::python

#endif  // PYTHON_SRC_EXPLAINER_H_
