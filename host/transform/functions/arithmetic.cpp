// + - * / modulo, and the aggregates over the arguments of one call.
#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "host/transform/functions/functions.h"

namespace svmscore::transform {
namespace {

// Integers stay integers while the exact result fits in 64 bits.
struct Add {
  static bool Whole(std::int64_t a, std::int64_t b, std::int64_t* to) {
    return !__builtin_add_overflow(a, b, to);
  }
  static double Real(double a, double b) { return a + b; }
};

struct Subtract {
  static bool Whole(std::int64_t a, std::int64_t b, std::int64_t* to) {
    return !__builtin_sub_overflow(a, b, to);
  }
  static double Real(double a, double b) { return a - b; }
};

struct Multiply {
  static bool Whole(std::int64_t a, std::int64_t b, std::int64_t* to) {
    return !__builtin_mul_overflow(a, b, to);
  }
  static double Real(double a, double b) { return a * b; }
};

// The remainder that has the sign of the divisor: a - b * floor(a / b).
struct Modulo {
  static bool Whole(std::int64_t a, std::int64_t b, std::int64_t* to) {
    if (b == 0) return false;
    const std::int64_t rest = b == -1 ? 0 : a % b;
    *to = rest != 0 && (rest < 0) != (b < 0) ? rest + b : rest;
    return true;
  }
  static double Real(double a, double b) {
    const double rest = std::fmod(a, b);  // exact, where floor(a / b) may round
    return rest != 0.0 && (rest < 0.0) != (b < 0.0) ? rest + b : rest;
  }
};

template <typename Operation>
Value Combine(const Value& left, const Value& right) {
  std::int64_t whole = 0;
  if (left.IsInteger() && right.IsInteger() &&
      Operation::Whole(left.GetInteger(), right.GetInteger(), &whole)) {
    return Value::Integer(whole);
  }
  const auto a = NumberOf(left);
  const auto b = NumberOf(right);
  return a && b ? Value::Result(Operation::Real(*a, *b)) : Value::Invalid();
}

template <typename Operation>
Value Binary(const Arguments& in) {
  return Combine<Operation>(in[0], in[1]);
}

Value Divide(const Arguments& in) {
  const auto a = NumberOf(in[0]);
  const auto b = NumberOf(in[1]);
  return a && b ? Value::Result(*a / *b) : Value::Invalid();
}

// The present arguments combined from the left; missing if there are none.
template <typename Operation>
Value Fold(const Arguments& in) {
  Value result = Value::Missing();
  for (const Value& value : in.values) {
    if (value.IsMissing()) continue;
    if (result.IsMissing()) {
      const auto number = NumberOf(value);
      if (!number) return Value::Invalid();
      result = value.IsInteger() ? value : Value::Result(*number);
    } else if (result.IsPresent()) {
      result = Combine<Operation>(result, value);
    }
  }
  return result;
}

// The least or greatest of the present arguments, as kWanted says.
template <Comparison kWanted>
Value Extreme(const Arguments& in) {
  Value best = Value::Missing();
  for (const Value& value : in.values) {
    if (value.IsMissing()) continue;
    Value candidate = value;
    if (value.IsText()) {
      const auto number = NumberOf(value);
      if (!number) return Value::Invalid();
      candidate = Value::Double(*number);
    }
    if (best.IsMissing()) {
      best = candidate;
      continue;
    }
    const Comparison order = Compare(candidate, best);
    if (order == Comparison::kNone) return Value::Invalid();
    if (order == kWanted) best = candidate;
  }
  return best;
}

Value Average(const Arguments& in) {
  double sum = 0.0;
  std::size_t count = 0;
  for (const Value& value : in.values) {
    if (value.IsMissing()) continue;
    const auto number = NumberOf(value);
    if (!number) return Value::Invalid();
    sum += *number;
    ++count;
  }
  return count == 0 ? Value::Missing() : Value::Result(sum / static_cast<double>(count));
}

Value Median(const Arguments& in) {
  auto* numbers = reinterpret_cast<double*>(in.arena.Allocate(in.size() * sizeof(double)));
  std::size_t count = 0;
  for (const Value& value : in.values) {
    if (value.IsMissing()) continue;
    const auto number = NumberOf(value);
    if (!number || std::isnan(*number)) return Value::Invalid();
    numbers[count++] = *number;
  }
  if (count == 0) return Value::Missing();
  std::sort(numbers, numbers + count);
  const double upper = numbers[count / 2];
  return Value::Result(count % 2 == 1 ? upper : (numbers[count / 2 - 1] + upper) / 2.0);
}

constexpr std::array kArithmeticFunctions = {
    Function{"+", 2, 2, Returns::kNumber, Accepts::kPresent, Binary<Add>},
    Function{"-", 2, 2, Returns::kNumber, Accepts::kPresent, Binary<Subtract>},
    Function{"*", 2, 2, Returns::kNumber, Accepts::kPresent, Binary<Multiply>},
    Function{"/", 2, 2, Returns::kNumber, Accepts::kPresent, Divide},
    Function{"modulo", 2, 2, Returns::kNumber, Accepts::kPresent, Binary<Modulo>},
    Function{"min", 1, kManyArguments, Returns::kNumber, Accepts::kMissing,
             Extreme<Comparison::kLess>},
    Function{"max", 1, kManyArguments, Returns::kNumber, Accepts::kMissing,
             Extreme<Comparison::kGreater>},
    Function{"sum", 1, kManyArguments, Returns::kNumber, Accepts::kMissing, Fold<Add>},
    Function{"product", 1, kManyArguments, Returns::kNumber, Accepts::kMissing, Fold<Multiply>},
    Function{"avg", 1, kManyArguments, Returns::kNumber, Accepts::kMissing, Average},
    Function{"median", 1, kManyArguments, Returns::kNumber, Accepts::kMissing, Median},
};

}  // namespace

std::span<const Function> ArithmeticFunctions() {
  return kArithmeticFunctions;
}

}  // namespace svmscore::transform
