#include "host/text/number_text.h"

#include <bit>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <cstring>
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

constexpr std::size_t kWord = sizeof(std::uint64_t);
constexpr std::uint64_t kPowersOfTen[] = {1,      10,      100,      1000,     10000,
                                          100000, 1000000, 10000000, 100000000};
constexpr std::uint64_t kZeros = 0x3030303030303030;  // eight digits 0

// Reads the eight digits of a word, the first one in its lowest byte; false where it has others.
bool ReadEightDigits(std::uint64_t text, std::uint64_t& number) {
  static_assert(std::endian::native == std::endian::little, "the first digit is the lowest byte");
  if ((((text + 0x4646464646464646) | (text - kZeros)) & 0x8080808080808080) != 0) return false;
  text -= kZeros;
  text = text * 10 + (text >> 8);                         // pairs, in every other byte
  const std::uint64_t first = text & 0x000000FF000000FF;  // of each four digits
  const std::uint64_t second = (text >> 16) & 0x000000FF000000FF;
  number = (first * 0x000F424000000064 + second * 0x0000271000000001) >> 32 & 0xFFFFFFFF;
  return true;
}

std::uint64_t WordAt(const char* text) {
  std::uint64_t word = 0;
  std::memcpy(&word, text, kWord);
  return word;
}

// Appends the digits of [begin, end) to a number; false where there is something else. REQUIRES: a
// word before `end` can be read.
bool AppendDigits(const char* begin, const char* end, std::uint64_t& number) {
  std::uint64_t digits = 0;
  for (; end - begin >= std::ptrdiff_t{kWord}; begin += kWord) {
    if (!ReadEightDigits(WordAt(begin), digits)) return false;
    number = number * kPowersOfTen[kWord] + digits;
  }
  const auto left = static_cast<std::size_t>(end - begin);
  const std::uint64_t others = ~std::uint64_t{0} >> (8 * left);
  if (!ReadEightDigits((WordAt(end - kWord) & ~others) | (kZeros & others), digits)) return false;
  number = number * kPowersOfTen[left] + digits;
  return true;
}

const char* AppendDigitsOneByOne(const char* begin, const char* end, std::uint64_t& number) {
  for (; begin != end && *begin >= '0' && *begin <= '9'; ++begin) {
    number = number * 10 + static_cast<std::uint64_t>(*begin - '0');
  }
  return begin;
}

// Reads what nearly all numbers of a table are, and nothing else: an optional minus sign and 1 to
// 19 digits with at most one point. As the library does, but it must find the end first and takes
// digits one by one.
bool ReadPlainDecimal(std::string_view text, double& value) {
  constexpr std::ptrdiff_t kMostDigits = 19;  // that certainly fit in 64 bits
  if (text.empty()) return false;
  // No branches on it: whether a number is negative cannot be foreseen.
  const bool negative = text.front() == '-';
  const char* const begin = text.data() + static_cast<std::size_t>(negative);
  const char* const end = text.data() + text.size();
  std::uint64_t number = 0;
  const char* at = AppendDigitsOneByOne(begin, end, number);
  std::ptrdiff_t digits = at - begin;
  std::ptrdiff_t decimals = 0;
  if (at != end) {
    if (*at++ != '.') return false;
    decimals = end - at;
    digits += decimals;
    if (digits > kMostDigits) return false;
    if (text.size() < kWord) {
      if (AppendDigitsOneByOne(at, end, number) != end) return false;
    } else if (!AppendDigits(at, end, number)) {
      return false;
    }
  }
  if (digits == 0 || digits > kMostDigits) return false;
  // number * 10^-decimals, rounded correctly in every rounding mode.
  using Format = fast_float::binary_format<double>;
  const auto parts = fast_float::compute_float<Format>(-decimals, number);
  if (parts.power2 < 0) return false;  // the library's long way is needed
  value = std::bit_cast<double>(parts.mantissa |
                                static_cast<std::uint64_t>(parts.power2)
                                    << Format::mantissa_explicit_bits() |
                                static_cast<std::uint64_t>(negative) << 63);
  return true;
}

// The "C" locale, whatever the process has set. Never freed: it lives as long as the process.
locale_t PlainLocale() {
  static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
  return locale;
}

// Kept apart, so that plain numbers do not pay for it.
[[gnu::noinline]] std::optional<double> ParseAnyNumber(std::string_view text) {
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

}  // namespace

std::optional<double> ParseNumber(std::string_view text) {
  double value = 0.0;
  return ReadPlainDecimal(text, value) ? value : ParseAnyNumber(text);
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
