// The descendants of an element that have one name.
#ifndef HOST_XML_DESCENDANTS_H_
#define HOST_XML_DESCENDANTS_H_

#include <array>
#include <cstddef>

#include <xercesc/dom/DOM.hpp>

namespace svmscore {

// In document order, without the element itself. Valid while the tree does not change. For rising
// positions each look-up continues where the last one ended. One thread, as for its document.
//
// Unlike the lists of the parser's library it is kept only in the document's memory, so it does not
// leak if memory runs out.
class Descendants : public xercesc::DOMNodeList {
 public:
  // Belongs to the document of `root`. Throws xercesc::OutOfMemoryException.
  static Descendants* Of(const xercesc::DOMElement* root, const XMLCh* name);

  // Null beyond the end.
  xercesc::DOMNode* item(XMLSize_t index) const override;
  XMLSize_t getLength() const override;

 private:
  // A node below the root, or the root. Remembers the nodes around it as far down as they fit,
  // because the library takes long to find a node's parent.
  struct Place {
    const xercesc::DOMNode* node = nullptr;
    std::size_t depth = 0;
    std::array<const xercesc::DOMNode*, 8> around = {};
  };

  Descendants(const xercesc::DOMNode* root, const XMLCh* name) : root_(root), name_(name) {}
  // Goes to the next one; to null at the end.
  void GoOn(Place& place) const;

  const xercesc::DOMNode* root_;
  const XMLCh* name_;  // the document's
  mutable Place at_;
  mutable XMLSize_t position_ = 0;  // of `at_`
};

}  // namespace svmscore

#endif  // HOST_XML_DESCENDANTS_H_
