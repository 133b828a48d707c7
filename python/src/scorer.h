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
// scored, and where a case takes longer than that; tables of several threads wait for each other.
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
  // too. Fails: ValueError where the stream fails, or has been used before.
  nanobind::list ScoreStream(nanobind::handle capsule, const std::vector<std::size_t>& wanted);
  // [one thread] One case: a value for each of the model's inputs, in their order. Gives a value
  // for each output: float, int, str or None; a category of the target is its position.
  nanobind::list ScoreCase(nanobind::list values);

 private:
  struct Free {
    void operator()(svmscore_scorer* scorer) const { svmscore_scorer_free(scorer); }
  };
  std::vector<ResultColumn> NewResults(const std::vector<std::size_t>& wanted) const;
  void ScoreBatch(const ArrowSchema& schema, const ArrowArray& batch,
                  const std::vector<std::size_t>& wanted, std::vector<ResultColumn>& results);

  std::unique_ptr<svmscore_scorer, Free> scorer_;
  std::mutex mutex_;
  std::vector<int> types_;
  std::vector<bool> texts_;  // of the model's inputs: which are fields of texts
  std::vector<svmscore_value> inputs_, outputs_;
  bool is_slow_ = false;  // the last case was
};

}  // namespace svmscore::python

#endif  // PYTHON_SRC_SCORER_H_
