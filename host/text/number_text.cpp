#include "host/text/number_text.h"

#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>

#include <fast_float/fast_float.h>
#include <locale.h>

#include "host/text/blank.h"

namespace svmscore {
namespace {

std::string_view Trim(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

bool StartsNumber(char c) {
  return (c >= '0' && c <= '9') || c == '.';
}

// The "C" locale, whatever the process has set. Never freed: it lives as long as the process.
locale_t PlainLocale() {
  static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
  return locale;
}

}  // namespace

std::optional<double> ParseNumber(std::string_view text) {
  text = Trim(text);
  if (text == "INF") return std::numeric_limits<double>::infinity();
  if (text == "-INF") return -std::numeric_limits<double>::infinity();
  if (text == "NaN") return std::numeric_limits<double>::quiet_NaN();
  if (!text.empty() && text.front() == '+') {
    text.remove_prefix(1);
    if (text.empty() || text.front() == '-') return std::nullopt;
  }
  // The library also accepts "inf" and "nan"; the grammar does not.
  const std::size_t first = !text.empty() && text.front() == '-' ? 1 : 0;
  if (first >= text.size() || !StartsNumber(text[first])) return std::nullopt;
  double value = 0.0;
  const char* end = text.data() + text.size();
  const auto result = fast_float::from_chars(text.data(), end, value);
  if (result.ptr != end || result.ec == std::errc::invalid_argument) return std::nullopt;
  return value;
}

std::optional<std::int64_t> ParseInteger(std::string_view text) {
  text = Trim(text);
  std::string_view digits = text;
  if (!digits.empty() && digits.front() == '+') digits.remove_prefix(1);
  std::int64_t value = 0;
  const char* end = digits.data() + digits.size();
  const auto result = std::from_chars(digits.data(), end, value);
  const bool second_sign = digits.size() < text.size() && !digits.empty() && digits[0] == '-';
  if (result.ec == std::errc() && result.ptr == end && !second_sign) return value;
  const std::optional<double> number = ParseNumber(text);
  // 2^63: the first double beyond the range.
  if (!number || *number != std::trunc(*number) || std::fabs(*number) >= 0x1p63) {
    return std::nullopt;
  }
  return static_cast<std::int64_t>(*number);
}

const char* ReadDecimal(const char* begin, const char* end, double& value) {
  const char* first = begin != end && *begin == '-' ? begin + 1 : begin;
  if (first == end || !StartsNumber(*first)) return nullptr;
  const auto result = fast_float::from_chars(begin, end, value);
  return result.ec == std::errc() ? result.ptr : nullptr;
}

double NumberPrefix(const char* text) {
  // fast_float gives strtod's bits for plain decimal numbers, many times faster; all else (white
  // space, a plus sign, hexadecimal, words, trailing text) goes to strtod itself.
  const char* end = text + std::char_traits<char>::length(text);
  double value = 0.0;
  if (ReadDecimal(text, end, value) == end && text != end) return value;
  return strtod_l(text, nullptr, PlainLocale());
}

int TruncateToInt(double value) {
  constexpr double kLowest = std::numeric_limits<int>::min();
  constexpr double kHighest = std::numeric_limits<int>::max();
  if (std::isnan(value)) return 0;
  if (value <= kLowest) return std::numeric_limits<int>::min();
  if (value >= kHighest) return std::numeric_limits<int>::max();
  return static_cast<int>(value);
}

char* FormatNumber(char* buffer, double value) {
  if (std::isfinite(value)) {
    return std::to_chars(buffer, buffer + kNumberTextSize, value).ptr;
  }
  const std::string_view word = std::isnan(value) ? "NaN" : value > 0 ? "INF" : "-INF";
  return buffer + word.copy(buffer, word.size());
}

std::string FormatNumber(double value) {
  char buffer[kNumberTextSize];
  return {buffer, FormatNumber(buffer, value)};
}

}  // namespace svmscore
