// Calibrating a classification: a sigmoid for each pair of categories.
#ifndef TOOLS_CALIBRATE_CLASS_CALIBRATION_H_
#define TOOLS_CALIBRATE_CLASS_CALIBRATION_H_

#include <cstddef>
#include <string>
#include <vector>

#include "host/model/batch_model.h"
#include "tools/calibrate/calibrated_text.h"
#include "tools/calibrate/calibration.h"
#include "tools/calibrate/holdout.h"
#include "tools/calibrate/pair_model.h"

namespace svmscore::tools {

// Used by one thread. The order must outlive it, and what Run is given.
class ClassCalibration {
 public:
  // Throws a BadDocument for a model that has no machine for each pair of its categories.
  ClassCalibration(const CalibrationOrder& order, const BatchModel& model);
  // Fills what is of a classification. Throws a BadCases for a category without cases, and where no
  // sigmoid fits.
  void Run(const Holdout& holdout, CalibrationResult& result);
  // The machines as the document should have them, by the pairs of the result.
  std::vector<MachineCalibration> Machines(const CalibrationResult& result) const;
  // Whether the calibrated model, which scored the same rows, gives what was computed.
  bool Confirms(const Holdout& before, const Holdout& after, const CalibrationResult& result) const;

 private:
  std::vector<double> InPairOrder(const Holdout& holdout) const;
  void CountCases(CalibrationResult& result);
  // The sigmoids of all pairs; with `without`, of the cases that are not in that part.
  std::vector<Sigmoid> FitAll(const std::size_t* without, std::size_t part) const;
  void AddPairs(const std::vector<Sigmoid>& sigmoids, CalibrationResult& result) const;
  // Whether a sigmoid tells three in four cases of each of both categories of a pair right.
  bool Separates(std::size_t pair, std::size_t i, std::size_t j, const Sigmoid& sigmoid) const;
  // Remarks on machines whose decision values mean the opposite of what those of most mean.
  void TellOfOddMachines(CalibrationResult& result) const;
  // Remarks on the document as it was.
  void TellOfBefore(CalibrationResult& result) const;
  // Each case by sigmoids of the cases that are not in its part.
  PairModel::Scores CrossValidate() const;

  const CalibrationOrder& order_;
  const MCZandor_850::ScoreDictVar& target_;
  const Holdout* holdout_ = nullptr;
  std::vector<std::string> categories_;
  std::vector<std::size_t> machines_;  // of each pair
  std::vector<bool> target_is_later_;  // of each pair: its machine's target category
  std::vector<double> decisions_;      // [case * pairs + pair]
  std::vector<std::size_t> folds_;     // of each case
};

}  // namespace svmscore::tools

#endif  // TOOLS_CALIBRATE_CLASS_CALIBRATION_H_
