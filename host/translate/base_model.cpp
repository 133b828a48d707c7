#include "host/translate/base_model.h"

#include <algorithm>
#include <utility>

#include "host/transform/transformation_dictionary.h"

namespace MCZandor_850 {
namespace {

// The dictionary as a shared one: with the owners that it has already, or with this as the first.
std::shared_ptr<ScoreDictionary> Share(ScoreDictionary* dictionary) {
  if (dictionary == nullptr) return nullptr;
  std::shared_ptr<ScoreDictionary> shared = dictionary->weak_from_this().lock();
  return shared ? shared : std::shared_ptr<ScoreDictionary>(dictionary);
}

}  // namespace

BaseModel::BaseModel() = default;
BaseModel::~BaseModel() = default;

void BaseModel::SetScoreDictionary(ScoreDictionary* dictionary) {
  SetScoreDictionary(dictionary, true);
}

void BaseModel::SetScoreDictionary(ScoreDictionary* dictionary, bool owned) {
  if (dictionary == dictionary_.get()) return;
  // Roles and targets belong to the variables of the dictionary that is replaced.
  roles_.clear();
  targets_.clear();
  dictionary_ = owned ? Share(dictionary)
                      : std::shared_ptr<ScoreDictionary>(dictionary, [](ScoreDictionary*) {});
}

void BaseModel::SetTransformationScoreDictionary(TransformationDictionary* dictionary) {
  transformations_.reset(dictionary);
}

void BaseModel::SetResultScoreDictionary(ScoreDictionary* dictionary) {
  if (dictionary != result_dictionary_.get()) result_dictionary_ = Share(dictionary);
}

void BaseModel::SetVarRole(const ScoreDictVar* var, VarRole role) {
  if (var == nullptr) return;
  roles_[var->GetName()] = role;
  const auto known = std::find(targets_.begin(), targets_.end(), var);
  if (role == kTargetRole) {
    if (known == targets_.end()) targets_.push_back(var);
  } else if (known != targets_.end()) {
    targets_.erase(known);
  }
}

void BaseModel::SetVarRole(const std::string& name, VarRole role) {
  const ScoreDictVar* var = dictionary_ ? dictionary_->FindVar(name) : nullptr;
  if (var != nullptr) {
    SetVarRole(var, role);
  } else {
    roles_[name] = role;
  }
}

void BaseModel::SetVersionInfo(ScoreVersionInfo* version) {
  version_.reset(version);
}

ScoreModel::VarRole BaseModel::GetVarRole(const ScoreDictVar* var) const {
  return var == nullptr ? kOtherRole : GetVarRole(var->GetName());
}

ScoreModel::VarRole BaseModel::GetVarRole(const std::string& name) const {
  const auto found = roles_.find(name);
  return found == roles_.end() ? kOtherRole : found->second;
}

}  // namespace MCZandor_850
