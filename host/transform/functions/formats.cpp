// formatNumber and formatDatetime: patterns in the manner of C, always in English and with a point.
#include <array>
#include <charconv>
#include <cmath>
#include <string>
#include <utility>

#include <fmt/format.h>
#include <fmt/printf.h>

#include "host/text/calendar.h"
#include "host/transform/functions/dates.h"
#include "host/transform/functions/functions.h"

namespace svmscore::transform {
namespace {

// The largest width that a pattern may ask for.
constexpr int kWidest = 1000;

// A number pattern taken apart: one conversion between two texts.
struct NumberPattern {
  std::string before;
  std::string conversion;  // begins with % and ends with one of d f e g E G
  std::string after;
};

bool TakeCount(std::string_view text, std::size_t& at) {
  int count = 0;
  const auto result = std::from_chars(text.data() + at, text.data() + text.size(), count);
  if (result.ec == std::errc::result_out_of_range || count > kWidest) return false;
  at = static_cast<std::size_t>(result.ptr - text.data());
  return true;
}

// Reads the conversion whose % is just before `at` and moves past it; empty where it is not one.
std::string TakeConversion(std::string_view text, std::size_t& at) {
  const std::size_t start = at;
  while (at < text.size() && std::string_view("-+ 0#").find(text[at]) != std::string_view::npos) {
    ++at;
  }
  if (!TakeCount(text, at)) return {};
  if (at < text.size() && text[at] == '.' && !TakeCount(text, ++at)) return {};
  if (at >= text.size() || std::string_view("difegEG").find(text[at]) == std::string_view::npos) {
    return {};
  }
  std::string conversion = "%" + std::string(text.substr(start, ++at - start));
  if (conversion.back() == 'i') conversion.back() = 'd';
  return conversion;
}

std::optional<NumberPattern> ParseNumberPattern(std::string_view text) {
  NumberPattern pattern;
  for (std::size_t at = 0; at < text.size();) {
    std::string& side = pattern.conversion.empty() ? pattern.before : pattern.after;
    const char c = text[at++];
    if (c != '%') {
      side += c;
    } else if (at < text.size() && text[at] == '%') {
      side += text[at++];
    } else {
      if (!pattern.conversion.empty()) return std::nullopt;
      pattern.conversion = TakeConversion(text, at);
      if (pattern.conversion.empty()) return std::nullopt;
    }
  }
  if (pattern.conversion.empty()) return std::nullopt;
  return pattern;
}

class PreparedNumberPattern : public Prepared {
 public:
  explicit PreparedNumberPattern(NumberPattern pattern) : pattern_(std::move(pattern)) {}
  const NumberPattern& Get() const { return pattern_; }

 private:
  NumberPattern pattern_;
};

std::unique_ptr<Prepared> PrepareNumberPattern(const Element* element,
                                               std::span<const Value* const> fixed) {
  if (fixed[1] == nullptr || !fixed[1]->IsPresent()) return nullptr;
  Arena pool;
  const std::string_view text = TextOf(*fixed[1], pool);
  auto pattern = ParseNumberPattern(text);
  if (!pattern) {
    RefuseContent(element,
                  "\"" + std::string(text) +
                      "\" is not a number pattern: one conversion of %d %i %f %e %g %E %G");
  }
  return std::make_unique<PreparedNumberPattern>(*std::move(pattern));
}

Value FormatWith(const NumberPattern& pattern, const Value& value, Arena& arena) {
  std::string number;
  if (pattern.conversion.back() == 'd') {
    // Only whole numbers are printed this way; a fraction would be lost silently.
    const auto plain = NumberOf(value);
    const auto integer = IntegerOf(value);
    if (!plain || !integer || *plain != std::floor(*plain)) return Value::Invalid();
    number = fmt::sprintf(pattern.conversion, *integer);
  } else {
    const auto real = NumberOf(value);
    if (!real) return Value::Invalid();
    number = fmt::sprintf(pattern.conversion, *real);
  }
  const std::string text = pattern.before + number + pattern.after;
  return arena.HasRoomFor(text.size()) ? Value::Text(arena.Copy(text)) : Value::Invalid();
}

Value FormatNumberBy(const Arguments& in) {
  if (in.prepared != nullptr) {
    return FormatWith(static_cast<const PreparedNumberPattern*>(in.prepared)->Get(), in[0],
                      in.arena);
  }
  const auto pattern = ParseNumberPattern(TextOf(in[1], in.arena));
  return pattern ? FormatWith(*pattern, in[0], in.arena) : Value::Invalid();
}

constexpr std::array<std::string_view, 7> kDays = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                   "Thursday", "Friday", "Saturday"};
constexpr std::array<std::string_view, 12> kMonths = {
    "January", "February", "March",     "April",   "May",      "June",
    "July",    "August",   "September", "October", "November", "December"};
constexpr std::size_t kShortName = 3;

constexpr std::string_view kDateLetters = "YymdjbBaAehFDC";
constexpr std::string_view kClockLetters = "HIMSpTR";

std::string DatePart(char letter, std::int64_t day) {
  const calendar::Date date = calendar::DateOf(day);
  const int century = ((date.year % 100) + 100) % 100;
  const std::string_view month = kMonths[date.month - 1];
  // 1970-01-01 was a Thursday.
  const std::string_view name = kDays[static_cast<std::size_t>(((day + 4) % 7 + 7) % 7)];
  switch (letter) {
    case 'Y':
      return fmt::format("{:04}", date.year);
    case 'y':
      return fmt::format("{:02}", century);
    case 'C':
      return fmt::format("{:02}", (date.year - century) / 100);
    case 'm':
      return fmt::format("{:02}", date.month);
    case 'd':
      return fmt::format("{:02}", date.day);
    case 'e':
      return fmt::format("{:2}", date.day);
    case 'j':
      return fmt::format("{:03}", day - calendar::DaysToYear(date.year) + 1);
    case 'b':
    case 'h':
      return std::string(month.substr(0, kShortName));
    case 'B':
      return std::string(month);
    case 'a':
      return std::string(name.substr(0, kShortName));
    case 'A':
      return std::string(name);
    case 'F':
      return fmt::format("{:04}-{:02}-{:02}", date.year, date.month, date.day);
    default:  // D
      return fmt::format("{:02}/{:02}/{:02}", date.month, date.day, century);
  }
}

std::string ClockPart(char letter, std::int64_t second) {
  const std::int64_t hour = second / 3600;
  const std::int64_t minute = second / 60 % 60;
  switch (letter) {
    case 'H':
      return fmt::format("{:02}", hour);
    case 'I':
      return fmt::format("{:02}", hour % 12 == 0 ? 12 : hour % 12);
    case 'M':
      return fmt::format("{:02}", minute);
    case 'S':
      return fmt::format("{:02}", second % 60);
    case 'p':
      return hour % 24 < 12 ? "AM" : "PM";
    case 'R':
      return fmt::format("{:02}:{:02}", hour, minute);
    default:  // T
      return fmt::format("{:02}:{:02}:{:02}", hour, minute, second % 60);
  }
}

bool Holds(std::string_view letters, char letter) {
  return letters.find(letter) != std::string_view::npos;
}

// Calls `text` for characters that are copied as they are and `part` for letters after %. False
// where a letter means nothing, or `part` returns false.
template <typename Text, typename Part>
bool ForEachPart(std::string_view pattern, Text text, Part part) {
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] != '%') {
      text(pattern[i]);
      continue;
    }
    const char letter = ++i < pattern.size() ? pattern[i] : '\0';
    if (letter == '%') {
      text(letter);
    } else if (!(Holds(kDateLetters, letter) || Holds(kClockLetters, letter)) || !part(letter)) {
      return false;
    }
  }
  return true;
}

std::unique_ptr<Prepared> CheckDatePattern(const Element* element,
                                           std::span<const Value* const> fixed) {
  if (fixed[1] == nullptr || !fixed[1]->IsPresent()) return nullptr;
  Arena pool;
  const std::string_view pattern = TextOf(*fixed[1], pool);
  if (!ForEachPart(
          pattern, [](char) {}, [](char) { return true; })) {
    RefuseContent(element, "\"" + std::string(pattern) +
                               "\" is not a date pattern: the letters after % are " +
                               std::string(kDateLetters) + std::string(kClockLetters));
  }
  return nullptr;
}

Value FormatDatetime(const Arguments& in) {
  const auto moment = DayAndSecondOf(in[0]);
  // The years that the calendar can represent.
  constexpr std::int64_t kMostDays = 11000000;
  if (!moment || (moment->day && std::abs(*moment->day) > kMostDays)) return Value::Invalid();
  std::string result;
  const bool done = ForEachPart(
      TextOf(in[1], in.arena), [&](char c) { result += c; },
      [&](char letter) {
        if (Holds(kClockLetters, letter)) {
          result += ClockPart(letter, moment->second);
          return true;
        }
        if (!moment->day) return false;  // a time of day has no date
        result += DatePart(letter, *moment->day);
        return true;
      });
  if (!done || !in.arena.HasRoomFor(result.size())) return Value::Invalid();
  return Value::Text(in.arena.Copy(result));
}

constexpr std::array kFormatsFunctions = {
    Function{"formatNumber", 2, 2, Returns::kString, Accepts::kPresent, FormatNumberBy,
             PrepareNumberPattern},
    Function{"formatDatetime", 2, 2, Returns::kString, Accepts::kPresent, FormatDatetime,
             CheckDatePattern},
};

}  // namespace

std::span<const Function> FormatFunctions() {
  return kFormatsFunctions;
}

}  // namespace svmscore::transform
