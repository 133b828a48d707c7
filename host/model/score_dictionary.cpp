#include "host/model/score_dictionary.h"

#include <utility>

namespace MCZandor_850 {

ScoreDictionary::~ScoreDictionary() = default;

BaseDictionary::BaseDictionary() = default;
BaseDictionary::~BaseDictionary() = default;

bool BaseDictionary::AddVar(std::unique_ptr<ScoreDictVar> var) {
  if (!AddVar(var->GetName(), var.get())) return false;
  owned_.push_back(std::move(var));
  return true;
}

bool BaseDictionary::AddVar(const std::string& name, const ScoreDictVar* var) {
  // A dictionary hands out variables that are not const, because the first case sets their
  // positions; borrowed variables are no exception.
  auto* view = const_cast<ScoreDictVar*>(var);
  if (!by_name_.emplace(name, view).second) return false;
  in_order_.push_back(view);
  return true;
}

ScoreDictVar* BaseDictionary::FindVar(const std::string& name) const {
  const auto found = by_name_.find(name);
  return found == by_name_.end() ? nullptr : found->second;
}

std::vector<ScoreDictVar*> BaseDictionary::GetVariables(bool without_hidden) const {
  if (!without_hidden) return in_order_;
  std::vector<ScoreDictVar*> seen;
  for (ScoreDictVar* var : in_order_) {
    if (!var->IsHiddenByDerived()) seen.push_back(var);
  }
  return seen;
}

}  // namespace MCZandor_850
