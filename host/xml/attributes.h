// Attributes of elements as texts, numbers and what else they spell. A null element has none.
// Where an attribute is required and absent, 260120 is thrown at the element; where its text is no
// value of the attribute, 260153.
#ifndef HOST_XML_ATTRIBUTES_H_
#define HOST_XML_ATTRIBUTES_H_

#include <optional>
#include <string>
#include <string_view>

#include "host/text/api.h"
#include "host/text/field_types.h"
#include "host/xml/elements.h"

namespace svmscore {

// Nothing where the element has no such attribute; an empty text is a text.
SVMSCORE_HOST_API std::optional<std::string> FindAttribute(const Element* element,
                                                           std::string_view name);
// The empty text where the attribute is absent.
SVMSCORE_HOST_API std::string AttributeText(const Element* element, std::string_view name);
SVMSCORE_HOST_API std::string RequireAttribute(const Element* element, std::string_view name);

SVMSCORE_HOST_API std::optional<double> FindNumber(const Element* element, std::string_view name);
SVMSCORE_HOST_API double RequireNumber(const Element* element, std::string_view name);
// A whole number from 0 to a million; `standard` where it is absent.
int FindCount(const Element* element, std::string_view name, int standard);
// true, false, 1 or 0; `standard` where it is absent.
bool FindFlag(const Element* element, std::string_view name, bool standard);
std::optional<FieldType> FindDataType(const Element* element, std::string_view name);
std::optional<OpType> FindOpType(const Element* element, std::string_view name);
// The range of an Interval element.
Interval ReadInterval(const Element* element);

// Throws 260153: `value` is not what `attribute` may be.
[[noreturn]] SVMSCORE_HOST_API void RefuseValue(const Element* element, std::string_view attribute,
                                                const std::string& value);
// Throws 260313: `what` is wrong, said as the beginning of a sentence that ends in the element.
[[noreturn]] void RefuseContent(const Element* element, const std::string& what);
// Throws 260304: the element is of a kind that its parent cannot hold.
[[noreturn]] void RefuseKind(const Element* element);

}  // namespace svmscore

#endif  // HOST_XML_ATTRIBUTES_H_
