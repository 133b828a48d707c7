#include "host/reasons/text_hints.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <string>

#include "host/text/number_text.h"

namespace svmscore::reasons {
namespace {

// No number that somebody wrote is longer.
constexpr std::size_t kLongest = 64;

constexpr std::array<std::string_view, 6> kBlank = {" ", "\t", "\r", "\n", "\u00A0", "\u202F"};
constexpr std::array<std::string_view, 2> kApostrophes = {"'", "\u2019"};
constexpr std::array<std::string_view, 14> kMissingWords = {
    "null", "none", "nil", "nan", "na",      "n/a",   "#n/a",
    "<na>", "-",    "--",  "?",   "missing", "empty", "(null)"};

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
  if (IsMissingWord(text)) return Hint::kMissingWord;
  text = WithoutBlanks(text);
  if (text.empty()) return Hint::kMissingWord;
  if (text.back() == '%') {
    return IsSomeNumber(WithoutBlanks(text.substr(0, text.size() - 1))) ? Hint::kPercent
                                                                        : Hint::kNone;
  }
  const std::string_view apostrophe = PrefixAmong(kApostrophes, text);
  if (!apostrophe.empty() && IsSomeNumber(text.substr(apostrophe.size()))) return Hint::kApostrophe;
  if (const auto hint = HintOfGroups(text)) return *hint;
  if (HasDecimalComma(text)) return Hint::kDecimalComma;
  return HasUnit(text) ? Hint::kUnit : Hint::kNone;
}

bool IsMissingWord(std::string_view text) {
  text = WithoutBlanks(text);
  return std::any_of(kMissingWords.begin(), kMissingWords.end(), [text](std::string_view word) {
    return std::equal(text.begin(), text.end(), word.begin(), word.end(), [](char a, char b) {
      return (a >= 'A' && a <= 'Z' ? static_cast<char>(a - 'A' + 'a') : a) == b;
    });
  });
}

}  // namespace svmscore::reasons
