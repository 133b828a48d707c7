#include "tools/base/document_bytes.h"

#include <cstdint>

#include <fmt/format.h>

#include "host/text/utf8.h"

namespace svmscore::tools {

ByteWidth WidthOf(std::string_view document) {
  const auto byte = [document](std::size_t i) {
    return i < document.size() ? static_cast<unsigned char>(document[i]) : 0x100U;
  };
  if (byte(0) == 0xFF && byte(1) == 0xFE) {
    return byte(2) == 0 && byte(3) == 0 ? ByteWidth::kUnknown : ByteWidth::kTwoLowFirst;
  }
  if (byte(0) == 0xFE && byte(1) == 0xFF) return ByteWidth::kTwoHighFirst;
  if (byte(0) == '<' && byte(1) == 0 && byte(2) != 0) return ByteWidth::kTwoLowFirst;
  if (byte(0) == 0 && byte(1) == '<') return ByteWidth::kTwoHighFirst;
  return byte(0) == 0 || byte(1) == 0 || byte(0) == 0x4C ? ByteWidth::kUnknown : ByteWidth::kOne;
}

std::size_t MarkSize(std::string_view document) {
  if (document.starts_with("\xEF\xBB\xBF")) return 3;
  return document.starts_with("\xFF\xFE") || document.starts_with("\xFE\xFF") ? 2 : 0;
}

std::string Widen(std::string_view ascii, ByteWidth width) {
  if (width == ByteWidth::kOne) return std::string(ascii);
  std::string wide;
  for (const char c : ascii) {
    if (width == ByteWidth::kTwoHighFirst) wide += '\0';
    wide += c;
    if (width == ByteWidth::kTwoLowFirst) wide += '\0';
  }
  return wide;
}

std::size_t FindBefore(std::string_view document, char ascii, std::size_t end, ByteWidth width) {
  const std::string wanted = Widen(std::string_view(&ascii, 1), width);
  while (end >= wanted.size()) {
    end -= wanted.size();
    if (document.substr(end, wanted.size()) == wanted) return end;
  }
  return std::string_view::npos;
}

std::optional<std::string> EscapeToAscii(std::string_view text) {
  std::string escaped;
  while (!text.empty()) {
    const std::size_t size = Utf8SequenceSize(text);
    const std::uint32_t character = size == 0 ? 0 : Utf8Character(text.substr(0, size));
    const bool blank = character == '\t' || character == '\n' || character == '\r';
    if (size == 0 || (character < 0x20 && !blank) || character == 0xFFFE || character == 0xFFFF) {
      return std::nullopt;
    }
    const bool plain = character >= 0x20 && character < 0x7F &&
                       std::string_view("<>&\"").find(text.front()) == std::string_view::npos;
    if (plain) {
      escaped += text.front();
    } else {
      escaped += fmt::format("&#x{:X};", character);
    }
    text.remove_prefix(size);
  }
  return escaped;
}

}  // namespace svmscore::tools
