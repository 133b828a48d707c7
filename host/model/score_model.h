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
// Functions that set something: [set-up] Fails: std::bad_alloc. Functions that get something:
// [any thread] Lives: what is returned, until it is set again or the model goes. Fails: never.
//
// The order of the virtual operations is part of the interface.
class SVMSCORE_HOST_API ScoreModel {
 public:
  enum VarRole { kOtherRole = 0, kTargetRole = 1, kActiveRole = 2 };
  // What happens to a case with a missing input. kReplaceMissing: the variable's replacement is
  // used where it has one. kPredictMissing: the prediction is missing. Any other: the case fails.
  enum MVPolicy { kReplaceMissing = 0, kPredictMissing = 1, kFailOnMissing = 2 };

  virtual ~ScoreModel();

  // Null is allowed. What was set before is released. Owns: the model the dictionaries and the
  // version record; see ScoreDictionary for shared ones.
  virtual void SetScoreDictionary(ScoreDictionary* dictionary) = 0;
  virtual void SetTransformationScoreDictionary(TransformationDictionary* dictionary) = 0;
  virtual void SetResultScoreDictionary(ScoreDictionary* dictionary) = 0;
  virtual void SetVarRole(const ScoreDictVar* var, VarRole role) = 0;
  virtual void SetVarRole(const std::string& name, VarRole role) = 0;
  virtual void SetMissingValuePolicy(MVPolicy policy) = 0;
  virtual void SetVersionInfo(ScoreVersionInfo* version) = 0;
  // With true, results hold only the prediction.
  virtual void SetPredictionOnly(bool prediction_only) = 0;
  virtual VarRole GetVarRole(const ScoreDictVar* var) const = 0;
  virtual VarRole GetVarRole(const std::string& name) const = 0;
  virtual ScoreVersionInfo* GetVersionInfo() const = 0;
  // A new dictionary of the variables of a role; null if there are none.
  // Owns: the caller. Lives: its variables, as long as the model. Fails: std::bad_alloc.
  virtual BaseDictionary* GetVarsOfRole(VarRole role) const = 0;
  virtual const ScoreDictVar* GetTargetVar() const = 0;
  virtual ScoreDictionary* GetDictionary() const = 0;
  virtual TransformationDictionary* GetTransformationDictionary() const = 0;
  virtual ScoreDictionary* GetResultDictionary() const = 0;
  // Scores one case. Where `result` is null a new one is made; any other must come from this model
  // or be a result class of the host's own, and is filled in place; one of the host's own that
  // collects percentages must be emptied before the next case. With `flag`, inputs that a derived
  // field of the same name hides are read from the derived values. [first case alone] Owns: the
  // caller the result. Lives: the record for the call; values in the result as its class says.
  // Fails: 90027, 90029; never throws.
  virtual MCScore::MCStatus GetScore(const ScoreCaseRecord* record, ScoreResult*& result,
                                     bool flag) = 0;
  virtual MVPolicy GetMissingValuePolicy() const = 0;
  // 29 classification, 30 regression, 0 before the model is filled.
  virtual int GetModelType() const = 0;
  virtual bool GetPredictionOnly() const = 0;
  // Writes a description for diagnosis. Lives: the stream for the call. Fails: what it throws.
  virtual void Display(std::ostream& os) const = 0;
  // Owns: the model where `owned` is true, as above; else the caller. Lives: a dictionary that the
  // caller keeps, longer than the model.
  virtual void SetScoreDictionary(ScoreDictionary* dictionary, bool owned) = 0;
};

}  // namespace MCZandor_850

#endif  // HOST_MODEL_SCORE_MODEL_H_
