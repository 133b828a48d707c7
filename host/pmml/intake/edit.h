// Reading and editing elements without copies: names are UTF-16 literals, as the DOM holds them.
#ifndef HOST_PMML_INTAKE_EDIT_H_
#define HOST_PMML_INTAKE_EDIT_H_

#include <optional>
#include <string>
#include <string_view>

#include <xercesc/dom/DOM.hpp>

namespace svmscore::intake {

using WideView = std::basic_string_view<XMLCh>;
using WideText = std::basic_string<XMLCh>;

// The attribute's text, borrowed from the document; an empty view without data where there is none.
WideView AttributeView(const xercesc::DOMElement* element, const XMLCh* name);
void SetAttribute(xercesc::DOMElement* element, const std::string& name, const std::string& value);

// The element's joined text: borrowed where it is one piece, else put together in `joined`.
WideView TextView(const xercesc::DOMElement* element, WideText& joined);

bool IsBlank(XMLCh c);
// Cuts the first word off `text`; empty at the end of it.
WideView NextWord(WideView& text);
// Whether the whole word is a number of the XML double grammar.
bool IsNumber(WideView word);
// How many words the text has, all of them such numbers; else nothing, and the first other word in
// `offender`. Sets `large` where one of them may not be finite.
std::optional<std::size_t> CountNumbers(WideView text, WideView& offender, bool& large);
std::string Narrow(WideView text);

// The element after `element` in document order, below `root`; null at the end. With `skip` the
// content of `element` is left out.
xercesc::DOMElement* NextInTree(xercesc::DOMElement* element, const xercesc::DOMElement* root,
                                bool skip);

// A new element in the namespace of the document's root, not yet in the tree.
xercesc::DOMElement* MakeElement(xercesc::DOMDocument* document, const std::string& name);
// The same as the last child of `parent`.
xercesc::DOMElement* AddElement(xercesc::DOMElement* parent, const std::string& name);
void AddText(xercesc::DOMElement* element, const WideText& text);
// Keeps the element and its content, so that its line stays known.
void Rename(xercesc::DOMElement* element, const std::string& name);
// Removes the element from the tree; the document keeps its memory.
void Remove(xercesc::DOMElement* element);
// Moves the children of `from` behind those of `to`.
void MoveChildren(xercesc::DOMElement* from, xercesc::DOMElement* to);

}  // namespace svmscore::intake

#endif  // HOST_PMML_INTAKE_EDIT_H_
