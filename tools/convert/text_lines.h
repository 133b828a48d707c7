// The lines of a text of words and numbers, with errors that name the line.
#ifndef TOOLS_CONVERT_TEXT_LINES_H_
#define TOOLS_CONVERT_TEXT_LINES_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tools/convert/conversion_error.h"

namespace svmscore::tools {

// Words are separated by blanks and tabs. [one thread] Lives: as long as the text. Fails:
// ConversionError with this line, std::bad_alloc.
class TextLine {
 public:
  TextLine(ConversionInput input, std::size_t number, std::string_view text)
      : input_(input), number_(number), rest_(text) {}

  // The next word, taken off the line; empty at its end.
  std::string_view Word();
  // The next word as a number; `what` says whose it is. Refuses what is not a finite number, and
  // the end of the line.
  double Number(std::string_view what);
  // The same for a whole number from `least` to `most`.
  std::int64_t Whole(std::string_view what, std::int64_t least, std::int64_t most);
  // Refuses a further word.
  void End(std::string_view what);
  // A word that is a number.
  double NumberIn(std::string_view word, std::string_view what) const;
  std::int64_t WholeIn(std::string_view word, std::string_view what, std::int64_t least,
                       std::int64_t most) const;
  std::size_t LineNumber() const { return number_; }
  [[noreturn]] void Refuse(const std::string& sentence, const std::string& remedy) const;

 private:
  ConversionInput input_;
  std::size_t number_;
  std::string_view rest_;
};

// The same for the lines of a text. A line that ends with a carriage return, and a last line
// without an end, which may be cut off inside a number, are refused.
class TextLines {
 public:
  TextLines(ConversionInput input, std::string_view text) : input_(input), rest_(text) {}
  // The next line that is not blank; nothing at the end of the text.
  std::optional<TextLine> Next();
  // Refuses the text at its end.
  [[noreturn]] void RefuseEnd(const std::string& sentence, const std::string& remedy) const;

 private:
  ConversionInput input_;
  std::string_view rest_;
  std::size_t number_ = 0;
};

// The word as messages show it.
std::string Quoted(std::string_view word);

}  // namespace svmscore::tools

#endif  // TOOLS_CONVERT_TEXT_LINES_H_
