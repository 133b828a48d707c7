#include "tools/serve/json_scanner.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include <fmt/format.h>

#include "host/text/number_text.h"
#include "host/text/utf8.h"

namespace svmscore::serve {
namespace {

// Names of so few members are compared with each other.
constexpr std::size_t kFewKeys = 8;

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsBlank(char c) {
  return c == ' ' || c == '\n' || c == '\r' || c == '\t';
}

// A byte of a string that needs no second look.
bool IsPlain(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= 0x20 && byte < 0x80 && c != '"' && c != '\\';
}

char* PutUtf8(char* to, std::uint32_t character) {
  const auto put = [&to](std::uint32_t byte) { *to++ = static_cast<char>(byte); };
  if (character < 0x80) {
    put(character);
  } else if (character < 0x800) {
    put(0xC0 | (character >> 6U));
    put(0x80 | (character & 0x3FU));
  } else if (character < 0x10000) {
    put(0xE0 | (character >> 12U));
    put(0x80 | ((character >> 6U) & 0x3FU));
    put(0x80 | (character & 0x3FU));
  } else {
    put(0xF0 | (character >> 18U));
    put(0x80 | ((character >> 12U) & 0x3FU));
    put(0x80 | ((character >> 6U) & 0x3FU));
    put(0x80 | (character & 0x3FU));
  }
  return to;
}

}  // namespace

void JsonScanner::Fail(const std::string& what) const {
  throw JsonError(fmt::format("the body is not the JSON that is wanted: {} (byte {})", what,
                              next_ - begin_ + 1));
}

void JsonScanner::Expected(const std::string& what) const {
  if (next_ == end_) Fail(fmt::format("it ends where {} is expected", what));
  Fail(fmt::format("{} is expected", what));
}

void JsonScanner::SkipBlanks() {
  while (next_ != end_ && IsBlank(*next_)) ++next_;
}

JsonKind JsonScanner::Peek() {
  SkipBlanks();
  if (next_ == end_) Expected("a value");
  switch (*next_) {
    case '{':
      return JsonKind::kObject;
    case '[':
      return JsonKind::kArray;
    case '"':
      return JsonKind::kString;
    case 't':
      return JsonKind::kTrue;
    case 'f':
      return JsonKind::kFalse;
    case 'n':
      return JsonKind::kNull;
    case 'N':
      if (!takes_nan_) Fail("NaN is no value of JSON; write null where a value is missing");
      return JsonKind::kNan;
    default:
      if (*next_ != '-' && !IsDigit(*next_)) Expected("a value");
      return JsonKind::kNumber;
  }
}

void JsonScanner::Enter(char bracket, bool is_object) {
  SkipBlanks();
  if (next_ == end_ || *next_ != bracket) Expected(is_object ? "an object" : "an array");
  if (levels_.size() == kMostDepth) {
    Fail(fmt::format("values are nested more than {} deep", kMostDepth));
  }
  ++next_;
  levels_.push_back({is_object, true, keys_.size()});
}

void JsonScanner::EnterObject() {
  Enter('{', true);
}

void JsonScanner::EnterArray() {
  Enter('[', false);
}

void JsonScanner::Leave() {
  ++next_;
  const Level& level = levels_.back();
  if (level.is_object) {
    CheckKeys(level.first_key);
    keys_.resize(level.first_key);
  }
  levels_.pop_back();
}

void JsonScanner::CheckKeys(std::size_t first) const {
  const auto begin = keys_.begin() + static_cast<std::ptrdiff_t>(first);
  const std::size_t count = keys_.size() - first;
  const auto refuse = [this](std::string_view key) {
    Fail(fmt::format("the object that ends here has the member \"{}\" twice", key));
  };
  if (count <= kFewKeys) {
    for (auto key = begin; key != keys_.end(); ++key) {
      if (std::find(key + 1, keys_.end(), *key) != keys_.end()) refuse(*key);
    }
    return;
  }
  std::vector<std::string_view> sorted(begin, keys_.end());
  std::sort(sorted.begin(), sorted.end());
  const auto twice = std::adjacent_find(sorted.begin(), sorted.end());
  if (twice != sorted.end()) refuse(*twice);
}

bool JsonScanner::NextKey(std::string_view& key) {
  SkipBlanks();
  if (next_ != end_ && *next_ == '}') {
    Leave();
    return false;
  }
  if (!levels_.back().is_first) {
    if (next_ == end_ || *next_ != ',') Expected("a comma or the end of the object");
    ++next_;
    SkipBlanks();
  }
  levels_.back().is_first = false;
  if (next_ == end_ || *next_ != '"') Expected("the name of a member");
  key = String();
  keys_.push_back(key);
  SkipBlanks();
  if (next_ == end_ || *next_ != ':') Expected("a colon");
  ++next_;
  return true;
}

bool JsonScanner::NextKeyIs(std::string_view quoted) {
  char* at = next_;
  const auto skip_blanks = [this, &at] {
    while (at != end_ && IsBlank(*at)) ++at;
  };
  skip_blanks();
  if (!levels_.back().is_first) {
    if (at == end_ || *at != ',') return false;
    ++at;
    skip_blanks();
  }
  if (static_cast<std::size_t>(end_ - at) <= quoted.size()) return false;
  if (std::memcmp(at, quoted.data(), quoted.size()) != 0) return false;
  at += quoted.size();
  skip_blanks();
  if (at == end_ || *at != ':') return false;
  next_ = at + 1;
  levels_.back().is_first = false;
  return true;
}

bool JsonScanner::NextElement() {
  SkipBlanks();
  if (next_ != end_ && *next_ == ']') {
    Leave();
    return false;
  }
  if (!levels_.back().is_first) {
    if (next_ == end_ || *next_ != ',') Expected("a comma or the end of the array");
    ++next_;
  }
  levels_.back().is_first = false;
  return true;
}

std::string_view JsonScanner::String() {
  SkipBlanks();
  if (next_ == end_ || *next_ != '"') Expected("a text");
  char* const text = ++next_;
  char* to = text;
  const char* from = text;
  while (true) {
    const char* plain = from;
    while (from != end_ && IsPlain(*from)) ++from;
    const auto count = static_cast<std::size_t>(from - plain);
    if (to != plain) std::memmove(to, plain, count);
    to += count;
    next_ = begin_ + (from - begin_);
    if (from == end_) Fail("it ends inside a text");
    if (*from == '"') break;
    if (*from == '\\') {
      to = Unescape(from, to);
      continue;
    }
    if (static_cast<unsigned char>(*from) < 0x20) Fail("a text holds a control character");
    const std::size_t size = Utf8SequenceSize({from, static_cast<std::size_t>(end_ - from)});
    if (size == 0) Fail("a text is not valid UTF-8");
    std::memmove(to, from, size);
    to += size;
    from += size;
  }
  ++next_;
  return {text, static_cast<std::size_t>(to - text)};
}

unsigned JsonScanner::HexAt(const char* at) const {
  if (end_ - at < 4) Fail("it ends inside a text");
  unsigned value = 0;
  for (int i = 0; i < 4; ++i) {
    const char c = at[i];
    unsigned digit = 16;
    if (IsDigit(c)) digit = static_cast<unsigned>(c - '0');
    if (c >= 'a' && c <= 'f') digit = static_cast<unsigned>(c - 'a') + 10;
    if (c >= 'A' && c <= 'F') digit = static_cast<unsigned>(c - 'A') + 10;
    if (digit == 16) Fail("\\u is not followed by four hexadecimal digits");
    value = value * 16 + digit;
  }
  return value;
}

// The escape at `from`, which is never shorter than what it stands for.
char* JsonScanner::Unescape(const char*& from, char* to) {
  if (end_ - from < 2) Fail("it ends inside a text");
  const char c = from[1];
  from += 2;
  if (c != 'u') {
    constexpr std::string_view kEscapes = "\"\\/bfnrt";
    constexpr std::string_view kMeanings = "\"\\/\b\f\n\r\t";
    const std::size_t which = kEscapes.find(c);
    if (which == std::string_view::npos) Fail("a text holds an unknown escape");
    *to++ = kMeanings[which];
    return to;
  }
  std::uint32_t character = HexAt(from);
  from += 4;
  if (character >= 0xDC00 && character < 0xE000) Fail("a text holds an unpaired surrogate");
  if (character >= 0xD800 && character < 0xDC00) {
    const bool paired = end_ - from >= 6 && from[0] == '\\' && from[1] == 'u';
    const std::uint32_t low = paired ? HexAt(from + 2) : 0;
    if (low < 0xDC00 || low >= 0xE000) Fail("a text holds an unpaired surrogate");
    from += 6;
    character = 0x10000 + ((character - 0xD800) << 10U) + (low - 0xDC00);
  }
  return PutUtf8(to, character);
}

std::string_view JsonScanner::Number() {
  SkipBlanks();
  const char* const begin = next_;
  const auto at = [this](char c) { return next_ != end_ && *next_ == c; };
  const auto digits = [this] {
    if (next_ == end_ || !IsDigit(*next_)) Expected("a digit");
    while (next_ != end_ && IsDigit(*next_)) ++next_;
  };
  if (at('-')) ++next_;
  if (at('0')) {
    ++next_;
    if (next_ != end_ && IsDigit(*next_)) Fail("a number begins with a 0 too many");
  } else {
    if (next_ == end_ || !IsDigit(*next_)) Expected("a number");
    digits();
  }
  if (at('.')) {
    ++next_;
    digits();
  }
  if (at('e') || at('E')) {
    ++next_;
    if (at('+') || at('-')) ++next_;
    digits();
  }
  return {begin, static_cast<std::size_t>(next_ - begin)};
}

std::string_view JsonScanner::Number(double& value) {
  SkipBlanks();
  const char* const begin = next_;
  // A reader of numbers takes more than JSON does: digits on both sides of a point, and no 0 before
  // other digits, are left to check.
  const char* const stop = ReadDecimal(begin, end_, value);
  if (stop != nullptr) {
    const char* const digits = *begin == '-' ? begin + 1 : begin;
    const auto* point =
        static_cast<const char*>(std::memchr(digits, '.', static_cast<std::size_t>(stop - digits)));
    const bool whole =
        IsDigit(*digits) && (*digits != '0' || stop - digits == 1 || !IsDigit(digits[1]));
    if (whole && (point == nullptr || (stop - point > 1 && IsDigit(point[1])))) {
      next_ += stop - begin;
      return {begin, static_cast<std::size_t>(stop - begin)};
    }
  }
  const std::string_view spelling = Number();
  value = ParseNumber(spelling).value_or(std::numeric_limits<double>::quiet_NaN());
  return spelling;
}

void JsonScanner::Word(std::string_view word) {
  SkipBlanks();
  if (static_cast<std::size_t>(end_ - next_) < word.size() ||
      std::string_view(next_, word.size()) != word) {
    Expected(std::string(word));
  }
  next_ += word.size();
}

bool JsonScanner::Bool() {
  const bool truth = NextIs(JsonKind::kTrue);
  Word(truth ? "true" : "false");
  return truth;
}

void JsonScanner::Null() {
  Word("null");
}

void JsonScanner::Nan() {
  Word("NaN");
}

void JsonScanner::Skip() {
  const std::size_t outside = levels_.size();
  std::string_view key;
  double number = 0.0;
  do {
    switch (Peek()) {
      case JsonKind::kObject:
        EnterObject();
        break;
      case JsonKind::kArray:
        EnterArray();
        break;
      case JsonKind::kString:
        String();
        break;
      case JsonKind::kNumber:
        Number(number);
        break;
      case JsonKind::kTrue:
      case JsonKind::kFalse:
        Bool();
        break;
      case JsonKind::kNull:
        Null();
        break;
      case JsonKind::kNan:
        Nan();
        break;
    }
    while (levels_.size() > outside && !(levels_.back().is_object ? NextKey(key) : NextElement())) {
    }
  } while (levels_.size() > outside);
}

void JsonScanner::Finish() {
  SkipBlanks();
  if (next_ != end_) Fail("something follows the value");
}

}  // namespace svmscore::serve
