#include <cmath>

#include "svm/model/model.h"
#include "svm/model/workspace.h"

namespace MCZandor_850 {

using MCScore::MCStatus;

MCStatus SVMModel::ScoreSVMRegModel(const std::vector<int>& idx, const std::vector<double>& val,
                                    ScoreResult*& result) {
  if (data_ == nullptr || idx.empty()) return {};
  std::vector<double>& decisions = ThisThreadsWorkspace().decisions;
  MCStatus status = Decide(idx, val, false, decisions);
  if (!status.IsError()) status = CheckDecisions(decisions);
  if (status.IsError()) return status;
  FillSVMRegResult(decisions.empty() ? 0.0 : decisions[0], result);
  return {};
}

MCStatus SVMModel::FillSVMRegResult(double value, ScoreResult*& result) {
  // The prediction of a classification result is a category, which must never be written to.
  auto* reg_result = dynamic_cast<ScoreRegResult*>(result);
  if (reg_result != nullptr && reg_result->GetPrediction() != nullptr) {
    if (auto* number = dynamic_cast<NumericValue*>(reg_result->GetPrediction())) {
      number->SetDoubleValue(value);
    } else {
      // The previous case had a missing prediction that was a text.
      reg_result->SetPrediction(new NumericValue(value));
    }
  }
  return FillSVMVEMARegResult(value, result);
}

MCStatus SVMModel::FillSVMVEMARegResult(double value, ScoreResult*& result) {
  auto* reg_result = dynamic_cast<ScoreRegResult*>(result);
  double std_dev = 0.0;
  double lower = 0.0;
  double upper = 0.0;
  if (reg_result == nullptr || !IntervalAround(value, std_dev, lower, upper)) return {};
  reg_result->SetStdDev(std_dev);
  if (auto* interval = dynamic_cast<ScoreIntervalResult*>(result)) {
    interval->SetInterval(lower, upper);
  }
  return {};
}

bool SVMModel::IntervalAround(double value, double& std_dev, double& lower, double& upper) const {
  const auto* machine = Machine(0);
  if (prediction_only_ || machine == nullptr || machine->extension == nullptr) return false;
  const double s = data_->IsAppendProbability() ? machine->extension->standard_deviation : 0.0;
  if (s == NumericValue::GetSysmisValue()) return false;
  std_dev = s;
  // ln 0.05: half-width of the two-sided 95 % interval of a Laplace distribution of scale s.
  const double half_width = (-s) * (-2.99573227355399);
  lower = value - half_width;
  upper = half_width + value;
  return true;
}

double SVMModel::ComputeVEMAZValue(double f, double a, double b) {
  const double x = f * a + b;
  if (x > 0) {
    const double e = std::exp(-x);
    return e / (e + 1);
  }
  return 1 / (std::exp(x) + 1);
}

}  // namespace MCZandor_850
