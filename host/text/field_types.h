// The kinds of field that a document can declare.
// [any thread] Lives: texts that are returned, as long as the process. Fails: never.
#ifndef HOST_TEXT_FIELD_TYPES_H_
#define HOST_TEXT_FIELD_TYPES_H_

#include <limits>
#include <optional>
#include <string_view>

#include "host/text/api.h"

namespace svmscore {

// The values are the variable type codes.
enum class OpType : int { kContinuous = 0, kOrdinal = 1, kCyclic = 2, kCategorical = 3 };

enum class DataType {
  kString,
  kInteger,
  kFloat,
  kDouble,
  kBoolean,
  kDate,
  kTime,
  kDateTime,
  kTimeSeconds,
  kDateDaysSince,         // with a base year
  kDateTimeSecondsSince,  // with a base year
};

// A data type with the base year of the two "since" types (0 elsewhere).
struct FieldType {
  DataType data = DataType::kDouble;
  int base_year = 0;
  bool operator==(const FieldType&) const = default;
};

// Reads a dataType or an optype as documents spell it; nothing for any other text.
SVMSCORE_HOST_API std::optional<FieldType> ParseDataType(std::string_view text);
SVMSCORE_HOST_API std::optional<OpType> ParseOpType(std::string_view text);
// The text of a data type as documents spell it.
SVMSCORE_HOST_API std::string_view DataTypeName(DataType type);

// True for the types whose values are kept as numbers: all but strings. A boolean is 0 or 1; a
// date is its days since 1970-01-01, a time its seconds since midnight, a date with time its
// seconds since 1970-01-01; the "since" and "seconds" types are the number that they name.
SVMSCORE_HOST_API bool IsNumberStored(DataType type);

// A range of numbers.
struct Interval {
  double left = -std::numeric_limits<double>::infinity();
  double right = std::numeric_limits<double>::infinity();
  bool left_closed = false;
  bool right_closed = false;

  bool Contains(double value) const {
    return (left_closed ? value >= left : value > left) &&
           (right_closed ? value <= right : value < right);
  }
};

}  // namespace svmscore

#endif  // HOST_TEXT_FIELD_TYPES_H_
