// Texts as sequences of Unicode characters, the same in every locale.
#ifndef HOST_TRANSFORM_TEXT_UNICODE_H_
#define HOST_TRANSFORM_TEXT_UNICODE_H_

#include <string>
#include <string_view>

namespace svmscore::transform {

// Bytes that are not UTF-8 count as one character each and stay as they are.
std::size_t CharacterCount(std::string_view text);
// The `count` characters from position `first` (from 0) on, or as many as there are.
std::string_view Characters(std::string_view text, std::size_t first, std::size_t count);
// Each character is mapped to a single one.
std::string UpperCase(std::string_view text);
std::string LowerCase(std::string_view text);

// The characters of a text as code points.
std::u32string CodePoints(std::string_view text);
bool IsPunctuation(char32_t character);

}  // namespace svmscore::transform

#endif  // HOST_TRANSFORM_TEXT_UNICODE_H_
