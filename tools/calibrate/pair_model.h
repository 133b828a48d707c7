// What scoring makes of decision values, given sigmoids: probabilities and a prediction.
#ifndef TOOLS_CALIBRATE_PAIR_MODEL_H_
#define TOOLS_CALIBRATE_PAIR_MODEL_H_

#include <cstddef>
#include <vector>

#include "host/load/loader.h"
#include "tools/calibrate/sigmoid_fit.h"

namespace svmscore::tools {

// A model of the plug-in's own whose inputs are decision values: a document with a linear machine
// for each pair of so many categories, the machine having the decision value of one input. How
// probabilities are limited and coupled stays in one place so, and the figures are of what score
// will write. The pairs are (0, 1), (0, 2), ..., (1, 2), ...: `sigmoids` in that order give the
// probability of the earlier category. Used by one thread.
class PairModel {
 public:
  // `limits` are those under which the document of the machines was read.
  // Fails: SSException where the plug-in refuses the document, as for one beyond a limit;
  // std::bad_alloc.
  PairModel(const Plugin& plugin, std::size_t categories, const std::vector<Sigmoid>& sigmoids,
            const Limits& limits);

  struct Scores {
    std::vector<double> percents;  // [case * categories + category]
    std::vector<int> predicted;
  };
  // `decisions` are [case * pairs + pair], finite. A case that the model does not score has the
  // prediction -1 and percentages of 0.
  Scores Score(const std::vector<double>& decisions);

 private:
  std::size_t categories_;
  std::size_t pairs_;
  LoadedModel loaded_;
};

}  // namespace svmscore::tools

#endif  // TOOLS_CALIBRATE_PAIR_MODEL_H_
