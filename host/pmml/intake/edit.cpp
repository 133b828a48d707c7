#include "host/pmml/intake/edit.h"

#include "host/transcoder.h"
#include "host/translator.h"

namespace svmscore::intake {

using MCZandor_850::BaseTranslator;
using xercesc::DOMElement;
using xercesc::DOMNode;

namespace {

bool IsDigit(XMLCh c) {
  return c >= u'0' && c <= u'9';
}

std::size_t SkipDigits(WideView word, std::size_t at) {
  while (at < word.size() && IsDigit(word[at])) ++at;
  return at;
}

}  // namespace

WideView AttributeView(const DOMElement* element, const XMLCh* name) {
  const xercesc::DOMAttr* attribute =
      element == nullptr ? nullptr : element->getAttributeNode(name);
  return attribute == nullptr ? WideView() : WideView(attribute->getValue());
}

void SetAttribute(DOMElement* element, const std::string& name, const std::string& value) {
  element->setAttribute(ToUtf16(name).c_str(), ToUtf16(value).c_str());
}

WideView TextView(const DOMElement* element, WideText& joined) {
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
  if (word == u"INF" || word == u"-INF" || word == u"NaN") return true;
  std::size_t at = !word.empty() && (word[0] == u'+' || word[0] == u'-') ? 1 : 0;
  const std::size_t whole = SkipDigits(word, at);
  std::size_t digits = whole - at;
  at = whole;
  if (at < word.size() && word[at] == u'.') {
    const std::size_t end = SkipDigits(word, at + 1);
    digits += end - at - 1;
    at = end;
  }
  if (digits == 0) return false;
  if (at < word.size() && (word[at] == u'e' || word[at] == u'E')) {
    ++at;
    if (at < word.size() && (word[at] == u'+' || word[at] == u'-')) ++at;
    const std::size_t end = SkipDigits(word, at);
    if (end == at) return false;
    at = end;
  }
  return at == word.size();
}

std::string Narrow(WideView text) {
  return text.empty() ? std::string() : ToUtf8(text.data(), text.size());
}

DOMElement* NextInTree(DOMElement* element, const DOMElement* root, bool skip) {
  DOMElement* next = skip ? nullptr : BaseTranslator::GetFirstChildElt(element);
  while (next == nullptr && element != root) {
    next = BaseTranslator::GetNextSiblingElt(element);
    if (next == nullptr) element = static_cast<DOMElement*>(element->getParentNode());
  }
  return next;
}

DOMElement* MakeElement(xercesc::DOMDocument* document, const std::string& name) {
  return document->createElementNS(document->getDocumentElement()->getNamespaceURI(),
                                   ToUtf16(name).c_str());
}

DOMElement* AddElement(DOMElement* parent, const std::string& name) {
  DOMElement* element = MakeElement(parent->getOwnerDocument(), name);
  parent->appendChild(element);
  return element;
}

void AddText(DOMElement* element, const WideText& text) {
  element->appendChild(element->getOwnerDocument()->createTextNode(text.c_str()));
}

void Rename(DOMElement* element, const std::string& name) {
  element->getOwnerDocument()->renameNode(element, element->getNamespaceURI(),
                                          ToUtf16(name).c_str());
}

void Remove(DOMElement* element) {
  element->getParentNode()->removeChild(element);
}

void MoveChildren(DOMElement* from, DOMElement* to) {
  while (DOMNode* child = from->getFirstChild()) to->appendChild(child);
}

}  // namespace svmscore::intake
