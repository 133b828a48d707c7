#include "host/xml/descendants.h"

#include <new>

#include <xercesc/dom/DOMMemoryManager.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

namespace svmscore {

using xercesc::DOMNode;

Descendants* Descendants::Of(const xercesc::DOMElement* root, const XMLCh* name) {
  auto* memory = static_cast<xercesc::DOMMemoryManager*>(root->getOwnerDocument()->getFeature(
      xercesc::XMLUni::fgXercescInterfaceDOMMemoryManager, nullptr));
  const XMLCh* kept = memory->cloneString(name);
  return ::new (memory->allocate(sizeof(Descendants))) Descendants(root, kept);
}

const DOMNode* Descendants::After(const DOMNode* node) const {
  do {
    const DOMNode* next = node->getFirstChild();
    while (next == nullptr && node != root_) {
      next = node->getNextSibling();
      if (next == nullptr) node = node->getParentNode();
    }
    node = next;
  } while (node != nullptr && (node->getNodeType() != DOMNode::ELEMENT_NODE ||
                               !xercesc::XMLString::equals(node->getNodeName(), name_)));
  return node;
}

DOMNode* Descendants::item(XMLSize_t index) const {
  if (at_ == nullptr || index < position_) {
    at_ = After(root_);
    position_ = 0;
  }
  while (at_ != nullptr && position_ < index) {
    at_ = After(at_);
    ++position_;
  }
  return const_cast<DOMNode*>(at_);
}

XMLSize_t Descendants::getLength() const {
  XMLSize_t length = 0;
  for (const DOMNode* node = After(root_); node != nullptr; node = After(node)) ++length;
  return length;
}

}  // namespace svmscore
