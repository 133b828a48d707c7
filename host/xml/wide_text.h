// Texts of a document as the parser holds them, in UTF-16, read without copies.
#ifndef HOST_XML_WIDE_TEXT_H_
#define HOST_XML_WIDE_TEXT_H_

#include <optional>
#include <string>
#include <string_view>

#include "host/xml/elements.h"

namespace svmscore {

using WideView = std::basic_string_view<XMLCh>;
using WideText = std::basic_string<XMLCh>;

// The attribute's text, borrowed from the document, with a NUL behind it; an empty view without
// data where there is none. The name is ASCII.
WideView AttributeView(const Element* element, std::string_view name);

// The element's whole text: borrowed where it is one piece, else put together in `joined`.
WideView TextView(const Element* element, WideText& joined);

bool IsBlank(XMLCh c);
// Cuts the first word off `text`; empty at the end of it.
WideView NextWord(WideView& text);
// Whether the whole word is a number of the XML double grammar.
bool IsNumber(WideView word);
// The number of words if all of them are such numbers; else nothing, with the first word that is
// not in `offender`. Sets `large` where one of them may not be finite.
std::optional<std::size_t> CountNumbers(WideView text, WideView& offender, bool& large);
std::string Narrow(WideView text);

}  // namespace svmscore

#endif  // HOST_XML_WIDE_TEXT_H_
