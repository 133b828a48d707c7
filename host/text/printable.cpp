#include "host/text/printable.h"

#include <cstdint>

#include "host/text/utf8.h"

namespace svmscore {
namespace {

constexpr std::string_view kEllipsis = "\xE2\x80\xA6";

bool IsContinuation(char c) {
  return (static_cast<unsigned char>(c) & 0xC0U) == 0x80;
}

void AppendHex(std::uint32_t number, int digits, std::string& out) {
  for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) {
    out += "0123456789ABCDEF"[(number >> static_cast<unsigned>(shift)) & 0xFU];
  }
}

// `character` must not be written as it is. All such characters fit in 16 bits.
void AppendSpelled(std::uint32_t character, std::string& out) {
  out += '\\';
  if (character == '\n') {
    out += 'n';
  } else if (character == '\r') {
    out += 'r';
  } else if (character == '\t') {
    out += 't';
  } else if (character < 0x80) {
    out += 'x';
    AppendHex(character, 2, out);
  } else {
    out += 'u';
    AppendHex(character, 4, out);
  }
}

bool IsPlain(std::uint32_t character) {
  const auto within = [character](std::uint32_t first, std::uint32_t last) {
    return character >= first && character <= last;
  };
  const bool control = character < 0x20 || within(0x7F, 0x9F);
  const bool direction = character == 0x61C || within(0x200E, 0x200F) || within(0x202A, 0x202E) ||
                         within(0x2066, 0x2069);
  return !control && !direction && !within(0x2028, 0x2029);
}

}  // namespace

std::string Shortened(std::string_view text, std::size_t longest) {
  if (text.size() <= longest) return std::string(text);
  // More of the beginning is kept: the end of a message, the place and the remedy, is shorter.
  std::size_t head = longest / 4 * 3;
  std::size_t tail = text.size() - longest / 4;
  for (int i = 0; i < 3 && head > 0 && IsContinuation(text[head]); ++i) --head;
  for (int i = 0; i < 3 && tail < text.size() && IsContinuation(text[tail]); ++i) ++tail;
  std::string shortened(text.substr(0, head));
  shortened += kEllipsis;
  shortened += text.substr(tail);
  return shortened;
}

std::string Printable(std::string_view text, std::size_t longest) {
  const std::string shortened = Shortened(text, longest);
  std::string printable;
  for (std::string_view rest = shortened; !rest.empty();) {
    const std::size_t size = Utf8SequenceSize(rest);
    if (size == 0) {
      printable += "\\x";
      AppendHex(static_cast<unsigned char>(rest[0]), 2, printable);
      rest.remove_prefix(1);
      continue;
    }
    const std::uint32_t character = Utf8Character(rest.substr(0, size));
    if (IsPlain(character)) {
      printable += rest.substr(0, size);
    } else {
      AppendSpelled(character, printable);
    }
    rest.remove_prefix(size);
  }
  return printable;
}

}  // namespace svmscore
