// What the program reads of a document's tree, beyond the host's helpers.
#ifndef APP_ELEMENTS_H_
#define APP_ELEMENTS_H_

#include <string>
#include <vector>

#include "host/pmml/elements.h"

namespace svmscore::app {

using Element = xercesc::DOMElement;

// The empty text where the attribute is absent. `element` may be null.
inline std::string AttributeText(const Element* element, const std::string& name) {
  return FindAttribute(element, name).value_or("");
}

// All child elements in document order, or those of a name; none for null.
std::vector<const Element*> ChildElements(const Element* parent);
std::vector<const Element*> ChildElements(const Element* parent, const std::string& name);

}  // namespace svmscore::app

#endif  // APP_ELEMENTS_H_
