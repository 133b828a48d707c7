#include "host/text/field_text.h"

#include <algorithm>

#include "host/text/blank.h"
#include "host/text/calendar.h"
#include "host/text/number_text.h"

namespace svmscore {
namespace {

constexpr double kSecondsPerDay = 86400.0;

// ASCII letters without regard to case.
bool Spells(std::string_view text, std::string_view lower) {
  return std::equal(text.begin(), text.end(), lower.begin(), lower.end(),
                    [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a + 32 : a) == b; });
}

std::optional<double> BooleanNumber(std::string_view text) {
  const std::optional<bool> truth = ParseBoolean(text);
  if (!truth) return std::nullopt;
  return *truth ? 1.0 : 0.0;
}

std::optional<double> WholeNumber(std::string_view text) {
  const std::optional<std::int64_t> whole = ParseInteger(text);
  if (whole) return static_cast<double>(*whole);
  return std::nullopt;
}

// Days since January 1 of the base year, from a date or a number.
std::optional<double> DaysSince(std::string_view text, int base_year) {
  const std::optional<double> days = calendar::ParseDate(text);
  if (!days) return ParseNumber(text);
  return *days - static_cast<double>(calendar::DaysToYear(base_year));
}

std::optional<double> SecondsSince(std::string_view text, int base_year) {
  const double base = static_cast<double>(calendar::DaysToYear(base_year)) * kSecondsPerDay;
  if (const auto seconds = calendar::ParseDateTime(text)) return *seconds - base;
  if (const auto days = calendar::ParseDate(text)) return *days * kSecondsPerDay - base;
  return ParseNumber(text);
}

}  // namespace

std::optional<bool> ParseBoolean(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  if (text == "1" || Spells(text, "true")) return true;
  if (text == "0" || Spells(text, "false")) return false;
  return std::nullopt;
}

std::optional<double> NumberFromFieldText(std::string_view text, FieldType type) {
  switch (type.data) {
    case DataType::kString:
      return std::nullopt;
    case DataType::kInteger:
      return WholeNumber(text);
    case DataType::kFloat: {
      const std::optional<double> number = ParseNumber(text);
      if (!number) return std::nullopt;
      return static_cast<double>(static_cast<float>(*number));
    }
    case DataType::kDouble:
      return ParseNumber(text);
    case DataType::kBoolean:
      return BooleanNumber(text);
    case DataType::kDate:
      return calendar::ParseDate(text);
    case DataType::kTime:
      return calendar::ParseTime(text);
    case DataType::kDateTime:
      return calendar::ParseDateTime(text);
    case DataType::kTimeSeconds: {
      std::optional<double> seconds = calendar::ParseTime(text);
      if (!seconds) seconds = ParseNumber(text);
      return seconds && *seconds < 0.0 ? std::nullopt : seconds;
    }
    case DataType::kDateDaysSince:
      return DaysSince(text, type.base_year);
    case DataType::kDateTimeSecondsSince:
      return SecondsSince(text, type.base_year);
  }
  return std::nullopt;
}

std::optional<NumberKey> KeyFromFieldText(std::string_view text, FieldType type) {
  if (type.data == DataType::kInteger) {
    const auto whole = ParseInteger(text);
    return whole ? std::optional(KeyOf(*whole)) : std::nullopt;
  }
  const auto number = NumberFromFieldText(text, type);
  return number ? std::optional(KeyOf(*number)) : std::nullopt;
}

std::string FieldTextFromNumber(double number, FieldType type) {
  switch (type.data) {
    case DataType::kBoolean:
      return number == 0.0 ? "false" : "true";
    case DataType::kDate:
      return calendar::FormatDate(number);
    case DataType::kTime:
      return calendar::FormatTime(number);
    case DataType::kDateTime:
      return calendar::FormatDateTime(number);
    default:
      return FormatNumber(number);
  }
}

}  // namespace svmscore
