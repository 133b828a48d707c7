// On which scale the labels of a regression are: that of its prediction, or of an output field.
#ifndef TOOLS_CALIBRATE_LABEL_SCALE_H_
#define TOOLS_CALIBRATE_LABEL_SCALE_H_

#include <string>
#include <utility>
#include <vector>

#include "tools/calibrate/holdout.h"

namespace svmscore::tools {

// slope * prediction + intercept.
struct LabelScale {
  std::string field;  // the output field with these values; empty where it is the prediction itself
  double slope = 1.0;
  double intercept = 0.0;
  // An output field that is closer to the labels, but that no line makes of the prediction, so that
  // no interval of the prediction is one of it. Empty where there is none, or where the labels are
  // on the scale above all the same: closer to it than to their mean.
  std::string curved;

  double Of(double prediction) const { return slope * prediction + intercept; }
  // Intervals of the prediction on this scale.
  std::vector<std::pair<double, double>> Of(
      const std::vector<std::pair<double, double>>& intervals) const;
};

// The scale with the smallest squared distance from the labels. Lines are found by the cases, all
// of which they must hold to about nine digits. [any thread] Owns: the caller. Fails:
// std::bad_alloc.
LabelScale ScaleOfLabels(const Holdout& holdout);

}  // namespace svmscore::tools

#endif  // TOOLS_CALIBRATE_LABEL_SCALE_H_
