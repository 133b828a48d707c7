// The interface of a model that a host scores with.
#ifndef HOST_MODEL_SCORE_MODEL_H_
#define HOST_MODEL_SCORE_MODEL_H_

#include <iosfwd>
#include <string>

#include "host/model/score_case_record.h"
#include "host/model/score_dictionary.h"
#include "host/model/score_result.h"
#include "host/model/score_status.h"
#include "host/model/version_info.h"
#include "host/text/api.h"

namespace MCZandor_850 {

class TransformationDictionary;

// Set up on one thread. Scoring may then run on any number of threads at once, each with its own
// record and result, as soon as the first case has been scored alone: that case fixes the
// positions at which variables are found in records.
//
// The order of the virtual operations is part of the interface.
class SVMSCORE_HOST_API ScoreModel {
 public:
  enum VarRole { kOtherRole = 0, kTargetRole = 1, kActiveRole = 2 };
  // What happens to a case with a missing input: replaced by the variable's replacement where it
  // has one; given a missing prediction; any other value: the case fails.
  enum MVPolicy { kReplaceMissing = 0, kPredictMissing = 1, kFailOnMissing = 2 };

  virtual ~ScoreModel();

  // The dictionaries and the version record become the model's (see ScoreDictionary for one that is
  // shared). Null is allowed. An earlier one is released.
  virtual void SetScoreDictionary(ScoreDictionary* dictionary) = 0;
  virtual void SetTransformationScoreDictionary(TransformationDictionary* dictionary) = 0;
  virtual void SetResultScoreDictionary(ScoreDictionary* dictionary) = 0;
  virtual void SetVarRole(const ScoreDictVar* var, VarRole role) = 0;
  virtual void SetVarRole(const std::string& name, VarRole role) = 0;
  virtual void SetMissingValuePolicy(MVPolicy policy) = 0;
  virtual void SetVersionInfo(ScoreVersionInfo* version) = 0;
  // True: results hold the prediction and nothing else.
  virtual void SetPredictionOnly(bool prediction_only) = 0;
  virtual VarRole GetVarRole(const ScoreDictVar* var) const = 0;
  virtual VarRole GetVarRole(const std::string& name) const = 0;
  virtual ScoreVersionInfo* GetVersionInfo() const = 0;
  // A new dictionary of the variables of a role, which the caller owns; null when there are none.
  virtual BaseDictionary* GetVarsOfRole(VarRole role) const = 0;
  virtual const ScoreDictVar* GetTargetVar() const = 0;
  virtual ScoreDictionary* GetDictionary() const = 0;
  virtual TransformationDictionary* GetTransformationDictionary() const = 0;
  virtual ScoreDictionary* GetResultDictionary() const = 0;
  // Scores one case. A null `result` is created and then belongs to the caller; any other is filled
  // in place and must come from this model. With `flag`, inputs that a derived field of the same
  // name hides are read from the derived values. Never throws.
  virtual MCScore::MCStatus GetScore(const ScoreCaseRecord* record, ScoreResult*& result,
                                     bool flag) = 0;
  virtual MVPolicy GetMissingValuePolicy() const = 0;
  // 29 classification, 30 regression, 0 before the model is filled.
  virtual int GetModelType() const = 0;
  virtual bool GetPredictionOnly() const = 0;
  // Writes a description for diagnosis.
  virtual void Display(std::ostream& os) const = 0;
  // With `owned` false the caller keeps the dictionary, which must outlive the model.
  virtual void SetScoreDictionary(ScoreDictionary* dictionary, bool owned) = 0;
};

}  // namespace MCZandor_850

#endif  // HOST_MODEL_SCORE_MODEL_H_
