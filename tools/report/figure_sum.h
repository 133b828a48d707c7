// Figures of cases that come batch by batch, without holding all their probabilities.
#ifndef TOOLS_REPORT_FIGURE_SUM_H_
#define TOOLS_REPORT_FIGURE_SUM_H_

#include <cstddef>
#include <vector>

#include "tools/calibrate/figures.h"

namespace svmscore::tools {

// The figures of all cases are those that figures.h defines, but for the rounding of sums. [one
// thread] for each object. Fails: std::bad_alloc.
class FigureSum {
 public:
  explicit FigureSum(std::size_t categories) : categories_(categories) {}

  // A case of the present batch. `percents` has one number a category, or is empty for every case.
  void Add(int actual, int predicted, const std::vector<double>& percents);
  // Ends the batch.
  void AddBatch();
  // Cases of the batches that have ended.
  std::size_t Cases() const { return total_.cases; }
  // REQUIRES: there is a case.
  ClassFigures Total() const;

 private:
  std::size_t categories_;
  std::vector<int> actual_;
  std::vector<int> predicted_;
  std::vector<double> percents_;
  ClassFigures total_;  // sums over the cases, not means
};

}  // namespace svmscore::tools

#endif  // TOOLS_REPORT_FIGURE_SUM_H_
