// Changing the tree of a document.
#ifndef HOST_XML_EDIT_H_
#define HOST_XML_EDIT_H_

#include <string>

#include "host/xml/elements.h"
#include "host/xml/wide_text.h"

namespace svmscore {

void SetAttribute(Element* element, const std::string& name, const std::string& value);
void RemoveAttribute(Element* element, const std::string& name);

// A new element in the namespace of the document's root, not yet in the tree.
Element* MakeElement(xercesc::DOMDocument* document, const std::string& name);
// The same as the last child of `parent`.
Element* AddElement(Element* parent, const std::string& name);
void AddText(Element* element, const WideText& text);
// Keeps the element and its content, so that its line stays known.
void Rename(Element* element, const std::string& name);
// Removes the element from the tree; the document keeps its memory.
void Remove(Element* element);
// Moves the children of `from` behind those of `to`.
void MoveChildren(Element* from, Element* to);

}  // namespace svmscore

#endif  // HOST_XML_EDIT_H_
