#include "svm/result/reg_result.h"

#include "host/model/score_value.h"

namespace MCZandor_850 {

SVMRegResult::SVMRegResult(const ScoreDictVar* target)
    : target_(target),
      prediction_(new NumericValue(NumericValue::GetSysmisValue())),
      ci_lower_(NumericValue::GetSysmisValue()),
      ci_upper_(NumericValue::GetSysmisValue()) {}

SVMRegResult::~SVMRegResult() {
  delete prediction_;
  prediction_ = nullptr;
}

void SVMRegResult::SetPrediction(ScoreValue* value) {
  if (value == prediction_) return;
  delete prediction_;
  prediction_ = value;
}

void SVMRegResult::SetConfidence(double /*confidence*/) {}

void SVMRegResult::SetCI(double lower, double upper) {
  ci_lower_ = lower;
  ci_upper_ = upper;
  has_ci_ = true;
}

void SVMRegResult::GetCI(double& lower, double& upper) const {
  lower = ci_lower_;
  upper = ci_upper_;
}

bool SVMRegResult::GetInterval(double& lower, double& upper) const {
  if (has_ci_) GetCI(lower, upper);
  return has_ci_;
}

}  // namespace MCZandor_850
