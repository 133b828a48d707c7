// MCZandor_850::SVMRegResult: what scoring one case of a regression model yields.
#ifndef SVM_RESULT_REG_RESULT_H_
#define SVM_RESULT_REG_RESULT_H_

#include "host/model/score_result.h"

namespace MCZandor_850 {

// Owns its prediction, which starts as a system-missing number. The order of the virtual operations
// is part of the interface.
class SVMRegResult : public ScoreRegResult, public ScoreIntervalResult {
 public:
  explicit SVMRegResult(const ScoreDictVar* target);
  ~SVMRegResult() override;
  SVMRegResult(const SVMRegResult&) = delete;
  SVMRegResult& operator=(const SVMRegResult&) = delete;

  // Takes ownership and deletes the earlier value, unless it is the same one.
  void SetPrediction(ScoreValue* value) override;
  ScoreValue* GetPrediction() const override { return prediction_; }
  const ScoreDictVar* GetTarget() const override { return target_; }
  // A regression result has no confidence: this does nothing.
  void SetConfidence(double confidence) override;
  double GetConfidence() const override { return -1.0; }
  ScoreResultType GetScoreResultType() const override { return kSVMRegressionResult; }
  void SetStdDev(double std_dev) override { std_dev_ = std_dev; }
  double GetStdDev() const override { return std_dev_; }

  // Both bounds are system-missing until they are set.
  void SetCI(double lower, double upper);
  void GetCI(double& lower, double& upper) const;
  bool GetInterval(double& lower, double& upper) const override;
  void SetInterval(double lower, double upper) override { SetCI(lower, upper); }

 private:
  const ScoreDictVar* target_;
  ScoreValue* prediction_;
  double std_dev_ = -1.0;
  double ci_lower_;
  double ci_upper_;
  bool has_ci_ = false;
};

}  // namespace MCZandor_850

#endif  // SVM_RESULT_REG_RESULT_H_
