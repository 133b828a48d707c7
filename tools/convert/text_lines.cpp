#include "tools/convert/text_lines.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "host/text/number_text.h"
#include "host/text/printable.h"

namespace svmscore::tools {
namespace {

constexpr std::string_view kBlanks = " \t";
constexpr std::size_t kShownBytes = 40;
constexpr const char* kWhole = "copy the whole file again, or write it again";

}  // namespace

std::string Quoted(std::string_view word) {
  return fmt::format("\"{}\"", Printable(word, kShownBytes));
}

std::string_view TextLine::Word() {
  rest_.remove_prefix(std::min(rest_.find_first_not_of(kBlanks), rest_.size()));
  const std::string_view word = rest_.substr(0, rest_.find_first_of(kBlanks));
  rest_.remove_prefix(word.size());
  return word;
}

double TextLine::Number(std::string_view what) {
  const std::string_view word = Word();
  if (word.empty()) Refuse(fmt::format("{} is missing", what), kWhole);
  return NumberIn(word, what);
}

std::int64_t TextLine::Whole(std::string_view what, std::int64_t least, std::int64_t most) {
  const std::string_view word = Word();
  if (word.empty()) Refuse(fmt::format("{} is missing", what), kWhole);
  return WholeIn(word, what, least, most);
}

void TextLine::End(std::string_view what) {
  const std::string_view word = Word();
  if (word.empty()) return;
  Refuse(fmt::format("{} is followed by {}", what, Quoted(word)), "take out what does not belong");
}

double TextLine::NumberIn(std::string_view word, std::string_view what) const {
  const std::optional<double> number = ParseNumber(word);
  if (!number) Refuse(fmt::format("{} is {}, which is no number", what, Quoted(word)), kWhole);
  if (!std::isfinite(*number)) {
    Refuse(fmt::format("{} is {}, with which nothing can be computed", what, Quoted(word)),
           "train again, on data without such numbers");
  }
  return *number;
}

std::int64_t TextLine::WholeIn(std::string_view word, std::string_view what, std::int64_t least,
                               std::int64_t most) const {
  const std::optional<std::int64_t> number = ParseInteger(word);
  if (!number || *number < least || *number > most) {
    Refuse(fmt::format("{} is {}, which is no whole number from {} to {}", what, Quoted(word),
                       least, most),
           kWhole);
  }
  return *number;
}

void TextLine::Refuse(const std::string& sentence, const std::string& remedy) const {
  throw ConversionError(input_, number_, sentence, remedy);
}

std::optional<TextLine> TextLines::Next() {
  while (!rest_.empty()) {
    ++number_;
    const std::size_t end = rest_.find('\n');
    std::string_view line = rest_.substr(0, end);
    rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);  // as lines of Windows do
    const TextLine found(input_, number_, line);
    if (end == std::string_view::npos) {
      found.Refuse("the last line has no end: the file may be cut off", kWhole);
    }
    if (line.find_first_not_of(kBlanks) != std::string_view::npos) return found;
  }
  return std::nullopt;
}

void TextLines::RefuseEnd(const std::string& sentence, const std::string& remedy) const {
  throw ConversionError(input_, number_, sentence, remedy);
}

}  // namespace svmscore::tools
