// How the bytes of a document become characters, as far as its beginning tells.
#ifndef HOST_XML_RAW_ENCODING_H_
#define HOST_XML_RAW_ENCODING_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace svmscore {

struct RawEncoding {
  // Bytes of a unit, and which of them comes first.
  std::size_t unit = 1;
  bool big_endian = false;
  // Units of a byte: where the signs of markup lie.
  bool ebcdic = false;
  bool utf8 = false;
  // Whether each ASCII character is its unit, and such a unit never part of another character.
  // Otherwise that holds for < = " ' and for letters, digits and blanks, in a document without
  // control characters.
  bool exact = true;
  // What keeps the document from being read; empty where nothing does.
  std::string problem;
};

// Whether the document's first bytes are enough for EncodingOf. They are at the latest when there
// are kLongestDeclaration.
bool IsBeginning(std::string_view bytes);
inline constexpr std::size_t kLongestDeclaration = 8192;

// By the first bytes and the declared encoding, which the parser goes by, after StartXerces(). An
// encoding that hides markup from whoever does not decode it is a problem, and so is a declaration
// that the bytes belie; a name that nobody knows is left to the parser.
RawEncoding EncodingOf(std::string_view bytes);

// Whether all code pages of EBCDIC have the character, and have it in one place.
bool IsSharedInEbcdic(char c);

}  // namespace svmscore

#endif  // HOST_XML_RAW_ENCODING_H_
