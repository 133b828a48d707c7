#include "host/transform/words.h"

#include <algorithm>
#include <numeric>

#include "host/message_codes.h"
#include "host/ss_exception.h"
#include "host/transform/unicode.h"

namespace svmscore::transform {
namespace {

// Blanks between words; that versions differ over \s and \s+ makes no difference, because empty
// words do not count.
constexpr const char* kUsualSeparator = "\\s+";

std::shared_ptr<const Pattern> CompileSeparator(const Element* element, const std::string& text) {
  std::string error;
  std::shared_ptr<const Pattern> pattern = Pattern::Compile(text, false, &error);
  if (pattern == nullptr) {
    Refuse(element, "\"" + text + "\" is no regular expression (" + error + ")");
  }
  return pattern;
}

}  // namespace

int EditDistance(std::u32string_view left, std::u32string_view right, int most) {
  if (left == right) return 0;
  const auto lengths =
      static_cast<std::ptrdiff_t>(left.size()) - static_cast<std::ptrdiff_t>(right.size());
  if (most == 0 || std::abs(lengths) > most) return most + 1;
  std::vector<int> row(right.size() + 1);
  std::iota(row.begin(), row.end(), 0);
  for (std::size_t i = 0; i < left.size(); ++i) {
    int diagonal = row[0];
    row[0] = static_cast<int>(i) + 1;
    int least = row[0];
    for (std::size_t j = 0; j < right.size(); ++j) {
      const int replaced = diagonal + (left[i] == right[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, diagonal + 1, row[j] + 1});
      least = std::min(least, row[j + 1]);
    }
    if (least > most) return most + 1;
  }
  return row.back();
}

int EditsAt(const Words& text, std::size_t at, const Words& term, int most) {
  int edits = 0;
  for (std::size_t i = 0; i < term.size() && edits <= most; ++i) {
    edits += EditDistance(text[at + i].text, term[i].text, most - edits);
  }
  return edits;
}

WordRules::WordRules(const Element* element, const WordRules* inherited)
    : case_sensitive_(FlagAttribute(element, "isCaseSensitive",
                                    inherited != nullptr && inherited->case_sensitive_)),
      most_edits_(CountAttribute(element, "maxLevenshteinDistance",
                                 inherited != nullptr ? inherited->most_edits_ : 0)) {
  if (!FlagAttribute(element, "tokenize", true)) {
    ThrowAt(element, code::kUnsupported, "tokenize=\"false\"", LocalName(element));
  }
  const auto separator = Attribute(element, "wordSeparatorCharacterRE");
  separator_ = separator || inherited == nullptr
                   ? CompileSeparator(element, separator.value_or(kUsualSeparator))
                   : inherited->separator_;
}

void WordRules::AddWord(std::string_view text, std::size_t begin, std::size_t end,
                        Words& words) const {
  const std::string_view raw = text.substr(begin, end - begin);
  const std::u32string points = CodePoints(raw);
  const auto first = static_cast<std::size_t>(
      std::find_if_not(points.begin(), points.end(), IsPunctuation) - points.begin());
  if (first == points.size()) return;
  const auto last = static_cast<std::size_t>(
      points.rend() - std::find_if_not(points.rbegin(), points.rend(), IsPunctuation));
  const std::string_view word = Characters(raw, first, last - first);
  const std::size_t word_begin = begin + static_cast<std::size_t>(word.data() - raw.data());
  words.push_back({CodePoints(case_sensitive_ ? std::string(word) : LowerCase(word)), word_begin,
                   word_begin + word.size()});
}

std::optional<Words> WordRules::Split(std::string_view text) const {
  const auto separators = separator_->FindAll(text);
  if (!separators) return std::nullopt;
  Words words;
  std::size_t begin = 0;
  for (const Pattern::Match& separator : *separators) {
    AddWord(text, begin, separator.begin, words);
    begin = separator.end;
  }
  AddWord(text, begin, text.size(), words);
  return words;
}

}  // namespace svmscore::transform
