#include "host/xml/wide_text.h"

#include <array>
#include <cstdint>
#include <cstring>

#include "host/xml/array_numbers.h"
#include "host/xml/transcoder.h"

namespace svmscore {

using xercesc::DOMNode;

namespace {

// Whether four units in a row are digits: the high twelve bits are those of '0', also after adding
// 6.
bool AreFourDigits(const XMLCh* at) {
  constexpr std::uint64_t kHigh = 0xFFF0FFF0FFF0FFF0, kZeros = 0x0030003000300030;
  std::uint64_t units = 0;
  std::memcpy(&units, at, sizeof units);
  return (units & kHigh) == kZeros && ((units + 0x0006000600060006) & kHigh) == kZeros;
}

const XMLCh* SkipDigits(const XMLCh* at, const XMLCh* end) {
  while (end - at >= 4 && AreFourDigits(at)) at += 4;
  while (at != end && static_cast<unsigned>(*at - u'0') < 10) ++at;
  return at;
}

// The end of the decimal number that begins at `at`; null where none does. Sets `large` where the
// number may be out of range.
const XMLCh* NumberEnd(const XMLCh* at, const XMLCh* end, bool& large) {
  const XMLCh* const begin = at;
  if (at != end && (*at == u'+' || *at == u'-')) ++at;
  const XMLCh* point = SkipDigits(at, end);
  bool has_digits = point != at;
  at = point;
  if (at != end && *at == u'.') {
    at = SkipDigits(point + 1, end);
    has_digits = has_digits || at != point + 1;
  }
  if (!has_digits) return nullptr;
  if (at - begin >= 300) large = true;
  if (at == end || (*at != u'e' && *at != u'E')) return at;
  ++at;
  if (at != end && (*at == u'+' || *at == u'-')) ++at;
  const XMLCh* exponent = SkipDigits(at, end);
  if (exponent - at >= 3) large = true;
  return exponent == at ? nullptr : exponent;
}

bool IsSpecialNumber(WideView word) {
  return word == u"INF" || word == u"-INF" || word == u"NaN";
}

// The attribute's value, read from its text node: the library's own getValue looks for its classes
// by name, and takes many times as long.
WideView ValueOf(const xercesc::DOMAttr* attribute) {
  const DOMNode* text = attribute->getFirstChild();
  if (text == nullptr) return u"";
  const bool only = text->getNodeType() == DOMNode::TEXT_NODE && text->getNextSibling() == nullptr;
  if (!only) return attribute->getValue();
  const auto* data = static_cast<const xercesc::DOMText*>(text);
  return {data->getData(), data->getLength()};
}

}  // namespace

WideView AttributeView(const Element* element, std::string_view name) {
  if (element == nullptr) return {};
  std::array<XMLCh, 64> wide;
  const xercesc::DOMAttr* attribute = nullptr;
  if (name.size() < wide.size()) {
    std::size_t size = 0;
    for (const char c : name) wide[size++] = static_cast<XMLCh>(c);
    wide[size] = 0;
    attribute = element->getAttributeNode(wide.data());
  } else {
    attribute = element->getAttributeNode(ToUtf16(std::string(name)).c_str());
  }
  return attribute == nullptr ? WideView() : ValueOf(attribute);
}

WideView TextView(const Element* element, WideText& joined) {
  WideView only;
  std::size_t pieces = 0;
  joined.clear();
  for (const DOMNode* child = element->getFirstChild(); child != nullptr;
       child = child->getNextSibling()) {
    const auto type = child->getNodeType();
    if (type != DOMNode::TEXT_NODE && type != DOMNode::CDATA_SECTION_NODE) continue;
    const auto* data = static_cast<const xercesc::DOMText*>(child);
    const WideView piece(data->getData(), data->getLength());
    if (++pieces == 2) joined.assign(only);
    if (pieces >= 2) joined.append(piece);
    only = piece;
  }
  if (pieces == 0) {
    const std::string numbers = NumberText(element);
    joined.assign(numbers.begin(), numbers.end());
    if (!joined.empty()) return joined;
  }
  return pieces >= 2 ? WideView(joined) : only;
}

bool IsBlank(XMLCh c) {
  return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n';
}

WideView NextWord(WideView& text) {
  std::size_t start = 0;
  while (start < text.size() && IsBlank(text[start])) ++start;
  std::size_t end = start;
  while (end < text.size() && !IsBlank(text[end])) ++end;
  const WideView word = text.substr(start, end - start);
  text.remove_prefix(end);
  return word;
}

bool IsNumber(WideView word) {
  const XMLCh* const end = word.data() + word.size();
  bool large = false;
  return NumberEnd(word.data(), end, large) == end || IsSpecialNumber(word);
}

std::optional<std::size_t> CountNumbers(WideView text, WideView& offender, bool& large) {
  const XMLCh* at = text.data();
  const XMLCh* const end = at + text.size();
  for (std::size_t count = 0;; ++count) {
    while (at != end && IsBlank(*at)) ++at;
    if (at == end) return count;
    const XMLCh* after = NumberEnd(at, end, large);
    if (after == nullptr || (after != end && !IsBlank(*after))) {
      WideView rest(at, static_cast<std::size_t>(end - at));
      offender = NextWord(rest);
      if (!IsSpecialNumber(offender)) return std::nullopt;
      large = true;
      after = at + offender.size();
    }
    at = after;
  }
}

std::string Narrow(WideView text) {
  return text.empty() ? std::string() : ToUtf8(text.data(), text.size());
}

}  // namespace svmscore
