// One value while derived fields are computed: sixteen bytes, no ownership.
#ifndef HOST_TRANSFORM_VALUE_VALUE_H_
#define HOST_TRANSFORM_VALUE_VALUE_H_

#include <cmath>
#include <cstdint>
#include <limits>
#include <string_view>

#include "host/text/field_types.h"

namespace svmscore::transform {

enum class State : std::uint8_t {
  kPresent,
  kUnfit,  // present although not valid: used as it is because the document says so
  kMissing,
  kInvalid,  // the number, if any, is the result of an operation: an infinity or NaN
};

// A value and its data type. An integer is kept in 64 bits, a text as a view of memory that someone
// else owns, everything else as the number that field_types.h describes.
class Value {
 public:
  Value() = default;  // missing

  static Value Missing() { return {}; }
  static Value Invalid(double raw = std::numeric_limits<double>::quiet_NaN()) {
    return {State::kInvalid, {DataType::kDouble, 0}, raw};
  }
  static Value Double(double number) { return {State::kPresent, {DataType::kDouble, 0}, number}; }
  static Value Boolean(bool truth) {
    return {State::kPresent, {DataType::kBoolean, 0}, truth ? 1.0 : 0.0};
  }
  static Value Integer(std::int64_t integer) {
    Value value(State::kPresent, {DataType::kInteger, 0}, 0.0);
    value.integer_ = integer;
    return value;
  }
  // The text must outlive every use of the value.
  static Value Text(std::string_view text) {
    Value value(State::kPresent, {DataType::kString, 0}, 0.0);
    value.text_ = text.data();
    value.size_ = static_cast<std::uint32_t>(text.size());
    return value;
  }
  // A number of any type but integer and string.
  static Value Of(double number, FieldType type) { return {State::kPresent, type, number}; }
  // A computed number: invalid where it is an infinity or NaN.
  static Value Result(double number) {
    return std::isfinite(number) ? Double(number) : Invalid(number);
  }

  bool IsPresent() const { return state_ <= State::kUnfit; }
  bool IsMissing() const { return state_ == State::kMissing; }
  bool IsInvalid() const { return state_ == State::kInvalid; }
  bool IsUnfit() const { return state_ == State::kUnfit; }
  // The value, passed on as if it were present.
  Value AsUnfit() const {
    Value value = *this;
    value.state_ = State::kUnfit;
    return value;
  }

  DataType Data() const { return static_cast<DataType>(type_); }
  FieldType Type() const { return {Data(), base_year_}; }
  bool IsText() const { return Data() == DataType::kString; }
  bool IsInteger() const { return Data() == DataType::kInteger; }

  // REQUIRES: the value is present and of a type with that content.
  std::int64_t GetInteger() const { return integer_; }
  std::string_view GetText() const { return {text_, size_}; }
  double GetNumber() const { return IsInteger() ? static_cast<double>(integer_) : number_; }

 private:
  Value(State state, FieldType type, double number)
      : number_(number),
        base_year_(static_cast<std::int16_t>(type.base_year)),
        type_(static_cast<std::uint8_t>(type.data)),
        state_(state) {}

  union {
    double number_ = 0.0;
    std::int64_t integer_;
    const char* text_;
  };
  std::uint32_t size_ = 0;
  std::int16_t base_year_ = 0;
  std::uint8_t type_ = static_cast<std::uint8_t>(DataType::kDouble);
  State state_ = State::kMissing;
};

static_assert(sizeof(Value) == 16);

}  // namespace svmscore::transform

#endif  // HOST_TRANSFORM_VALUE_VALUE_H_
