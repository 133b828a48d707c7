#include "svm/kernel/explain/values.h"

namespace MCSVM_700::explain {

std::unique_ptr<const Values> MakeValues(const Subject& subject, Sampling sampling) {
  if (auto values = MakeMonomialValues(subject)) return values;
  if (auto values = MakePairwiseValues(subject)) return values;
  return MakeSampledValues(subject, sampling);
}

}  // namespace MCSVM_700::explain
