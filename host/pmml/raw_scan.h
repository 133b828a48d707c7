// What must be known of a document's text before the parser looks at it.
#ifndef HOST_PMML_RAW_SCAN_H_
#define HOST_PMML_RAW_SCAN_H_

#include <cstddef>
#include <cstdint>
#include <string_view>

#include <xercesc/util/XercesDefs.hpp>

#include "host/limits.h"

namespace svmscore {

// Counts what the parser takes in one piece before it hands any of it out:
// - the attributes of a tag, which it compares with each other in a time that grows with their
//   square, as the quoted values of each tag;
// - the names that declarations of elements and attributes list, which take it some hundred bytes
//   each.
// What comments, CDATA sections and instructions hold is neither. Also notes NUL characters, at
// which the parser would take the document for ended.
//
// Takes encodings in which ASCII characters are their bytes, alone or in units of two or four. In
// EBCDIC it knows the characters that are the same in all its code pages, and counts by those:
// attributes, for a value never holds a "<", and after DOCTYPE whatever may separate names,
// wherever it stands.
class RawScan {
 public:
  enum class Problem { kNone, kAttributes, kDeclarations, kNul };

  explicit RawScan(const Limits& limits)
      : most_attributes_(limits.attributes),
        most_listed_(limits.declarations > UINT64_MAX / 10 ? UINT64_MAX
                                                           : 10 * limits.declarations) {}

  // The next bytes of the document.
  void Read(const void* bytes, std::size_t size);
  // The next units of a text.
  void Read(const XMLCh* text, std::size_t size);
  // The first problem, and the line on which it shows, from 1.
  Problem Found() const { return problem_; }
  std::uint64_t Line() const { return line_; }
  // Whether what was read ends inside a unit.
  bool EndsInsideCharacter() const { return taken_ != 0; }

 private:
  enum class State { kText, kOpened, kTag, kDeclaration, kValue, kSection };

  // Looks at one character.
  void Take(char32_t c);
  void TakeOpened(char32_t c);
  void TakeMarkup(char32_t c);
  void TakeEbcdic(unsigned char c);
  void CountAttribute();
  // Guesses by the first bytes, as parsers do.
  void DetectUnits(const unsigned char* bytes, std::size_t size);

  std::uint64_t most_attributes_;
  std::uint64_t most_listed_;
  std::uint64_t attributes_ = 0;  // of the tag at hand
  std::uint64_t listed_ = 0;      // in all declarations
  bool lists_ = false;  // the declaration at hand is one that lists names; in EBCDIC, one was seen
  std::uint64_t line_ = 1;
  Problem problem_ = Problem::kNone;
  State state_ = State::kText;
  State around_ = State::kTag;  // what the value at hand stands in
  char32_t quote_ = 0;
  std::string_view section_end_;  // of the section at hand
  std::size_t matched_ = 0;       // of its end, or of its beginning; in EBCDIC, of DOCTYPE
  char beginning_[8] = {};
  // Bytes of a unit, and which of them comes first; 0 while that is not known.
  std::size_t unit_ = 0;
  bool big_endian_ = false;
  bool ebcdic_ = false;
  bool after_equals_ = false;
  std::size_t taken_ = 0;  // bytes of a unit that ends in the next call
  char32_t partial_ = 0;
};

}  // namespace svmscore

#endif  // HOST_PMML_RAW_SCAN_H_
