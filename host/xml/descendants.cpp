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

void Descendants::GoOn(Place& place) const {
  const DOMNode* node = place.node;
  do {
    const DOMNode* next = node->getFirstChild();
    if (next != nullptr) {
      if (place.depth < place.around.size()) place.around[place.depth] = node;
      ++place.depth;
    }
    while (next == nullptr && place.depth > 0) {
      next = node->getNextSibling();
      if (next != nullptr) break;
      --place.depth;
      node = place.depth < place.around.size() ? place.around[place.depth] : node->getParentNode();
    }
    node = next;
  } while (node != nullptr && (node->getNodeType() != DOMNode::ELEMENT_NODE ||
                               !xercesc::XMLString::equals(node->getNodeName(), name_)));
  place.node = node;
}

DOMNode* Descendants::item(XMLSize_t index) const {
  if (at_.node == nullptr || index < position_) {
    at_ = {root_};
    GoOn(at_);
    position_ = 0;
  }
  while (at_.node != nullptr && position_ < index) {
    GoOn(at_);
    ++position_;
  }
  return const_cast<DOMNode*>(at_.node);
}

XMLSize_t Descendants::getLength() const {
  XMLSize_t length = 0;
  Place place = {root_};
  for (GoOn(place); place.node != nullptr; GoOn(place)) ++length;
  return length;
}

}  // namespace svmscore
