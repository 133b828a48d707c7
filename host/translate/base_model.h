// The state that every model keeps: dictionaries, roles, missing-value policy, version.
#ifndef HOST_TRANSLATE_BASE_MODEL_H_
#define HOST_TRANSLATE_BASE_MODEL_H_

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/model/score_model.h"
#include "host/text/api.h"

namespace MCZandor_850 {

// Rules as for ScoreModel.
class SVMSCORE_HOST_API BaseModel : public ScoreModel {
 public:
  BaseModel();
  ~BaseModel() override;
  BaseModel(const BaseModel&) = delete;
  BaseModel& operator=(const BaseModel&) = delete;

  void SetScoreDictionary(ScoreDictionary* dictionary) override;
  void SetTransformationScoreDictionary(TransformationDictionary* dictionary) override;
  void SetResultScoreDictionary(ScoreDictionary* dictionary) override;
  void SetVarRole(const ScoreDictVar* var, VarRole role) override;
  void SetVarRole(const std::string& name, VarRole role) override;
  void SetMissingValuePolicy(MVPolicy policy) override { policy_ = policy; }
  void SetVersionInfo(ScoreVersionInfo* version) override;
  VarRole GetVarRole(const ScoreDictVar* var) const override;
  // kOtherRole for a name without a recorded role.
  VarRole GetVarRole(const std::string& name) const override;
  ScoreVersionInfo* GetVersionInfo() const override { return version_.get(); }
  // The variable that was first given the target role; null where none has it.
  const ScoreDictVar* GetTargetVar() const override {
    return targets_.empty() ? nullptr : targets_.front();
  }
  ScoreDictionary* GetDictionary() const override { return dictionary_.get(); }
  TransformationDictionary* GetTransformationDictionary() const override {
    return transformations_.get();
  }
  ScoreDictionary* GetResultDictionary() const override { return result_dictionary_.get(); }
  MVPolicy GetMissingValuePolicy() const override { return policy_; }
  void SetScoreDictionary(ScoreDictionary* dictionary, bool owned) override;

 private:
  std::shared_ptr<ScoreDictionary> dictionary_;
  std::unique_ptr<TransformationDictionary> transformations_;
  std::shared_ptr<ScoreDictionary> result_dictionary_;
  std::unordered_map<std::string, VarRole> roles_;
  std::vector<const ScoreDictVar*> targets_;  // in the order in which they got that role
  MVPolicy policy_ = kPredictMissing;
  std::unique_ptr<ScoreVersionInfo> version_;
};

}  // namespace MCZandor_850

#endif  // HOST_TRANSLATE_BASE_MODEL_H_
