#include "host/xml/transcoder.h"

#include <algorithm>
#include <new>

#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/TransService.hpp>
#include <xercesc/util/XMLString.hpp>

#include "host/xml/array_numbers.h"
#include "host/xml/document.h"

namespace svmscore {

std::string ToUtf8(const XMLCh* text) {
  return text == nullptr ? std::string() : ToUtf8(text, xercesc::XMLString::stringLen(text));
}

namespace {

// Cuts each unit to its low byte and returns the union of their bits. The pointers do not alias, so
// the compiler can handle many units at once.
XMLCh CutToBytes(const XMLCh* __restrict from, std::size_t size, char* __restrict to) {
  XMLCh seen = 0;
  for (std::size_t i = 0; i < size; ++i) {
    seen |= from[i];
    to[i] = static_cast<char>(from[i]);
  }
  return seen;
}

}  // namespace

std::string ToUtf8(const XMLCh* text, std::size_t size) try {
  std::string narrow(size, '\0');
  if (CutToBytes(text, size, narrow.data()) < 0x80) return narrow;
  StartXerces();
  const xercesc::TranscodeToStr utf8(text, size, "UTF-8");
  return {reinterpret_cast<const char*>(utf8.str()), utf8.length()};
} catch (const xercesc::OutOfMemoryException&) {
  throw std::bad_alloc();  // the parser's own exception is not a standard one
}

std::basic_string<XMLCh> ToUtf16(const std::string& text) try {
  const bool ascii = std::all_of(text.begin(), text.end(),
                                 [](char c) { return static_cast<unsigned char>(c) < 0x80; });
  if (ascii) return {text.begin(), text.end()};
  StartXerces();
  const xercesc::TranscodeFromStr wide(reinterpret_cast<const XMLByte*>(text.data()), text.size(),
                                       "UTF-8");
  return {wide.str(), wide.length()};
} catch (const xercesc::OutOfMemoryException&) {
  throw std::bad_alloc();
}

std::string ElementText(const xercesc::DOMNode* element) {
  using xercesc::DOMNode;
  std::string text;
  const auto add_numbers = [&text](const DOMNode* holder) {
    if (holder->getNodeType() == DOMNode::ELEMENT_NODE && holder->getFirstChild() == nullptr) {
      text += NumberText(static_cast<const Element*>(holder));
    }
  };
  if (element != nullptr) add_numbers(element);
  const DOMNode* node = element == nullptr ? nullptr : element->getFirstChild();
  while (node != nullptr) {
    const auto type = node->getNodeType();
    if (type == DOMNode::TEXT_NODE || type == DOMNode::CDATA_SECTION_NODE) {
      text += ToUtf8(node->getNodeValue());
    }
    add_numbers(node);
    const bool holds = type == DOMNode::ELEMENT_NODE || type == DOMNode::ENTITY_REFERENCE_NODE;
    const DOMNode* next = holds ? node->getFirstChild() : nullptr;
    while (next == nullptr && node != element) {
      next = node->getNextSibling();
      if (next == nullptr) node = node->getParentNode();
    }
    node = next;
  }
  return text;
}

}  // namespace svmscore

namespace MCZandor_850 {

ZandorTranscoder::ZandorTranscoder(const std::string& encoding) : encoding_(encoding) {}

}  // namespace MCZandor_850
