#include "host/output/decision_name.h"

namespace svmscore::output {

std::string DecisionName(const TargetRules& targets, std::pair<int, int> decides) {
  if (targets.GetScheme().method == Method::kRegression) return "decision";
  return "decision(" + DecidedBetween(targets, decides) + ")";
}

std::string DecidedBetween(const TargetRules& targets, std::pair<int, int> decides) {
  if (targets.GetScheme().method == Method::kRegression) return {};
  const auto name = [&targets](int category) {
    const auto& categories = targets.Target().GetCategories();
    const auto position = static_cast<std::size_t>(category);
    return category >= 0 && position < categories.size() ? categories[position]->GetText() : "";
  };
  if (decides.second < 0) return name(decides.first);
  return name(decides.first) + "|" + name(decides.second);
}

}  // namespace svmscore::output
