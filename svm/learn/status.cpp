#include "svm/learn/status.h"

namespace MCSvm {

MCStatus::MCStatus(long code, bool warning)
    : code_(code), severity_(warning ? std::int16_t{1} : std::int16_t{-1}) {}

bool MCStatus::operator==(const MCStatus& other) const {
  return code_ == other.code_ && severity_ == other.severity_ && discrete_ == other.discrete_ &&
         scale_ == other.scale_;
}

}  // namespace MCSvm
