// MCZandor_850::SVMClsResult: what scoring one case of a classification model yields.
#ifndef SVM_RESULT_CLS_RESULT_H_
#define SVM_RESULT_CLS_RESULT_H_

#include <utility>
#include <vector>

#include "host/model/score_result.h"

namespace MCZandor_850 {

// Owns nothing: the prediction and the categories are values of the model, which must outlive the
// result. The order of the virtual operations is part of the interface.
class SVMClsResult : public ScoreClsResult {
 public:
  explicit SVMClsResult(const ScoreDictVar* target) : target_(target) {}

  void SetPrediction(ScoreValue* value) override { prediction_ = value; }
  ScoreValue* GetPrediction() const override { return prediction_; }
  const ScoreDictVar* GetTarget() const override { return target_; }
  void SetConfidence(double confidence) override { confidence_ = confidence; }
  double GetConfidence() const override { return confidence_; }
  ScoreResultType GetScoreResultType() const override { return kSVMClassificationResult; }

  // Always true. A category that is added twice is listed twice.
  bool AddValuePercent(ScoreValue* value, double percent) override;
  // The first entry whose value equals `value`; -1.0 if absent.
  double GetPercent(const ScoreValue* value) const override;
  // In the order in which they were added.
  const std::vector<std::pair<ScoreValue*, double>>& GetAllValuePercent() const override {
    return value_percents_;
  }
  void RemoveValuePercent() { value_percents_.clear(); }

 private:
  const ScoreDictVar* target_;
  ScoreValue* prediction_ = nullptr;
  std::vector<std::pair<ScoreValue*, double>> value_percents_;
  double confidence_ = -1.0;
};

}  // namespace MCZandor_850

#endif  // SVM_RESULT_CLS_RESULT_H_
