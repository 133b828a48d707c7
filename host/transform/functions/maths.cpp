// Logarithms, powers, roundings and angles. For domain errors and overflows the C library returns
// infinities and NaN, which become invalid results.
#include <array>
#include <cmath>

#include "host/transform/functions/functions.h"

namespace svmscore::transform {
namespace {

constexpr double kIntegersEnd = 0x1p63;

Value WholeNumber(double number) {
  if (number >= -kIntegersEnd && number < kIntegersEnd) {
    return Value::Integer(static_cast<std::int64_t>(number));
  }
  return Value::Result(number);
}

template <double (*F)(double)>
Value Round(const Arguments& in) {
  if (in[0].IsInteger()) return in[0];
  const auto x = NumberOf(in[0]);
  return x ? WholeNumber(F(*x)) : Value::Invalid();
}

Value Absolute(const Arguments& in) {
  if (in[0].IsInteger() && in[0].GetInteger() != std::numeric_limits<std::int64_t>::min()) {
    return Value::Integer(std::abs(in[0].GetInteger()));
  }
  return OfNumber<::fabs>(in);
}

// The exact power of integers, as long as it fits in 64 bits.
bool WholePower(std::int64_t base, std::int64_t exponent, std::int64_t* to) {
  *to = 1;
  for (std::int64_t square = base; exponent > 0;) {
    if (exponent % 2 == 1 && __builtin_mul_overflow(*to, square, to)) return false;
    exponent /= 2;
    if (exponent > 0 && __builtin_mul_overflow(square, square, &square)) return false;
  }
  return true;
}

Value Power(const Arguments& in) {
  std::int64_t whole = 0;
  if (in[0].IsInteger() && in[1].IsInteger() && in[1].GetInteger() >= 0 &&
      WholePower(in[0].GetInteger(), in[1].GetInteger(), &whole)) {
    return Value::Integer(whole);
  }
  const auto x = NumberOf(in[0]);
  const auto y = NumberOf(in[1]);
  return x && y ? Value::Result(std::pow(*x, *y)) : Value::Invalid();
}

Value Threshold(const Arguments& in) {
  const auto x = NumberOf(in[0]);
  const auto y = NumberOf(in[1]);
  return x && y ? Value::Integer(*x > *y ? 1 : 0) : Value::Invalid();
}

Value Hypotenuse(const Arguments& in) {
  const auto x = NumberOf(in[0]);
  const auto y = NumberOf(in[1]);
  return x && y ? Value::Result(std::hypot(*x, *y)) : Value::Invalid();
}

constexpr Function One(std::string_view name, Value (*call)(const Arguments&)) {
  return {name, 1, 1, Returns::kNumber, Accepts::kPresent, call};
}

constexpr Function Two(std::string_view name, Value (*call)(const Arguments&)) {
  return {name, 2, 2, Returns::kNumber, Accepts::kPresent, call};
}

constexpr std::array kMathsFunctions = {
    One("log10", OfNumber<::log10>),
    One("ln", OfNumber<::log>),
    One("ln1p", OfNumber<::log1p>),
    One("sqrt", OfNumber<::sqrt>),
    One("abs", Absolute),
    One("exp", OfNumber<::exp>),
    One("expm1", OfNumber<::expm1>),
    Two("pow", Power),
    Two("threshold", Threshold),
    One("floor", Round<::floor>),
    One("ceil", Round<::ceil>),
    One("round", Round<RoundHalfUp>),
    One("rint", OfNumber<::nearbyint>),
    Two("hypot", Hypotenuse),
    One("sin", OfNumber<::sin>),
    One("cos", OfNumber<::cos>),
    One("tan", OfNumber<::tan>),
    One("asin", OfNumber<::asin>),
    One("acos", OfNumber<::acos>),
    One("atan", OfNumber<::atan>),
    One("sinh", OfNumber<::sinh>),
    One("cosh", OfNumber<::cosh>),
    One("tanh", OfNumber<::tanh>),
};

}  // namespace

std::span<const Function> MathsFunctions() {
  return kMathsFunctions;
}

}  // namespace svmscore::transform
