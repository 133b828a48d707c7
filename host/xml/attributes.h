// Attributes of elements as texts, numbers and other values. A null element has none.
// [one thread] for each document. Owns: the caller. Fails: SSException at the element, 260120 where
// an attribute is required and absent, 260153 where its text is not an allowed value;
// std::bad_alloc.
#ifndef HOST_XML_ATTRIBUTES_H_
#define HOST_XML_ATTRIBUTES_H_

#include <optional>
#include <string>
#include <string_view>

#include "host/text/api.h"
#include "host/text/field_types.h"
#include "host/xml/elements.h"

namespace svmscore {

// Nothing if the element has no such attribute; an empty text counts as a text.
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

// Throws 260153: `value` is not an allowed value of `attribute`.
[[noreturn]] SVMSCORE_HOST_API void RefuseValue(const Element* element, std::string_view attribute,
                                                const std::string& value);
// Throws 260313: `what` is the beginning of a sentence that ends with the name of the element.
[[noreturn]] void RefuseContent(const Element* element, const std::string& what);
// Throws 260304: the element is not one that its parent can hold.
[[noreturn]] void RefuseKind(const Element* element);

}  // namespace svmscore

#endif  // HOST_XML_ATTRIBUTES_H_
