// Days and seconds since the beginning of a year.
#include "host/transform/functions/dates.h"

#include <array>
#include <cmath>

#include "host/text/calendar.h"
#include "host/transform/functions/functions.h"

namespace svmscore::transform {
namespace {

constexpr std::int64_t kSecondsOfDay = 86400;
constexpr double kMostDaysSince1970 = 365.0e6;
// The years that the calendar can represent.
constexpr std::int64_t kLastYear = 32767;

std::optional<std::int64_t> DaysToYearOf(const Value& value) {
  const auto year = IntegerOf(value);
  if (!year || *year < -kLastYear || *year > kLastYear) return std::nullopt;
  return calendar::DaysToYear(static_cast<int>(*year));
}

Value DaysSinceYear(const Arguments& in) {
  const auto moment = DayAndSecondOf(in[0]);
  const auto base = DaysToYearOf(in[1]);
  if (!moment || !moment->day || !base) return Value::Invalid();
  return Value::Integer(*moment->day - *base);
}

Value SecondsSinceYear(const Arguments& in) {
  const auto moment = DayAndSecondOf(in[0]);
  const auto base = DaysToYearOf(in[1]);
  if (!moment || !moment->day || !base) return Value::Invalid();
  return Value::Integer((*moment->day - *base) * kSecondsOfDay + moment->second);
}

Value SecondsSinceMidnight(const Arguments& in) {
  // A date has no time of day.
  const auto kind = MomentOf(in[0]);
  const auto moment = DayAndSecondOf(in[0]);
  return moment && kind->scale != Moment::Scale::kDay ? Value::Integer(moment->second)
                                                      : Value::Invalid();
}

// A date that never changes and does not exist is refused at load.
std::unique_ptr<Prepared> CheckFixedDate(const Element* element,
                                         std::span<const Value* const> fixed) {
  const auto given = [&fixed](std::size_t i) {
    return i < fixed.size() && fixed[i] != nullptr && fixed[i]->IsPresent();
  };
  Arena arena;
  if (given(0) && !DayAndSecondOf(*fixed[0])) {
    RefuseContent(element,
                  '"' + std::string(TextOf(*fixed[0], arena)) + "\" is not a date or time");
  }
  if (given(1) && !DaysToYearOf(*fixed[1])) {
    RefuseContent(element, '"' + std::string(TextOf(*fixed[1], arena)) + "\" is not a year");
  }
  return nullptr;
}

constexpr std::array kDatesFunctions = {
    Function{"dateDaysSinceYear", 2, 2, Returns::kNumber, Accepts::kPresent, DaysSinceYear,
             CheckFixedDate},
    Function{"dateSecondsSinceYear", 2, 2, Returns::kNumber, Accepts::kPresent, SecondsSinceYear,
             CheckFixedDate},
    Function{"dateSecondsSinceMidnight", 1, 1, Returns::kNumber, Accepts::kPresent,
             SecondsSinceMidnight, CheckFixedDate},
};

}  // namespace

std::optional<DayAndSecond> DayAndSecondOf(const Value& value) {
  const auto moment = MomentOf(value);
  if (!moment) return std::nullopt;
  const bool day = moment->scale == Moment::Scale::kDay;
  const double whole = std::floor(moment->value);
  const double days = day ? whole : whole / static_cast<double>(kSecondsOfDay);
  if (!(std::fabs(days) <= kMostDaysSince1970)) return std::nullopt;
  const auto count = static_cast<std::int64_t>(whole);
  if (day) return DayAndSecond{count, 0};
  if (moment->scale == Moment::Scale::kClock) return DayAndSecond{std::nullopt, count};
  const std::int64_t second = (count % kSecondsOfDay + kSecondsOfDay) % kSecondsOfDay;
  return DayAndSecond{(count - second) / kSecondsOfDay, second};
}

std::span<const Function> DateFunctions() {
  return kDatesFunctions;
}

}  // namespace svmscore::transform
