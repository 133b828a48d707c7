#include "host/xml/elements.h"

#include "host/xml/transcoder.h"

namespace svmscore {

using xercesc::DOMNode;

namespace {

Element* ElementFrom(DOMNode* node) {
  while (node != nullptr && node->getNodeType() != DOMNode::ELEMENT_NODE) {
    node = node->getNextSibling();
  }
  return static_cast<Element*>(node);
}

Element* ContentFrom(Element* element) {
  while (element != nullptr) {
    const XMLCh* name = element->getNodeName();
    const bool foreign = IsEqual(name, "Extension") || (name[0] == u'X' && name[1] == u'-');
    if (!foreign) return element;
    element = NextElement(element);
  }
  return nullptr;
}

Element* NamedFrom(Element* element, std::string_view name) {
  while (element != nullptr && !IsEqual(element->getNodeName(), name)) {
    element = NextElement(element);
  }
  return element;
}

}  // namespace

std::string NameOf(const Element* element) {
  return element == nullptr ? std::string() : ToUtf8(element->getNodeName());
}

bool IsEqual(const XMLCh* text, std::string_view name) {
  if (text == nullptr) return false;
  // Names are nearly always ASCII, which is compared in place, without a copy.
  for (std::size_t i = 0;; ++i) {
    const auto expected = i < name.size() ? static_cast<unsigned char>(name[i]) : 0U;
    if (expected >= 0x80) return ToUtf8(text) == name;
    if (text[i] != expected) return false;
    if (i == name.size()) return true;
  }
}

bool IsNamed(const Element* element, std::string_view name) {
  return element != nullptr && IsEqual(element->getNodeName(), name);
}

Element* FirstElement(const DOMNode* parent) {
  return parent == nullptr ? nullptr : ElementFrom(parent->getFirstChild());
}

Element* NextElement(const DOMNode* sibling) {
  return sibling == nullptr ? nullptr : ElementFrom(sibling->getNextSibling());
}

Element* FirstContent(const Element* parent) {
  return ContentFrom(FirstElement(parent));
}

Element* NextContent(const Element* sibling) {
  return ContentFrom(NextElement(sibling));
}

Element* FindChild(const Element* parent, std::string_view name) {
  return NamedFrom(FirstElement(parent), name);
}

Element* FindNext(const Element* sibling, std::string_view name) {
  return NamedFrom(NextElement(sibling), name);
}

std::vector<const Element*> ChildElements(const Element* parent) {
  std::vector<const Element*> children;
  for (const Element* child = FirstElement(parent); child != nullptr; child = NextElement(child)) {
    children.push_back(child);
  }
  return children;
}

std::vector<const Element*> ChildElements(const Element* parent, std::string_view name) {
  std::vector<const Element*> children;
  for (const Element* child : Children(parent, std::string(name))) children.push_back(child);
  return children;
}

void TreeWalk::Next(bool skip) {
  Element* next = skip ? nullptr : FirstElement(at_);
  if (next != nullptr) {
    around_.push_back(at_);
    at_ = next;
    return;
  }
  while (next == nullptr && !around_.empty()) {
    next = NextElement(at_);
    if (next != nullptr) break;
    at_ = around_.back();
    around_.pop_back();
  }
  at_ = next;
}

Element* FindModelElement(const xercesc::DOMDocument* document) {
  return document == nullptr
             ? nullptr
             : FindChild(document->getDocumentElement(), "SupportVectorMachineModel");
}

}  // namespace svmscore
