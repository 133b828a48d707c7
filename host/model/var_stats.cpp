#include "host/model/var_stats.h"

namespace MCZandor_850 {

VarStats::VarStats() = default;
VarStats::~VarStats() = default;

void VarStats::SetMissingReplacement(const ScoreValue* value) {
  replacement_ = value == nullptr ? nullptr : value->Clone();
}

}  // namespace MCZandor_850
