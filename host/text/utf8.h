// Recognising and decoding UTF-8.
#ifndef HOST_TEXT_UTF8_H_
#define HOST_TEXT_UTF8_H_

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace svmscore {

// The number of bytes of the character that `text` begins with; 0 where these bytes are not UTF-8
// (overlong forms and surrogates included). REQUIRES: text is not empty.
inline std::size_t Utf8SequenceSize(std::string_view text) {
  const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned lead = byte(0);
  if (lead < 0x80) return 1;
  const std::size_t size = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < size) return 0;
  for (std::size_t i = 1; i < size; ++i) {
    if ((byte(i) & 0xC0U) != 0x80) return 0;
  }
  const unsigned second = byte(1);
  const bool wrong = (lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) ||
                     (lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second > 0x8F);
  return wrong ? 0 : size;
}

inline bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t size = Utf8SequenceSize(text);
    if (size == 0) return false;
    text.remove_prefix(size);
  }
  return true;
}

// The character that `sequence` is.
// REQUIRES: Utf8SequenceSize(sequence) == sequence.size().
inline std::uint32_t Utf8Character(std::string_view sequence) {
  const auto lead = static_cast<unsigned char>(sequence[0]);
  const std::size_t size = sequence.size();
  std::uint32_t character = size == 1 ? lead : lead & (0xFFU >> (size + 1));
  for (std::size_t i = 1; i < size; ++i) {
    character = (character << 6U) | (static_cast<unsigned char>(sequence[i]) & 0x3FU);
  }
  return character;
}

}  // namespace svmscore

#endif  // HOST_TEXT_UTF8_H_
