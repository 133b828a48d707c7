#include "tools/base/json_string.h"

#include "host/text/utf8.h"

namespace svmscore::tools {

void AppendJsonString(std::string& out, std::string_view text) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  out += '"';
  while (!text.empty()) {
    const std::size_t size = Utf8SequenceSize(text);
    if (size != 1) {
      out += size == 0 ? "\xEF\xBF\xBD" : text.substr(0, size);
      text.remove_prefix(size == 0 ? 1 : size);
      continue;
    }
    const auto c = static_cast<unsigned char>(text.front());
    if (c == '"' || c == '\\') {
      out += '\\';
      out += text.front();
    } else if (c < 0x20) {
      out += "\\u00";
      out += kDigits[c >> 4U];
      out += kDigits[c & 15U];
    } else {
      out += text.front();
    }
    text.remove_prefix(1);
  }
  out += '"';
}

}  // namespace svmscore::tools
