// The parts of a moment, as functions of dates need them.
#ifndef HOST_TRANSFORM_FUNCTIONS_DATES_H_
#define HOST_TRANSFORM_FUNCTIONS_DATES_H_

#include <cstdint>
#include <optional>

#include "host/transform/value/conversion.h"

namespace svmscore::transform {

// The whole days and whole seconds of a moment. A fraction of a second is dropped from the clock
// time: 23:59:00.5 is 23:59:00, in every century.
struct DayAndSecond {
  std::optional<std::int64_t> day;  // since 1970-01-01; nothing for a time of day
  std::int64_t second;              // since midnight; 0 for a date
};

// Nothing for a value that is not a date or time, and for moments beyond a million years.
std::optional<DayAndSecond> DayAndSecondOf(const Value& value);

}  // namespace svmscore::transform

#endif  // HOST_TRANSFORM_FUNCTIONS_DATES_H_
