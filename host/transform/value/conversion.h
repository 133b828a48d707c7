// Values of one type as values of another, and comparisons between types. [any thread], each with
// its own arena. Lives: texts of results, as long as the arena and the texts of the arguments.
// Fails: std::bad_alloc.
#ifndef HOST_TRANSFORM_VALUE_CONVERSION_H_
#define HOST_TRANSFORM_VALUE_CONVERSION_H_

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/model/score_dict_var.h"
#include "host/model/score_value.h"
#include "host/text/api.h"
#include "host/text/number_key.h"
#include "host/transform/value/arena.h"
#include "host/transform/value/value.h"

namespace svmscore::transform {

// The value as one of `type`; invalid where it cannot be one. Missing and invalid values stay as
// they are. A fraction becomes the nearest integer, ties upward.
SVMSCORE_HOST_API Value Convert(const Value& value, FieldType type, Arena& arena);

// The text of a present value.
SVMSCORE_HOST_API std::string_view TextOf(const Value& value, Arena& arena);
// A present value as a number; nothing for texts that are not numbers, and for dates and times. The
// types that count days or seconds are numbers.
SVMSCORE_HOST_API std::optional<double> NumberOf(const Value& value);
// A present value as a truth value: booleans, 0 and 1, and texts of these.
std::optional<bool> TruthOf(const Value& value);
// The nearest whole number, halves upward: -2.5 becomes -2.
double RoundHalfUp(double number);
// A whole number: the value rounded where it has a fraction.
std::optional<std::int64_t> IntegerOf(const Value& value);

// A point in time, on a scale that several types of date and time share.
struct Moment {
  enum class Scale { kDay, kInstant, kClock };
  Scale scale;
  double value;  // days since 1970-01-01, seconds since then, seconds since midnight
};
// Nothing for a value that is neither a date or time nor the text of one.
std::optional<Moment> MomentOf(const Value& value);

// A document's `text` as a value of `type`. Empty texts are missing, except for strings. The text
// is copied into `arena`.
SVMSCORE_HOST_API Value FromDocument(std::string_view text, FieldType type, Arena& arena);
// The same without a type: an integer, a double, or else a text.
Value FromDocument(std::string_view text, Arena& arena);
// A document's text that values of `type` are compared with: a value of that type where it can be
// read as one, otherwise a text.
Value ForComparison(std::string_view text, std::optional<FieldType> type, Arena& arena);

// The number of a present value that is not a text; whole numbers are exact.
inline NumberKey KeyOf(const Value& value) {
  return value.IsInteger() ? svmscore::KeyOf(value.GetInteger())
                           : svmscore::KeyOf(value.GetNumber());
}

// A value of a case record, as the type of its field. Texts are views into the record where it
// keeps them, else copies in `arena`.
SVMSCORE_HOST_API Value FromRecord(const MCZandor_850::ScoreValue* value, FieldType type,
                                   Arena& arena);

enum class Comparison { kLess, kEqual, kGreater, kNone };
// Numbers compare as numbers (two integers exactly), texts by code points, times on their scale;
// a text compares with another type by its value as that type. kNone where the two do not compare,
// and for NaN.
// REQUIRES: both are present.
Comparison Compare(const Value& left, const Value& right);

// The order of an ordinal field's values.
class ValueOrder {
 public:
  explicit ValueOrder(const MCZandor_850::ScoreDictVar& var);
  // -1 for a value that is not in the order.
  int RankOf(const Value& value) const;

 private:
  std::unordered_map<std::string, int> texts_;
  std::unordered_map<NumberKey, int, NumberKeyHash> numbers_;
};

}  // namespace svmscore::transform

#endif  // HOST_TRANSFORM_VALUE_CONVERSION_H_
