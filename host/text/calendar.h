// Dates and times as numbers: proleptic Gregorian calendar, no leap seconds, no time zones.
// [any thread] Owns: the caller. Fails: the Parse functions by returning nothing for any other
// text, the Format functions by std::bad_alloc; the rest never.
#ifndef HOST_TEXT_CALENDAR_H_
#define HOST_TEXT_CALENDAR_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "host/text/api.h"

namespace svmscore::calendar {

struct Date {
  int year;
  unsigned month;  // 1 to 12
  unsigned day;    // 1 to 31
};

// Days from 1970-01-01 to January 1 of `year`; negative for earlier years.
SVMSCORE_HOST_API std::int64_t DaysToYear(int year);
// Days since 1970-01-01 and back.
SVMSCORE_HOST_API std::int64_t DaysOf(const Date& date);
SVMSCORE_HOST_API Date DateOf(std::int64_t days);

// YYYY-MM-DD as days since 1970-01-01. Dates that do not exist are refused.
SVMSCORE_HOST_API std::optional<double> ParseDate(std::string_view text);
// hh:mm:ss with an optional fraction, as seconds since midnight.
SVMSCORE_HOST_API std::optional<double> ParseTime(std::string_view text);
// A date, the letter T or a blank, and a time, as seconds since 1970-01-01T00:00:00. A time zone
// at the end is ignored.
SVMSCORE_HOST_API std::optional<double> ParseDateTime(std::string_view text);

// The reverse; numbers beyond about the year 30000 are written as plain numbers.
SVMSCORE_HOST_API std::string FormatDate(double days);
SVMSCORE_HOST_API std::string FormatTime(double seconds);
SVMSCORE_HOST_API std::string FormatDateTime(double seconds);

}  // namespace svmscore::calendar

#endif  // HOST_TEXT_CALENDAR_H_
