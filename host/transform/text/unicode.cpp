#include "host/transform/text/unicode.h"

#include <cstdint>

#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace svmscore::transform {
namespace {

// Reads the character at `at` and moves past it; negative for a byte that is not UTF-8.
UChar32 Next(std::string_view text, std::size_t& at) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  const std::size_t start = at;
  UChar32 character = 0;
  U8_NEXT(bytes, at, text.size(), character);
  if (character < 0) at = start + 1;
  return character;
}

std::string Map(std::string_view text, UChar32 (*map)(UChar32)) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t start = at;
    const UChar32 character = Next(text, at);
    if (character < 0) {
      result += text[start];
      continue;
    }
    std::uint8_t bytes[U8_MAX_LENGTH];
    int size = 0;
    U8_APPEND_UNSAFE(bytes, size, map(character));
    result.append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
  }
  return result;
}

}  // namespace

std::size_t CharacterCount(std::string_view text) {
  std::size_t count = 0;
  for (std::size_t at = 0; at < text.size(); ++count) Next(text, at);
  return count;
}

std::string_view Characters(std::string_view text, std::size_t first, std::size_t count) {
  std::size_t at = 0;
  for (; first > 0 && at < text.size(); --first) Next(text, at);
  const std::size_t begin = at;
  for (; count > 0 && at < text.size(); --count) Next(text, at);
  return text.substr(begin, at - begin);
}

std::string UpperCase(std::string_view text) {
  return Map(text, u_toupper);
}
std::string LowerCase(std::string_view text) {
  return Map(text, u_tolower);
}

std::u32string CodePoints(std::string_view text) {
  std::u32string points;
  points.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t start = at;
    const UChar32 character = Next(text, at);
    // A stray byte must not equal any character.
    points += static_cast<char32_t>(character < 0 ? 0x110000 + (text[start] & 0xFF) : character);
  }
  return points;
}

bool IsPunctuation(char32_t character) {
  if (character < 0x80) {
    // Signs such as $ and + count too, although Unicode calls them symbols.
    return u_ispunct(static_cast<UChar32>(character)) ||
           std::string_view("$+<=>^`|~").find(static_cast<char>(character)) !=
               std::string_view::npos;
  }
  return character < 0x110000 && u_ispunct(static_cast<UChar32>(character));
}

}  // namespace svmscore::transform
