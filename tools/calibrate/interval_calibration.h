// Calibrating a regression: the width of its intervals.
#ifndef TOOLS_CALIBRATE_INTERVAL_CALIBRATION_H_
#define TOOLS_CALIBRATE_INTERVAL_CALIBRATION_H_

#include <vector>

#include "host/model/batch_model.h"
#include "host/output/target_rules.h"
#include "tools/calibrate/calibration.h"
#include "tools/calibrate/conformal.h"
#include "tools/calibrate/holdout.h"
#include "tools/calibrate/label_scale.h"

namespace svmscore::tools {

// Used by one thread. The order must outlive it.
class IntervalCalibration {
 public:
  // Throws a BadDocument for a model whose intervals no standard deviation widens.
  IntervalCalibration(const CalibrationOrder& order, const BatchModel& model);
  // Fills what is of a regression. Throws a BadCases for too few cases, and for labels on a scale
  // that no interval of the prediction can be brought to.
  void Run(const Holdout& holdout, CalibrationResult& result);
  // Whether the calibrated model, which scored the same rows, gives what was computed.
  bool Confirms(const Holdout& before, const Holdout& after, const CalibrationResult& result) const;

 private:
  // Finds the scale on which residuals are taken.
  void ChooseScale(const Holdout& holdout, CalibrationResult& result);
  // Remarks on where the document's own rules make something else of predictions or intervals.
  void TellOfRules(const Holdout& holdout, CalibrationResult& result) const;
  // Remarks on predictions that are suspiciously good, or worse than one number for all cases.
  void TellOfDistance(CalibrationResult& result) const;
  double Fit(const std::vector<IntervalCase>& cases, double& half_width) const;
  // Each case by the interval of the cases that are not in its part.
  void CrossValidate(const Holdout& holdout, CalibrationResult& result) const;

  const CalibrationOrder& order_;
  const output::TargetRules& targets_;
  LabelScale scale_;
  Rescale rescale_;  // to the scale of the labels
  std::vector<IntervalCase> cases_;
};

}  // namespace svmscore::tools

#endif  // TOOLS_CALIBRATE_INTERVAL_CALIBRATION_H_
