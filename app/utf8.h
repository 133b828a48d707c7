// Telling UTF-8 from other bytes.
#ifndef APP_UTF8_H_
#define APP_UTF8_H_

#include <cstddef>
#include <string_view>

namespace svmscore::app {

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

}  // namespace svmscore::app

#endif  // APP_UTF8_H_
