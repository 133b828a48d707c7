#include "host/text/calendar.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdlib>

#include <fmt/format.h>

#include "host/text/number_text.h"

namespace svmscore::calendar {
namespace {

using std::chrono::sys_days;
using std::chrono::year_month_day;

constexpr double kSecondsPerDay = 86400.0;
// About the year 30000; later dates are written as plain numbers.
constexpr double kMostDaysAsText = 1.0e7;

// Reads exactly `width` digits and drops them from `text`.
std::optional<unsigned> TakeDigits(std::string_view& text, std::size_t width) {
  if (text.size() < width) return std::nullopt;
  unsigned value = 0;
  for (const char c : text.substr(0, width)) {
    if (c < '0' || c > '9') return std::nullopt;
    value = value * 10 + static_cast<unsigned>(c - '0');
  }
  text.remove_prefix(width);
  return value;
}

bool Take(std::string_view& text, char c) {
  if (text.empty() || text.front() != c) return false;
  text.remove_prefix(1);
  return true;
}

std::optional<double> TakeDate(std::string_view& text) {
  const bool negative = Take(text, '-');
  const auto year = TakeDigits(text, 4);
  if (!year || !Take(text, '-')) return std::nullopt;
  const auto month = TakeDigits(text, 2);
  if (!month || !Take(text, '-')) return std::nullopt;
  const auto day = TakeDigits(text, 2);
  if (!day) return std::nullopt;
  const int signed_year = negative ? -static_cast<int>(*year) : static_cast<int>(*year);
  const year_month_day date{std::chrono::year(signed_year), std::chrono::month(*month),
                            std::chrono::day(*day)};
  if (!date.ok()) return std::nullopt;
  return static_cast<double>(sys_days(date).time_since_epoch().count());
}

std::optional<double> TakeTime(std::string_view& text) {
  const auto hour = TakeDigits(text, 2);
  if (!hour || !Take(text, ':')) return std::nullopt;
  const auto minute = TakeDigits(text, 2);
  if (!minute || !Take(text, ':')) return std::nullopt;
  const auto second = TakeDigits(text, 2);
  if (!second || *hour > 23 || *minute > 59 || *second > 59) return std::nullopt;
  double fraction = 0.0;
  if (!text.empty() && text.front() == '.') {
    std::size_t end = 1;
    while (end < text.size() && text[end] >= '0' && text[end] <= '9') ++end;
    if (end == 1) return std::nullopt;
    fraction = ParseNumber(text.substr(0, end)).value_or(0.0);
    text.remove_prefix(end);
  }
  return *hour * 3600.0 + *minute * 60.0 + *second + fraction;
}

// A zone suffix: Z, or a sign with hours and minutes.
bool TakeZone(std::string_view& text) {
  if (text.empty() || Take(text, 'Z')) return true;
  if (!Take(text, '+') && !Take(text, '-')) return false;
  return TakeDigits(text, 2) && Take(text, ':') && TakeDigits(text, 2);
}

std::string SecondsText(double seconds) {
  const double whole = std::floor(seconds);
  std::string text = fmt::format("{:02}", static_cast<int>(whole));
  if (seconds == whole) return text;
  std::array<char, 400> fraction;  // of the smallest number 343
  const auto written =
      std::to_chars(fraction.begin(), fraction.end(), seconds - whole, std::chars_format::fixed);
  return text.append(fraction.data() + 1, written.ptr);
}

}  // namespace

std::int64_t DaysToYear(int year) {
  return DaysOf({year, 1, 1});
}

std::int64_t DaysOf(const Date& date) {
  return sys_days(year_month_day{std::chrono::year(date.year), std::chrono::month(date.month),
                                 std::chrono::day(date.day)})
      .time_since_epoch()
      .count();
}

Date DateOf(std::int64_t days) {
  const year_month_day date{sys_days(std::chrono::days(days))};
  return {static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
          static_cast<unsigned>(date.day())};
}

std::optional<double> ParseDate(std::string_view text) {
  const auto days = TakeDate(text);
  return text.empty() ? days : std::nullopt;
}

std::optional<double> ParseTime(std::string_view text) {
  const auto seconds = TakeTime(text);
  return seconds && TakeZone(text) && text.empty() ? seconds : std::nullopt;
}

std::optional<double> ParseDateTime(std::string_view text) {
  const auto days = TakeDate(text);
  if (!days || !(Take(text, 'T') || Take(text, ' '))) return std::nullopt;
  const auto seconds = TakeTime(text);
  if (!seconds || !TakeZone(text) || !text.empty()) return std::nullopt;
  return *days * kSecondsPerDay + *seconds;
}

std::string FormatDate(double days) {
  if (!(std::fabs(days) <= kMostDaysAsText)) return FormatNumber(days);
  const Date date = DateOf(static_cast<std::int64_t>(std::floor(days)));
  return fmt::format("{}{:04}-{:02}-{:02}", date.year < 0 ? "-" : "", std::abs(date.year),
                     date.month, date.day);
}

std::string FormatTime(double seconds) {
  if (!(std::fabs(seconds) <= kMostDaysAsText * kSecondsPerDay)) return FormatNumber(seconds);
  const int minutes = static_cast<int>(std::floor(seconds / 60.0));
  return fmt::format("{:02}:{:02}:", minutes / 60, minutes % 60) +
         SecondsText(seconds - minutes * 60.0);
}

std::string FormatDateTime(double seconds) {
  if (!(std::fabs(seconds) <= kMostDaysAsText * kSecondsPerDay)) return FormatNumber(seconds);
  const double days = std::floor(seconds / kSecondsPerDay);
  return FormatDate(days) + 'T' + FormatTime(seconds - days * kSecondsPerDay);
}

}  // namespace svmscore::calendar
