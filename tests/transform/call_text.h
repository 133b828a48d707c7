// Expressions in a short notation, for tables of tests.
#ifndef TESTS_TRANSFORM_CALL_TEXT_H_
#define TESTS_TRANSFORM_CALL_TEXT_H_

#include <string>
#include <string_view>

namespace svmscore::transform {

// The element for a text such as  if(lessThan(x, 2.5), 'a''b', missing).
// Numbers are constants without a type, 'text' is one of type string, true and false are booleans,
// date'2024-02-29' (or any other type before the quote) is one of that type; a name is a field, and
// with arguments a function.
std::string CallToXml(std::string_view text);

}  // namespace svmscore::transform

#endif  // TESTS_TRANSFORM_CALL_TEXT_H_
