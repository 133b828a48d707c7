#include "host/transform/value/conversion.h"

#include <charconv>
#include <cmath>

#include "host/text/blank.h"
#include "host/text/calendar.h"
#include "host/text/field_text.h"
#include "host/text/number_text.h"

namespace svmscore::transform {
namespace {

using MCZandor_850::ScoreValue;
using MCZandor_850::StringValue;

constexpr double kSecondsPerDay = 86400.0;
constexpr double kIntegerLimit = 0x1p63;
// Whole numbers below this are written as their digits, never with an exponent.
constexpr double kPlainDigits = 1e15;

std::string_view Trim(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

bool IsMoment(DataType type) {
  return type >= DataType::kDate;
}
// Types that mean a point in time and are plain numbers at the same time.
bool IsCount(DataType type) {
  return type >= DataType::kTimeSeconds;
}

double BaseDays(int year) {
  return static_cast<double>(calendar::DaysToYear(year));
}

Value RoundToInteger(double number) {
  const double whole = RoundHalfUp(number);
  if (!(whole >= -kIntegerLimit && whole < kIntegerLimit)) return Value::Invalid(number);
  return Value::Integer(static_cast<std::int64_t>(whole));
}

Value FromText(std::string_view text, FieldType type) {
  if (type.data == DataType::kInteger) {
    if (const auto integer = ParseInteger(text)) return Value::Integer(*integer);
    const auto truth = ParseBoolean(text);
    return truth ? Value::Integer(*truth ? 1 : 0) : Value::Invalid();
  }
  if (type.data == DataType::kBoolean) {
    const auto truth = ParseBoolean(text);
    return truth ? Value::Boolean(*truth) : Value::Invalid();
  }
  const auto number = NumberFromFieldText(Trim(text), type);
  return number ? Value::Of(*number, type) : Value::Invalid();
}

// The moment as a value of a date or time type; invalid where the scales have nothing in common.
Value FromMoment(const Moment& moment, FieldType type) {
  using Scale = Moment::Scale;
  const bool clock = type.data == DataType::kTime || type.data == DataType::kTimeSeconds;
  if (clock || moment.scale == Scale::kClock) {
    if (!clock || moment.scale == Scale::kDay) return Value::Invalid();
    const double days =
        moment.scale == Scale::kInstant ? std::floor(moment.value / kSecondsPerDay) : 0.0;
    return Value::Of(moment.value - days * kSecondsPerDay, type);
  }
  const bool instant = moment.scale == Scale::kInstant;
  const double days = instant ? std::floor(moment.value / kSecondsPerDay) : moment.value;
  const double seconds = instant ? moment.value : moment.value * kSecondsPerDay;
  switch (type.data) {
    case DataType::kDate:
      return Value::Of(days, type);
    case DataType::kDateDaysSince:
      return Value::Of(days - BaseDays(type.base_year), type);
    case DataType::kDateTime:
      return Value::Of(seconds, type);
    default:
      return Value::Of(seconds - BaseDays(type.base_year) * kSecondsPerDay, type);
  }
}

Value ToNumberType(const Value& value, FieldType type) {
  if (IsMoment(value.Data()) && !IsCount(value.Data())) return Value::Invalid();
  const double number = value.GetNumber();
  switch (type.data) {
    case DataType::kInteger:
      return RoundToInteger(number);
    case DataType::kFloat:
      return Value::Of(static_cast<double>(static_cast<float>(number)), type);
    case DataType::kBoolean:
      if (IsMoment(value.Data()) || (number != 0.0 && number != 1.0)) return Value::Invalid(number);
      return Value::Boolean(number == 1.0);
    default:
      return Value::Of(number, type);
  }
}

Comparison CompareNumbers(double left, double right) {
  if (left < right) return Comparison::kLess;
  if (left > right) return Comparison::kGreater;
  return left == right ? Comparison::kEqual : Comparison::kNone;
}

Comparison CompareMoments(const Moment& left, const Moment& right) {
  using Scale = Moment::Scale;
  if ((left.scale == Scale::kClock) != (right.scale == Scale::kClock)) return Comparison::kNone;
  const double a = left.scale == Scale::kDay ? left.value * kSecondsPerDay : left.value;
  const double b = right.scale == Scale::kDay ? right.value * kSecondsPerDay : right.value;
  return CompareNumbers(a, b);
}

Comparison Reverse(Comparison order) {
  if (order == Comparison::kLess) return Comparison::kGreater;
  return order == Comparison::kGreater ? Comparison::kLess : order;
}

}  // namespace

Value Convert(const Value& value, FieldType type, Arena& arena) {
  if (!value.IsPresent() || value.Type() == type) return value;
  if (type.data == DataType::kString) return Value::Text(TextOf(value, arena));
  if (value.IsText()) return FromText(value.GetText(), type);
  if (IsMoment(type.data) && IsMoment(value.Data())) return FromMoment(*MomentOf(value), type);
  if (IsMoment(type.data)) {
    const bool plain = IsCount(type.data) && value.Data() != DataType::kBoolean;
    return plain ? Value::Of(value.GetNumber(), type) : Value::Invalid();
  }
  return ToNumberType(value, type);
}

std::string_view TextOf(const Value& value, Arena& arena) {
  if (value.IsText()) return value.GetText();
  const DataType type = value.Data();
  const double number = value.GetNumber();
  if (type == DataType::kBoolean) return number == 0.0 ? "false" : "true";
  if (IsMoment(type) && !IsCount(type)) {
    return arena.Copy(FieldTextFromNumber(number, value.Type()));
  }
  char* buffer = arena.Allocate(kNumberTextSize);
  char* end = buffer;
  if (value.IsInteger() || (number == std::floor(number) && std::fabs(number) < kPlainDigits)) {
    const std::int64_t whole =
        value.IsInteger() ? value.GetInteger() : static_cast<std::int64_t>(number);
    end = std::to_chars(buffer, buffer + kNumberTextSize, whole).ptr;
  } else if (type == DataType::kFloat && std::isfinite(number)) {
    end = std::to_chars(buffer, buffer + kNumberTextSize, static_cast<float>(number)).ptr;
  } else {
    end = FormatNumber(buffer, number);
  }
  return {buffer, static_cast<std::size_t>(end - buffer)};
}

std::optional<double> NumberOf(const Value& value) {
  if (value.IsText()) return ParseNumber(value.GetText());
  if (IsMoment(value.Data()) && !IsCount(value.Data())) return std::nullopt;
  return value.GetNumber();
}

std::optional<bool> TruthOf(const Value& value) {
  if (value.IsText()) return ParseBoolean(value.GetText());
  if (IsMoment(value.Data())) return std::nullopt;
  const double number = value.GetNumber();
  if (number != 0.0 && number != 1.0) return std::nullopt;
  return number == 1.0;
}

double RoundHalfUp(double number) {
  // floor(number + 0.5) would round 0.49999999999999994 up, and lose odd numbers beyond 2^52.
  const double below = std::floor(number);
  return number - below >= 0.5 ? below + 1.0 : below;
}

std::optional<std::int64_t> IntegerOf(const Value& value) {
  if (value.IsInteger()) return value.GetInteger();
  const auto number = NumberOf(value);
  if (!number) return std::nullopt;
  const Value rounded = RoundToInteger(*number);
  if (rounded.IsInvalid()) return std::nullopt;
  return rounded.GetInteger();
}

std::optional<Moment> MomentOf(const Value& value) {
  using Scale = Moment::Scale;
  const double number = value.IsText() ? 0.0 : value.GetNumber();
  const int year = value.Type().base_year;
  switch (value.Data()) {
    case DataType::kString: {
      const std::string_view text = Trim(value.GetText());
      if (const auto instant = calendar::ParseDateTime(text)) {
        return Moment{Scale::kInstant, *instant};
      }
      if (const auto day = calendar::ParseDate(text)) return Moment{Scale::kDay, *day};
      if (const auto clock = calendar::ParseTime(text)) return Moment{Scale::kClock, *clock};
      return std::nullopt;
    }
    case DataType::kDate:
      return Moment{Scale::kDay, number};
    case DataType::kDateDaysSince:
      return Moment{Scale::kDay, number + BaseDays(year)};
    case DataType::kDateTime:
      return Moment{Scale::kInstant, number};
    case DataType::kDateTimeSecondsSince:
      return Moment{Scale::kInstant, number + BaseDays(year) * kSecondsPerDay};
    case DataType::kTime:
    case DataType::kTimeSeconds:
      return Moment{Scale::kClock, number};
    default:
      return std::nullopt;
  }
}

Value FromDocument(std::string_view text, FieldType type, Arena& arena) {
  if (type.data == DataType::kString) return Value::Text(arena.Copy(text));
  return Trim(text).empty() ? Value::Missing() : FromText(text, type);
}

Value FromDocument(std::string_view text, Arena& arena) {
  const bool plain = text.find_first_of(".eEN") == std::string_view::npos;
  const auto integer = plain ? ParseInteger(text) : std::nullopt;
  if (integer) return Value::Integer(*integer);
  if (const auto number = ParseNumber(text)) return Value::Double(*number);
  return Value::Text(arena.Copy(text));
}

Value ForComparison(std::string_view text, std::optional<FieldType> type, Arena& arena) {
  if (type && type->data != DataType::kString) {
    const Value value = FromText(text, *type);
    if (value.IsPresent()) return value;
  }
  return Value::Text(arena.Copy(text));
}

Value FromRecord(const ScoreValue* value, FieldType type, Arena& arena) {
  if (value == nullptr || value->IsMissing()) return Value::Missing();
  if (value->IsInvalid()) return Value::Invalid();
  if (!value->IsNumeric()) {
    const auto* string = dynamic_cast<const StringValue*>(value);
    const Value text = Value::Text(string != nullptr ? std::string_view(string->GetTextReference())
                                                     : arena.Copy(value->GetText()));
    return type.data == DataType::kString ? text : FromText(text.GetText(), type);
  }
  const double number = value->GetDouble();
  if (std::isnan(number)) return Value::Missing();
  if (type.data == DataType::kString) return Value::Text(arena.Copy(value->GetText()));
  if (type.data != DataType::kInteger) return Value::Of(number, type);
  const std::int64_t rest = value->GetRest();
  return rest == 0 ? RoundToInteger(number) : Value::Integer(WholeOf({number, rest}));
}

Comparison Compare(const Value& left, const Value& right) {
  if (left.IsText() && right.IsText()) {
    const int order = left.GetText().compare(right.GetText());
    return CompareNumbers(order, 0);
  }
  if (right.IsText()) return Reverse(Compare(right, left));
  if (left.IsText()) {
    const Value converted = FromText(left.GetText(), right.Type());
    if (converted.IsPresent()) return Compare(converted, right);
    // A fraction compares with an integer, and a date with a time of day on it.
    if (const auto number = ParseNumber(left.GetText()); number && !IsMoment(right.Data())) {
      return CompareNumbers(*number, right.GetNumber());
    }
    const auto a = IsMoment(right.Data()) ? MomentOf(left) : std::nullopt;
    return a ? CompareMoments(*a, *MomentOf(right)) : Comparison::kNone;
  }
  if (left.IsInteger() && right.IsInteger()) {
    const std::int64_t a = left.GetInteger();
    const std::int64_t b = right.GetInteger();
    return a < b ? Comparison::kLess : a > b ? Comparison::kGreater : Comparison::kEqual;
  }
  if (IsMoment(left.Data()) && IsMoment(right.Data())) {
    return CompareMoments(*MomentOf(left), *MomentOf(right));
  }
  const auto a = NumberOf(left);
  const auto b = NumberOf(right);
  return a && b ? CompareNumbers(*a, *b) : Comparison::kNone;
}

ValueOrder::ValueOrder(const MCZandor_850::ScoreDictVar& var) {
  int rank = 0;
  for (const ScoreValue* category : var.GetCategories()) {
    if (category->IsNumeric()) {
      numbers_.emplace(NumberKey{category->GetDouble(), category->GetRest()}, rank++);
    } else {
      texts_.emplace(category->GetText(), rank++);
    }
  }
}

int ValueOrder::RankOf(const Value& value) const {
  if (value.IsText()) {
    const auto found = texts_.find(std::string(value.GetText()));
    if (found != texts_.end()) return found->second;
    if (numbers_.empty()) return -1;
    const auto whole = ParseInteger(value.GetText());
    const auto number = ParseNumber(value.GetText());
    if (!whole && !number) return -1;
    const auto spelt = numbers_.find(whole ? svmscore::KeyOf(*whole) : svmscore::KeyOf(*number));
    return spelt == numbers_.end() ? -1 : spelt->second;
  }
  const auto found = numbers_.find(KeyOf(value));
  return found == numbers_.end() ? -1 : found->second;
}

}  // namespace svmscore::transform
