// What must be known about a document's text before the parser reads it.
#ifndef HOST_XML_RAW_SCAN_H_
#define HOST_XML_RAW_SCAN_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <xercesc/util/XercesDefs.hpp>

#include "host/xml/limits.h"
#include "host/xml/raw_encoding.h"

namespace svmscore {

// Counts what the parser reads in one piece before it hands any of it out:
// - the attributes of a tag, counted by their quoted values: the parser compares them with each
//   other, in a time that grows with the square of their number;
// - the names that declarations of elements and attributes list, which take the parser some hundred
//   bytes each.
// The content of comments, CDATA sections and processing instructions is not counted. Also notes
// NUL characters, at which the parser would take the document to end.
//
// Where the encoding is not exact (RawEncoding), counts coarsely: as an attribute each quotation
// mark after an equals sign, wherever it appears, because a value never contains "<"; and after
// DOCTYPE every character that may separate names. Shift characters are noted there, as NUL is.
class RawScan {
 public:
  enum class Problem { kNone, kAttributes, kDeclarations, kControl, kEncoding };

  explicit RawScan(const Limits& limits)
      : most_attributes_(limits.attributes),
        most_listed_(limits.declarations > UINT64_MAX / 10 ? UINT64_MAX
                                                           : 10 * limits.declarations) {}

  // Reads the next bytes of the document. Those of its declaration are examined once it has ended.
  // REQUIRES: StartXerces() was called.
  void Read(const void* bytes, std::size_t size);
  // The next units of a text.
  void Read(const XMLCh* text, std::size_t size);
  // The first problem, and the line on which it appears, from 1.
  Problem Found() const { return problem_; }
  std::uint64_t Line() const { return line_; }
  // What is wrong with the encoding.
  const std::string& EncodingProblem() const { return encoding_.problem; }
  // The line of the first byte that is not UTF-8, where the document is read as that; 0 without
  // one.
  std::uint64_t BadByteLine() const { return bad_byte_line_; }
  // Whether the bytes read so far end inside a unit, or inside a character of UTF-8.
  bool EndsInsideCharacter() const;

 private:
  enum class State { kText, kOpened, kTag, kDeclaration, kValue, kSection };

  // Looks at one character.
  void Take(char32_t c);
  void TakeOpened(char32_t c);
  void TakeMarkup(char32_t c);
  void TakeCoarsely(unsigned char c);
  void CountAttribute();
  void ReadDecided(const void* bytes, std::size_t size);
  void CheckUtf8(std::string_view bytes);
  // The first character from `at` on that matters to the current tag or value, or `end`.
  const unsigned char* SkipInTag(const unsigned char* at, const unsigned char* end);

  std::uint64_t most_attributes_;
  std::uint64_t most_listed_;
  std::uint64_t attributes_ = 0;  // of the current tag
  std::uint64_t listed_ = 0;      // in all declarations
  bool lists_ = false;            // the current declaration lists names; coarsely, DOCTYPE was seen
  std::uint64_t line_ = 1;
  Problem problem_ = Problem::kNone;
  State state_ = State::kText;
  State around_ = State::kTag;  // what the current value is part of
  char32_t quote_ = 0;
  std::string_view section_end_;  // of the current section
  std::size_t matched_ = 0;       // of its end, or of its beginning; coarsely, of DOCTYPE
  char beginning_[8] = {};
  bool decided_ = false;  // on the encoding; until then `waiting_` holds what was read
  std::string waiting_;
  RawEncoding encoding_;
  bool after_equals_ = false;
  std::string tail_;                 // of UTF-8, the last three bytes
  std::string open_;                 // the bytes of a character that may go on in the next call
  std::uint64_t checked_lines_ = 1;  // before `open_`, or before what is only ASCII
  bool ascii_before_ = false;        // the last bytes were
  std::uint64_t bad_byte_line_ = 0;
  std::size_t taken_ = 0;  // bytes of a unit that ends in the next call
  char32_t partial_ = 0;
};

}  // namespace svmscore

#endif  // HOST_XML_RAW_SCAN_H_
