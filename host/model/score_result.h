// What scoring one case yields, as hosts read it.
#ifndef HOST_MODEL_SCORE_RESULT_H_
#define HOST_MODEL_SCORE_RESULT_H_

#include <utility>
#include <vector>

#include "host/model/score_dict_var.h"
#include "host/model/score_value.h"
#include "host/text/api.h"

namespace MCZandor_850 {

// Kinds of result that a host can tell apart.
enum ScoreResultType { kSVMClassificationResult = 18, kSVMRegressionResult = 19 };

// May be handed back to GetScore for the next case of the same model.
// [one thread] for each result. Owns: the caller of GetScore. Lives: the model, longer than the
// result; what is returned, until the next case. Fails: functions that set or add something by
// std::bad_alloc, the others never.
class SVMSCORE_HOST_API ScoreResult {
 public:
  virtual ~ScoreResult() {}

  // Owns: as the derived class says.
  virtual void SetPrediction(ScoreValue* value) = 0;
  // Null if absent. Owns: never the caller.
  virtual ScoreValue* GetPrediction() const = 0;
  virtual const ScoreDictVar* GetTarget() const = 0;
  virtual void SetConfidence(double confidence) = 0;
  // -1.0 if absent.
  virtual double GetConfidence() const = 0;
  virtual ScoreResultType GetScoreResultType() const = 0;
};

// Owns: nothing; its values, the prediction too, are the model's. A class of the host's own is
// filled through these operations alone: SetPrediction, then AddValuePercent for each category,
// then SetConfidence. One that is handed back for another case must accept categories that it
// already has.
class SVMSCORE_HOST_API ScoreClsResult : public ScoreResult {
 public:
  ~ScoreClsResult() override {}

  // Adds a category with its share or probability (0 to 1).
  virtual bool AddValuePercent(ScoreValue* value, double percent) = 0;
  // -1.0 for a category that has none.
  virtual double GetPercent(const ScoreValue* value) const = 0;
  virtual const std::vector<std::pair<ScoreValue*, double>>& GetAllValuePercent() const = 0;
};

// Owns: its prediction. A class of the host's own is filled like the model's: a prediction that is
// a number is changed in place, and SetPrediction gives it another value only where the prediction
// is not a number, or is to be missing.
class SVMSCORE_HOST_API ScoreRegResult : public ScoreResult {
 public:
  ~ScoreRegResult() override {}

  virtual void SetStdDev(double std_dev) = 0;
  // -1.0 if absent.
  virtual double GetStdDev() const = 0;
};

// A result that can hold an interval around its prediction; found by dynamic_cast.
class SVMSCORE_HOST_API ScoreIntervalResult {
 public:
  virtual ~ScoreIntervalResult() {}
  // The bounds, in units of the target; false (and nothing written) where none was computed.
  virtual bool GetInterval(double& lower, double& upper) const = 0;
  // Called when a case of a model with intervals is scored.
  virtual void SetInterval(double lower, double upper) = 0;
};

}  // namespace MCZandor_850

#endif  // HOST_MODEL_SCORE_RESULT_H_
