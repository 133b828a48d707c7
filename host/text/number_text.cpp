#include "host/text/number_text.h"

#include <emmintrin.h>

#include <algorithm>
#include <array>
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
constexpr std::size_t kVector = sizeof(__m128i);
using Powers = std::array<std::uint64_t, kVector + 1>;

constexpr Powers PowersOfTen() {
  Powers powers = {1};
  for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = powers[i - 1] * 10;
  return powers;
}

constexpr Powers kPowersOfTen = PowersOfTen();

// The last sixteen characters, or of fewer those with zeros before them. REQUIRES: the text has at
// least eight.
__m128i LastCharacters(std::string_view text) {
  static_assert(std::endian::native == std::endian::little, "the first byte is the lowest");
  const char* const end = text.data() + text.size();
  if (text.size() >= kVector) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(end - kVector));
  }
  std::uint64_t first = 0;
  std::uint64_t last = 0;
  std::memcpy(&first, text.data(), kWord);
  std::memcpy(&last, end - kWord, kWord);
  first = first << 8 * (kVector - 1 - text.size()) << 8;  // by up to 64 bits
  return _mm_set_epi64x(static_cast<long long>(last), static_cast<long long>(first));
}

// Appends the last `count` of the characters, at most sixteen, to a number; false where they are
// not all digits.
bool AppendDigits(__m128i characters, std::size_t count, std::uint64_t& number) {
  alignas(kVector) static constexpr std::int8_t kCounted[2 * kVector] = {
      0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,
      -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1};
  const __m128i counted = _mm_loadu_si128(reinterpret_cast<const __m128i*>(kCounted + count));
  const __m128i digits = _mm_and_si128(_mm_sub_epi8(characters, _mm_set1_epi8('0')), counted);
  const __m128i beyond_nine = _mm_subs_epu8(digits, _mm_set1_epi8(9));
  if (_mm_movemask_epi8(_mm_cmpeq_epi8(beyond_nine, _mm_setzero_si128())) != 0xFFFF) return false;
  // Neighbours become numbers of two, four and eight digits.
  const __m128i first_of_two = _mm_and_si128(digits, _mm_set1_epi16(0xFF));
  const __m128i twos =
      _mm_add_epi16(_mm_mullo_epi16(first_of_two, _mm_set1_epi16(10)), _mm_srli_epi16(digits, 8));
  const __m128i fours = _mm_madd_epi16(twos, _mm_set1_epi32(100 | 1 << 16));
  const __m128i packed = _mm_packs_epi32(fours, fours);
  const __m128i eights = _mm_madd_epi16(packed, _mm_set1_epi32(10000 | 1 << 16));
  const auto both = static_cast<std::uint64_t>(_mm_cvtsi128_si64(eights));
  number = number * kPowersOfTen[count] + (both & 0xFFFFFFFF) * kPowersOfTen[kWord] + (both >> 32);
  return true;
}

// Returns where they end.
const char* AppendDigits(const char* begin, const char* end, std::uint64_t& number) {
  for (; begin != end && *begin >= '0' && *begin <= '9'; ++begin) {
    number = number * 10 + static_cast<std::uint64_t>(*begin - '0');
  }
  return begin;
}

// Reads what nearly all numbers of a table are, and nothing else: an optional minus sign and 1 to
// 19 digits with at most one point. The library reads the same, but looks for the end meanwhile,
// and takes many digits one by one.
bool ReadPlainDecimal(std::string_view text, double& value) {
  constexpr std::ptrdiff_t kMostDigits = 19;  // that certainly fit in 64 bits
  if (text.empty()) return false;
  // No branches on it: whether a number is negative cannot be foreseen.
  const bool negative = text.front() == '-';
  const char* const begin = text.data() + static_cast<std::size_t>(negative);
  const char* const end = text.data() + text.size();
  std::uint64_t number = 0;
  const char* at = AppendDigits(begin, end, number);
  std::ptrdiff_t digits = at - begin;
  std::ptrdiff_t decimals = 0;
  if (at != end) {
    if (*at++ != '.') return false;
    decimals = end - at;
    digits += decimals;
    if (digits > kMostDigits) return false;
    if (text.size() < kWord) {
      if (AppendDigits(at, end, number) != end) return false;
    } else {
      const char* const last = at + std::max(decimals - std::ptrdiff_t{kVector}, std::ptrdiff_t{0});
      if (AppendDigits(at, last, number) != last) return false;
      const auto count = static_cast<std::size_t>(end - last);
      if (!AppendDigits(LastCharacters(text), count, number)) return false;
    }
  }
  if (digits == 0 || digits > kMostDigits) return false;
  // The library's own second step: number * 10^-decimals, rounded correctly in every rounding mode.
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
