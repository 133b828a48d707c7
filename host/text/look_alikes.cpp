#include "host/text/look_alikes.h"

#include <cstdint>

#include <unicode/bytestream.h>
#include <unicode/normalizer2.h>
#include <unicode/stringpiece.h>

#include "host/text/utf8.h"

namespace svmscore {
namespace {

bool IsInvisible(std::uint32_t character) {
  const auto within = [character](std::uint32_t first, std::uint32_t last) {
    return character >= first && character <= last;
  };
  return character == 0xA0 || character == 0xAD || character == 0x61C || character == 0x180E ||
         within(0x2000, 0x200F) || within(0x2028, 0x202F) || within(0x205F, 0x206F) ||
         character == 0x3000 || character == 0xFEFF;
}

// Calls `put` with each character, as a number and as bytes; a byte that is not UTF-8 is number 0.
template <typename Put>
void ForEachCharacter(std::string_view text, const Put& put) {
  while (!text.empty()) {
    const std::size_t size = Utf8SequenceSize(text);
    const std::string_view bytes = text.substr(0, size == 0 ? 1 : size);
    put(size == 0 ? 0 : Utf8Character(bytes), bytes);
    text.remove_prefix(bytes.size());
  }
}

std::string Composed(std::string_view text, UErrorCode& error) {
  std::string composed;
  const icu::Normalizer2* form = icu::Normalizer2::getNFCInstance(error);
  if (U_FAILURE(error)) return composed;
  icu::StringByteSink<std::string> sink(&composed);
  form->normalizeUTF8(0, {text.data(), static_cast<std::int32_t>(text.size())}, sink, nullptr,
                      error);
  return composed;
}

}  // namespace

std::string SpellInvisible(std::string_view text) {
  std::string spelled;
  ForEachCharacter(text, [&spelled](std::uint32_t character, std::string_view bytes) {
    if (!IsInvisible(character)) {
      spelled += bytes;
      return;
    }
    spelled += "\\u";
    for (int shift = 12; shift >= 0; shift -= 4) {
      spelled += "0123456789ABCDEF"[(character >> static_cast<unsigned>(shift)) & 0xFU];
    }
  });
  return spelled;
}

std::string ReplaceInvisible(std::string_view text, std::string_view replacement) {
  std::string replaced;
  ForEachCharacter(text, [&](std::uint32_t character, std::string_view bytes) {
    replaced += IsInvisible(character) ? replacement : bytes;
  });
  return replaced;
}

bool AreComposedDifferently(std::string_view a, std::string_view b) {
  constexpr std::size_t kLongest = 1U << 16U;
  if (a == b || a.size() > kLongest || b.size() > kLongest || !IsUtf8(a) || !IsUtf8(b))
    return false;
  UErrorCode error = U_ZERO_ERROR;
  const bool same = Composed(a, error) == Composed(b, error);
  return same && U_SUCCESS(error) != 0;
}

}  // namespace svmscore
