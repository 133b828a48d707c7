#include "tools/convert/document_text.h"

#include <array>
#include <cstdint>

#include "host/text/number_text.h"
#include "host/text/utf8.h"

namespace svmscore::tools {

DocumentText& DocumentText::Element(std::string_view name) {
  text_ += '\n';
  text_.append(open_.size(), ' ');
  text_ += '<';
  text_ += name;
  name_ = name;
  return *this;
}

DocumentText& DocumentText::Attribute(std::string_view name, std::string_view value) {
  text_ += ' ';
  text_ += name;
  text_ += "=\"";
  for (const char c : value) {
    switch (c) {
      case '&':
        text_ += "&amp;";
        break;
      case '<':
        text_ += "&lt;";
        break;
      case '"':
        text_ += "&quot;";
        break;
      case '\t':  // readers make blanks of these three
      case '\n':
      case '\r':
        text_ += "&#" + std::to_string(static_cast<int>(c)) + ';';
        break;
      default:
        text_ += c;
    }
  }
  text_ += '"';
  return *this;
}

DocumentText& DocumentText::NumberAttribute(std::string_view name, double number) {
  text_ += ' ';
  text_ += name;
  text_ += "=\"";
  AddNumber(number);
  text_ += '"';
  return *this;
}

void DocumentText::AddNumber(double number) {
  std::array<char, kNumberTextSize> buffer;
  text_.append(buffer.data(), FormatNumber(buffer.data(), number));
}

void DocumentText::Open() {
  text_ += '>';
  open_.push_back(name_);
}

void DocumentText::End() {
  name_ = open_.back();
  open_.pop_back();
  text_ += '\n';
  text_.append(open_.size(), ' ');
  text_ += "</";
  text_ += name_;
  text_ += '>';
}

std::string DocumentText::Finish() {
  text_ += '\n';
  return std::move(text_);
}

bool IsXmlText(std::string_view text) {
  while (!text.empty()) {
    const std::size_t size = Utf8SequenceSize(text);
    if (size == 0) return false;
    const std::uint32_t character = Utf8Character(text.substr(0, size));
    const bool control =
        character < 0x20 && character != '\t' && character != '\n' && character != '\r';
    if (control || character == 0xFFFE || character == 0xFFFF) return false;
    text.remove_prefix(size);
  }
  return true;
}

}  // namespace svmscore::tools
