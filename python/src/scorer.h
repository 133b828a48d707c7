// Scoring, as the extension module offers it.
#ifndef PYTHON_SRC_SCORER_H_
#define PYTHON_SRC_SCORER_H_

#include <memory>
#include <mutex>
#include <vector>

#include <nanobind/nanobind.h>

#include <svmscore.h>

#include "columns.h"
#include "model.h"
#include "results.h"

namespace svmscore::python {

// The working memory of one thread of Python's. The interpreter lock is released while rows are
// scored; calls from several threads at once wait for each other.
class Scorer {
 public:
  Scorer(const Model& model, int choice, bool decisions, int threads, bool reasons);

  // For each column: (name, is it a category of the target, type as of the C interface).
  nanobind::list Outputs() const;
  // The columns `wanted`, by their positions, as of ResultColumn::Take.
  nanobind::list Score(const Columns& columns, const std::vector<std::size_t>& wanted);
  nanobind::list ScoreRows(const Columns& columns, std::size_t start, std::size_t count,
                           const std::vector<std::size_t>& wanted);
  // The same of a capsule "arrow_array_stream", which is used up. Not a number is missing there
  // too.
  nanobind::list ScoreStream(nanobind::handle capsule, const std::vector<std::size_t>& wanted);
  // One case: a value for each of the model's inputs, in their order. Gives a value for each
  // output: float, int, str or None; a category of the target is its position.
  nanobind::list ScoreCase(nanobind::list values);

 private:
  struct Free {
    void operator()(svmscore_scorer* scorer) const { svmscore_scorer_free(scorer); }
  };
  // Fails where the columns of a stream without batches do not fit.
  void ScoreNoRows(const ArrowSchema& schema);
  std::vector<ResultColumn> NewResults(const std::vector<std::size_t>& wanted) const;

  std::unique_ptr<svmscore_scorer, Free> scorer_;
  std::mutex mutex_;
  std::vector<int> types_;
  std::vector<bool> texts_;  // of the model's inputs: which are fields of texts
  std::vector<svmscore_value> inputs_, outputs_;
};

}  // namespace svmscore::python

#endif  // PYTHON_SRC_SCORER_H_
