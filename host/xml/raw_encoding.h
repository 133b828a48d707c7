// How the bytes of a document become characters, as far as its beginning shows.
#ifndef HOST_XML_RAW_ENCODING_H_
#define HOST_XML_RAW_ENCODING_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace svmscore {

struct RawEncoding {
  // Bytes in a unit, and which of them comes first.
  std::size_t unit = 1;
  bool big_endian = false;
  // For units of one byte: whether markup characters have the codes of EBCDIC.
  bool ebcdic = false;
  bool utf8 = false;
  // Whether each ASCII character is one unit, and such a unit is never part of another character.
  // Otherwise that holds only for < = " ' and for letters, digits and blanks, in a document without
  // control characters.
  bool exact = true;
  // Why the document cannot be read; empty where it can.
  std::string problem;
};

// Whether the document's first bytes are enough for EncodingOf. kLongestDeclaration bytes always
// are.
bool IsBeginning(std::string_view bytes);
inline constexpr std::size_t kLongestDeclaration = 8192;

// Judges by the first bytes and the declared encoding, as the parser does. An encoding that hides
// markup from a reader that does not decode it is a problem, and so is a declaration that
// contradicts the bytes; an unknown name is left to the parser. REQUIRES: StartXerces() was called.
RawEncoding EncodingOf(std::string_view bytes);

// Whether the character has the same code in all code pages of EBCDIC.
bool IsSharedInEbcdic(char c);

}  // namespace svmscore

#endif  // HOST_XML_RAW_ENCODING_H_
