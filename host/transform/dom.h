// Reading the elements of transformations.
#ifndef HOST_TRANSFORM_DOM_H_
#define HOST_TRANSFORM_DOM_H_

#include <optional>
#include <string>
#include <string_view>

#include <xercesc/dom/DOM.hpp>

#include "host/field_types.h"

namespace svmscore::transform {

using Element = xercesc::DOMElement;

// The name without its namespace prefix.
std::string LocalName(const Element* element);
bool IsNamed(const Element* element, std::string_view local_name);

// Child elements in document order, extensions left out; null at the end.
const Element* FirstChild(const Element* element);
const Element* NextSibling(const Element* element);
// The first child of that name, or null.
const Element* ChildNamed(const Element* element, std::string_view local_name);

// Attributes. A required one that is absent is thrown as 260120, a text that is no value of the
// attribute as 260153.
std::optional<std::string> Attribute(const Element* element, const char* name);
std::string RequiredAttribute(const Element* element, const char* name);
std::optional<double> NumberAttribute(const Element* element, const char* name);
double RequiredNumber(const Element* element, const char* name);
// A count from 0; `standard` where it is absent.
int CountAttribute(const Element* element, const char* name, int standard);
bool FlagAttribute(const Element* element, const char* name, bool standard);
std::optional<FieldType> TypeAttribute(const Element* element, const char* name);
std::optional<OpType> OpTypeAttribute(const Element* element, const char* name);

// The range of an Interval element.
Interval ReadInterval(const Element* element);

// Throws 260313: `what` is wrong, said as the beginning of a sentence that ends in the element.
[[noreturn]] void Refuse(const Element* element, const std::string& what);
// Throws 260304 where the element is of a kind that its parent cannot hold.
[[noreturn]] void RefuseKind(const Element* element);

}  // namespace svmscore::transform

#endif  // HOST_TRANSFORM_DOM_H_
