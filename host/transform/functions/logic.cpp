// Tests for missing and invalid values, comparisons, and logic with three truth values.
#include <array>
#include <cmath>

#include "host/transform/functions/functions.h"

namespace svmscore::transform {
namespace {

bool IsValid(const Value& value) {
  if (!value.IsPresent() || value.IsUnfit()) return false;
  return value.IsText() || std::isfinite(value.GetNumber());
}

Value IsMissing(const Arguments& in) {
  return Value::Boolean(in[0].IsMissing());
}
Value IsNotMissing(const Arguments& in) {
  return Value::Boolean(!in[0].IsMissing());
}
Value IsValidTest(const Arguments& in) {
  return Value::Boolean(IsValid(in[0]));
}
// Not the opposite of isValid: a missing value is neither.
Value IsNotValid(const Arguments& in) {
  return Value::Boolean(!in[0].IsMissing() && !IsValid(in[0]));
}

Value Equal(const Arguments& in) {
  return Value::Boolean(Compare(in[0], in[1]) == Comparison::kEqual);
}

Value NotEqual(const Arguments& in) {
  return Value::Boolean(Compare(in[0], in[1]) != Comparison::kEqual);
}

// The values of an ordinal field compare by their ranks; without a rank they do not compare.
template <bool (*kHolds)(Comparison)>
Value Ordered(const Arguments& in) {
  if (in.order != nullptr) {
    const int left = in.order->RankOf(in[0]);
    const int right = in.order->RankOf(in[1]);
    if (left < 0 || right < 0) return Value::Missing();
    return Value::Boolean(kHolds(Compare(Value::Integer(left), Value::Integer(right))));
  }
  const Comparison order = Compare(in[0], in[1]);
  return order == Comparison::kNone ? Value::Invalid() : Value::Boolean(kHolds(order));
}

bool IsLess(Comparison order) {
  return order == Comparison::kLess;
}
bool IsLessOrEqual(Comparison order) {
  return order != Comparison::kGreater;
}
bool IsGreater(Comparison order) {
  return order == Comparison::kGreater;
}
bool IsGreaterOrEqual(Comparison order) {
  return order != Comparison::kLess;
}

// One argument that equals `kDecides` settles the result; otherwise a missing one leaves it open.
template <bool kDecides>
Value Junction(const Arguments& in) {
  bool missing = false;
  bool decided = false;
  for (const Value& value : in.values) {
    if (value.IsMissing()) {
      missing = true;
      continue;
    }
    const auto truth = TruthOf(value);
    if (!truth) return Value::Invalid();
    decided = decided || *truth == kDecides;
  }
  if (decided) return Value::Boolean(kDecides);
  return missing ? Value::Missing() : Value::Boolean(!kDecides);
}

Value Not(const Arguments& in) {
  const auto truth = TruthOf(in[0]);
  return truth ? Value::Boolean(!*truth) : Value::Invalid();
}

// Missing values in the list are ignored.
template <bool kIn>
Value Listed(const Arguments& in) {
  if (in[0].IsMissing()) return Value::Missing();
  for (const Value& value : in.values.subspan(1)) {
    if (value.IsPresent() && Compare(in[0], value) == Comparison::kEqual) {
      return Value::Boolean(kIn);
    }
  }
  return Value::Boolean(!kIn);
}

constexpr Function Test(std::string_view name, Value (*call)(const Arguments&)) {
  return {name, 1, 1, Returns::kBoolean, Accepts::kMissing, call};
}

constexpr Function Relation(std::string_view name, Value (*call)(const Arguments&)) {
  return {name, 2, 2, Returns::kBoolean, Accepts::kPresent, call};
}

constexpr std::array kLogicFunctions = {
    Test("isMissing", IsMissing),
    Test("isNotMissing", IsNotMissing),
    Test("isValid", IsValidTest),
    Test("isNotValid", IsNotValid),
    Relation("equal", Equal),
    Relation("notEqual", NotEqual),
    Relation("lessThan", Ordered<IsLess>),
    Relation("lessOrEqual", Ordered<IsLessOrEqual>),
    Relation("greaterThan", Ordered<IsGreater>),
    Relation("greaterOrEqual", Ordered<IsGreaterOrEqual>),
    Function{"and", 1, kManyArguments, Returns::kBoolean, Accepts::kMissing, Junction<false>},
    Function{"or", 1, kManyArguments, Returns::kBoolean, Accepts::kMissing, Junction<true>},
    Function{"not", 1, 1, Returns::kBoolean, Accepts::kPresent, Not},
    Function{"isIn", 2, kManyArguments, Returns::kBoolean, Accepts::kMissing, Listed<true>},
    Function{"isNotIn", 2, kManyArguments, Returns::kBoolean, Accepts::kMissing, Listed<false>},
};

}  // namespace

std::span<const Function> LogicFunctions() {
  return kLogicFunctions;
}

}  // namespace svmscore::transform
