#include "svm/result/cls_result.h"

namespace MCZandor_850 {

bool SVMClsResult::AddValuePercent(ScoreValue* value, double percent) {
  value_percents_.emplace_back(value, percent);
  return true;
}

double SVMClsResult::GetPercent(const ScoreValue* value) const {
  for (const auto& [category, percent] : value_percents_) {
    if (category != nullptr && category->IsEqual(value)) return percent;
  }
  return -1.0;
}

}  // namespace MCZandor_850
