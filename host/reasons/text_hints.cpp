#include "host/reasons/text_hints.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <string>

#include "host/text/look_alikes.h"
#include "host/text/number_text.h"
#include "host/text/utf8.h"

namespace svmscore::reasons {
namespace {

// No number that somebody wrote is longer.
constexpr std::size_t kLongest = 64;

constexpr std::array<std::string_view, 6> kBlank = {" ", "\t", "\r", "\n", "\u00A0", "\u202F"};
constexpr std::array<std::string_view, 2> kApostrophes = {"'", "\u2019"};
constexpr std::array<std::string_view, 21> kMissingWords = {
    "null", "none", "nil", "nan", "na", "n/a", "n.a.",    "k.a.",  "#n/a",      "#nv",   "#null!",
    "<na>", "-",    "--",  "?",   ".",  "\\n", "missing", "empty", "undefined", "(null)"};

constexpr std::array<std::string_view, 2> kTruthValues = {"true", "false"};
constexpr std::array<std::string_view, 8> kFormulaErrors = {
    "#ref!", "#value!", "#name?", "#num!", "#div/0!", "#bezug!", "#wert!", "#zahl!"};

// Regardless of upper and lower case; the words are in lower case.
template <std::size_t kCount>
bool IsAmong(const std::array<std::string_view, kCount>& words, std::string_view text) {
  return std::any_of(words.begin(), words.end(), [text](std::string_view word) {
    return std::equal(text.begin(), text.end(), word.begin(), word.end(), [](char a, char b) {
      return (a >= 'A' && a <= 'Z' ? static_cast<char>(a - 'A' + 'a') : a) == b;
    });
  });
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsNumber(std::string_view text) {
  return ParseNumber(text).has_value();
}

template <std::size_t kCount>
std::string_view PrefixAmong(const std::array<std::string_view, kCount>& wanted,
                             std::string_view text) {
  const auto* found = std::find_if(wanted.begin(), wanted.end(),
                                   [text](std::string_view one) { return text.starts_with(one); });
  return found == wanted.end() ? std::string_view() : *found;
}

// The separator between groups of three digits at the beginning of `digits`, which it leaves
// without them; empty where there are no such groups.
std::string_view TakeGroups(std::string_view& digits, int& groups) {
  constexpr std::array<std::string_view, 7> kSeparators = {",", ".",      " ",     "'",
                                                           "_", "\u00A0", "\u202F"};
  std::size_t first = 0;
  while (first < digits.size() && IsDigit(digits[first])) ++first;
  if (first == 0 || first > 3) return {};
  std::string_view rest = digits.substr(first);
  std::string_view separator = PrefixAmong(kSeparators, rest);
  if (separator.empty()) separator = PrefixAmong(kApostrophes, rest);
  if (separator.empty()) return {};
  groups = 0;
  while (rest.starts_with(separator)) {
    const std::string_view group = rest.substr(separator.size(), 3);
    if (group.size() != 3 || !std::all_of(group.begin(), group.end(), IsDigit)) break;
    rest.remove_prefix(separator.size() + 3);
    ++groups;
  }
  if (groups == 0) return {};
  digits = rest;
  return separator;
}

std::optional<Hint> HintOfGroups(std::string_view text) {
  if (!text.empty() && (text[0] == '-' || text[0] == '+')) text.remove_prefix(1);
  int groups = 0;
  const std::string_view separator = TakeGroups(text, groups);
  if (separator.empty()) return std::nullopt;
  if (text.empty()) return separator == "," && groups == 1 ? Hint::kUnclearComma : Hint::kThousands;
  const bool mark = (text[0] == '.' || text[0] == ',') && text.substr(0, 1) != separator;
  const bool digits = std::all_of(text.begin() + 1, text.end(), IsDigit);
  return mark && digits ? std::optional(Hint::kThousands) : std::nullopt;
}

bool HasDecimalComma(std::string_view text) {
  if (std::count(text.begin(), text.end(), ',') != 1) return false;
  std::string with_point(text);
  std::replace(with_point.begin(), with_point.end(), ',', '.');
  return IsNumber(with_point);
}

// A number in some spelling.
bool IsSomeNumber(std::string_view text) {
  return IsNumber(text) || HasDecimalComma(text) || HintOfGroups(text);
}

// The text with a hyphen for its minus sign; empty where it has none of another character.
std::string WithHyphen(std::string_view text) {
  constexpr std::array<std::string_view, 7> kMinusSigns = {"\u2212", "\u2010", "\u2011", "\u2012",
                                                           "\u2013", "\uFE63", "\uFF0D"};
  std::string hyphened(text);
  for (const std::string_view sign : kMinusSigns) {
    for (std::size_t at = 0; at = hyphened.find(sign, at), at != std::string::npos; ++at) {
      hyphened.replace(at, sign.size(), "-");
    }
  }
  return hyphened == text ? std::string() : hyphened;
}

// Digits and the name of a month in English or German, or three numbers, as spreadsheets show a
// date: 5-May, 5. Mai, 1.2.2024.
bool IsDate(std::string_view text) {
  constexpr std::string_view kMonths =
      "jan feb mar mrz apr may mai jun jul aug sep oct okt nov dec dez";
  int numbers = 0;
  int months = 0;
  char separator = '\0';
  for (std::size_t at = 0; at < text.size();) {
    const auto is_letter = [](char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0; };
    const std::size_t begin = at;
    if (IsDigit(text[at])) {
      while (at < text.size() && IsDigit(text[at])) ++at;
      if (at - begin > 4) return false;
      ++numbers;
    } else if (is_letter(text[at])) {
      std::string word;
      for (; at < text.size() && is_letter(text[at]); ++at) {
        if (word.size() < 3) word += static_cast<char>(text[at] | 0x20);
      }
      if (word.size() < 3 || kMonths.find(word) == std::string_view::npos) return false;
      ++months;
    } else {
      return false;
    }
    if (at == text.size()) break;
    if (separator == '\0') separator = text[at];
    if (text[at] != separator ||
        std::string_view("-/. ").find(separator) == std::string_view::npos) {
      return false;
    }
    if (++at == text.size()) return false;
    if (separator == '.' && text[at] == ' ' && ++at == text.size()) return false;
  }
  return months == 0 ? numbers == 3 : months == 1 && (numbers == 1 || numbers == 2);
}

bool HasUnit(std::string_view text) {
  std::string_view number = text;
  const auto is_numeric = [](char c) { return IsDigit(c) || c == '.' || c == ',' || c == '-'; };
  while (!number.empty() && !is_numeric(number.front())) {
    if (std::isalpha(static_cast<unsigned char>(number.front())) != 0) return false;
    number.remove_prefix(1);
  }
  while (!number.empty() && !IsDigit(number.back())) number.remove_suffix(1);
  return number.size() < text.size() && IsSomeNumber(number);
}

}  // namespace

std::string_view WithoutBlanks(std::string_view text) {
  for (std::string_view blank; blank = PrefixAmong(kBlank, text), !blank.empty();) {
    text.remove_prefix(blank.size());
  }
  const auto last = [&text] {
    return std::find_if(kBlank.begin(), kBlank.end(),
                        [&text](std::string_view one) { return text.ends_with(one); });
  };
  for (auto blank = last(); blank != kBlank.end(); blank = last()) {
    text.remove_suffix(blank->size());
  }
  return text;
}

Hint HintOfNumber(std::string_view text) {
  if (text.size() > kLongest) return Hint::kNone;
  if (!IsUtf8(text)) return Hint::kEncoding;
  if (IsMissingWord(text)) return Hint::kMissingWord;
  const std::string seen = ReplaceInvisible(text, "");
  const bool hides = seen != text;
  text = WithoutBlanks(text);
  if (text.empty()) return Hint::kMissingWord;
  if (const std::string hyphened = WithHyphen(text); IsSomeNumber(hyphened))
    return Hint::kMinusSign;
  if (text.back() == '%') {
    return IsSomeNumber(WithoutBlanks(text.substr(0, text.size() - 1))) ? Hint::kPercent
                                                                        : Hint::kNone;
  }
  const std::string_view apostrophe = PrefixAmong(kApostrophes, text);
  if (!apostrophe.empty() && IsSomeNumber(text.substr(apostrophe.size()))) return Hint::kApostrophe;
  if (const auto hint = HintOfGroups(text)) return *hint;
  if (hides && IsNumber(seen)) return Hint::kInvisible;
  if (IsAmong(kTruthValues, text)) return Hint::kTruthValue;
  if (IsAmong(kFormulaErrors, text)) return Hint::kFormulaError;
  if (IsDate(text)) return Hint::kDate;
  if (HasDecimalComma(text)) return Hint::kDecimalComma;
  return HasUnit(text) ? Hint::kUnit : Hint::kNone;
}

bool IsMissingWord(std::string_view text) {
  return IsAmong(kMissingWords, WithoutBlanks(text));
}

}  // namespace svmscore::reasons
