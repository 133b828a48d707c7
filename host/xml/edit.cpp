#include "host/xml/edit.h"

#include "host/xml/transcoder.h"

namespace svmscore {

using xercesc::DOMNode;

void SetAttribute(Element* element, const std::string& name, const std::string& value) {
  element->setAttribute(ToUtf16(name).c_str(), ToUtf16(value).c_str());
}

void RemoveAttribute(Element* element, const std::string& name) {
  element->removeAttribute(ToUtf16(name).c_str());
}

Element* MakeElement(xercesc::DOMDocument* document, const std::string& name) {
  return document->createElementNS(document->getDocumentElement()->getNamespaceURI(),
                                   ToUtf16(name).c_str());
}

Element* AddElement(Element* parent, const std::string& name) {
  Element* element = MakeElement(parent->getOwnerDocument(), name);
  parent->appendChild(element);
  return element;
}

void AddText(Element* element, const WideText& text) {
  element->appendChild(element->getOwnerDocument()->createTextNode(text.c_str()));
}

void Rename(Element* element, const std::string& name) {
  element->getOwnerDocument()->renameNode(element, element->getNamespaceURI(),
                                          ToUtf16(name).c_str());
}

void Remove(Element* element) {
  element->getParentNode()->removeChild(element);
}

void MoveChildren(Element* from, Element* to) {
  while (DOMNode* child = from->getFirstChild()) to->appendChild(child);
}

}  // namespace svmscore
