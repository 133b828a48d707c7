#include "common/missing_value.h"

#include <limits>

namespace MCCommon_850 {

double MCMV::gMissingValue = -std::numeric_limits<double>::max();

}  // namespace MCCommon_850
