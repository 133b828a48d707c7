// How many attributes the tags of a document have, told from its text.
#ifndef HOST_PMML_ATTRIBUTE_COUNT_H_
#define HOST_PMML_ATTRIBUTE_COUNT_H_

#include <cstddef>
#include <cstdint>
#include <string_view>

#include <xercesc/util/XercesDefs.hpp>

namespace svmscore {

// The parser compares the attributes of a tag with each other before it hands any of them out, in a
// time that grows with their square. This counts them before, as the quoted values of each tag;
// what comments, CDATA sections and instructions hold is no tag. Takes encodings in which ASCII
// characters are their bytes, alone or in units of two or four; in others it finds no tags.
class AttributeCount {
 public:
  explicit AttributeCount(std::uint64_t most) : most_(most) {}

  // The next bytes of the document.
  void Read(const void* bytes, std::size_t size);
  // The next units of a text.
  void Read(const XMLCh* text, std::size_t size);
  // Whether a tag has more than `most`.
  bool IsBeyond() const { return beyond_; }
  // Where that tag stops being read, from 1.
  std::uint64_t Line() const { return line_; }

 private:
  enum class State { kText, kOpened, kTag, kValue, kSection };

  // Looks at one character.
  void Take(char32_t c);
  void TakeOpened(char32_t c);
  // Guesses by the first bytes, as parsers do.
  void DetectUnits(const unsigned char* bytes, std::size_t size);

  std::uint64_t most_;
  std::uint64_t count_ = 0;
  std::uint64_t line_ = 1;
  bool beyond_ = false;
  State state_ = State::kText;
  char32_t quote_ = 0;
  std::string_view section_end_;  // of the section at hand
  std::size_t matched_ = 0;       // of its end, or of its beginning while it is not known
  char beginning_[8] = {};
  // Bytes of a unit, and which of them comes first; 0 while that is not known.
  std::size_t unit_ = 0;
  bool big_endian_ = false;
  std::size_t taken_ = 0;  // bytes of a unit that ends in the next call
  char32_t partial_ = 0;
};

}  // namespace svmscore

#endif  // HOST_PMML_ATTRIBUTE_COUNT_H_
