// Small helpers for walking a document.
#ifndef HOST_PMML_ELEMENTS_H_
#define HOST_PMML_ELEMENTS_H_

#include <optional>
#include <string>

#include <xercesc/dom/DOM.hpp>

#include "host/api.h"

namespace svmscore {

// The first child element of that name; null where there is none, and for null.
SVMSCORE_HOST_API xercesc::DOMElement* FindChild(const xercesc::DOMElement* parent,
                                                 const std::string& name);
// The next sibling element of the same name as `name`; null at the end.
SVMSCORE_HOST_API xercesc::DOMElement* FindNext(const xercesc::DOMElement* sibling,
                                                const std::string& name);
SVMSCORE_HOST_API std::string NameOf(const xercesc::DOMElement* element);
// Nothing where the element has no such attribute; an empty text is a text.
SVMSCORE_HOST_API std::optional<std::string> FindAttribute(const xercesc::DOMElement* element,
                                                           const std::string& name);
// The attribute's text, or an SSException (260120) where it is missing.
SVMSCORE_HOST_API std::string RequireAttribute(const xercesc::DOMElement* element,
                                               const std::string& name);
// The attribute's number; nothing where it is missing; an SSException (260153) for other text.
SVMSCORE_HOST_API std::optional<double> FindNumber(const xercesc::DOMElement* element,
                                                   const std::string& name);
// The document's model element, or null.
SVMSCORE_HOST_API xercesc::DOMElement* FindModelElement(const xercesc::DOMDocument* document);

// Throws 260153: `value` is not what `attribute` may be.
[[noreturn]] SVMSCORE_HOST_API void RefuseValue(const xercesc::DOMElement* element,
                                                const std::string& attribute,
                                                const std::string& value);

// for (DOMElement* field : Children(schema, "MiningField")) ...
class SVMSCORE_HOST_API Children {
 public:
  Children(const xercesc::DOMElement* parent, std::string name)
      : parent_(parent), name_(std::move(name)) {}

  class Iterator {
   public:
    Iterator(xercesc::DOMElement* at, const std::string* name) : at_(at), name_(name) {}
    xercesc::DOMElement* operator*() const { return at_; }
    Iterator& operator++() {
      at_ = FindNext(at_, *name_);
      return *this;
    }
    bool operator==(const Iterator& other) const { return at_ == other.at_; }

   private:
    xercesc::DOMElement* at_;
    const std::string* name_;
  };

  Iterator begin() const { return {FindChild(parent_, name_), &name_}; }
  Iterator end() const { return {nullptr, &name_}; }

 private:
  const xercesc::DOMElement* parent_;
  std::string name_;
};

}  // namespace svmscore

#endif  // HOST_PMML_ELEMENTS_H_
