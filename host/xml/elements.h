// Walking the elements of a document. Names are compared as they are written in the file; `parent`
// and `element` may be null everywhere, and then have no children and no name.
// [one thread] for each document. Owns: the document its elements, the caller all else. Lives:
// elements, as long as their document. Fails: where a text or a list is returned or a name is not
// ASCII, by std::bad_alloc; else never.
#ifndef HOST_XML_ELEMENTS_H_
#define HOST_XML_ELEMENTS_H_

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <xercesc/dom/DOM.hpp>

#include "host/text/api.h"

namespace svmscore {

using Element = xercesc::DOMElement;

SVMSCORE_HOST_API std::string NameOf(const Element* element);
// `text` is one of the parser's; null equals nothing.
SVMSCORE_HOST_API bool IsEqual(const XMLCh* text, std::string_view name);
SVMSCORE_HOST_API bool IsNamed(const Element* element, std::string_view name);

// The first child element and the next sibling element, whatever their names; null at the end.
SVMSCORE_HOST_API Element* FirstElement(const xercesc::DOMNode* parent);
SVMSCORE_HOST_API Element* NextElement(const xercesc::DOMNode* sibling);
// The same, without Extension elements and those named X-...
SVMSCORE_HOST_API Element* FirstContent(const Element* parent);
SVMSCORE_HOST_API Element* NextContent(const Element* sibling);
// The same, with one name.
SVMSCORE_HOST_API Element* FindChild(const Element* parent, std::string_view name);
SVMSCORE_HOST_API Element* FindNext(const Element* sibling, std::string_view name);
// All child elements in document order, or those of a name.
SVMSCORE_HOST_API std::vector<const Element*> ChildElements(const Element* parent);
SVMSCORE_HOST_API std::vector<const Element*> ChildElements(const Element* parent,
                                                            std::string_view name);
// The elements of a tree in document order: for (TreeWalk walk(root); walk.At(); walk.Next()) ...
// The names and attributes of elements may change meanwhile. It remembers the elements around,
// because the library takes long to find an element's parent.
class TreeWalk {
 public:
  explicit TreeWalk(Element* root) : at_(root) {}

  // Null at the end.
  Element* At() const { return at_; }
  // Null for the root.
  Element* Parent() const { return around_.empty() ? nullptr : around_.back(); }
  // With `skip` the content of the element is left out.
  void Next(bool skip = false);

 private:
  Element* at_;
  std::vector<Element*> around_;
};

// The document's model element, or null.
SVMSCORE_HOST_API Element* FindModelElement(const xercesc::DOMDocument* document);

// for (Element* field : Children(schema, "MiningField")) ...
class Children {
 public:
  Children(const Element* parent, std::string name) : parent_(parent), name_(std::move(name)) {}

  class Iterator {
   public:
    Iterator(Element* at, const std::string* name) : at_(at), name_(name) {}
    Element* operator*() const { return at_; }
    Iterator& operator++() {
      at_ = FindNext(at_, *name_);
      return *this;
    }
    bool operator==(const Iterator& other) const { return at_ == other.at_; }

   private:
    Element* at_;
    const std::string* name_;
  };

  Iterator begin() const { return {FindChild(parent_, name_), &name_}; }
  Iterator end() const { return {nullptr, &name_}; }

 private:
  const Element* parent_;
  std::string name_;
};

}  // namespace svmscore

#endif  // HOST_XML_ELEMENTS_H_
