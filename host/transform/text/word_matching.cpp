#include "host/transform/text/word_matching.h"

#include <algorithm>
#include <numeric>

#include "host/transform/text/unicode.h"

namespace svmscore::transform {
namespace {

// Units for a byte of a text that is taken apart: its case, and whether it is punctuation.
constexpr std::size_t kSplitCost = 16;
constexpr std::size_t kEditCost = 2;  // for each pair of characters that are compared
constexpr std::size_t kWordCost = 16;

// False for any two words once the work is spent.
bool Equal(const Word& left, const Word& right, WorkBudget& work) {
  return left.text.size() == right.text.size() && work.Spend(left.text.size()) &&
         left.text == right.text;
}

// The distance of words whose lengths differ by at most `most`; some number above `most` where it
// is greater. A path that leaves the band of `most` on either side of the diagonal has more edits
// than that.
int DistanceInBand(std::u32string_view left, std::u32string_view right, int most) {
  const auto width = static_cast<std::size_t>(most);
  std::vector<int> row(right.size() + 1);
  std::iota(row.begin(), row.end(), 0);
  for (std::size_t i = 1; i <= left.size(); ++i) {
    const std::size_t first = i > width ? i - width : 1;
    const std::size_t last = std::min(right.size(), i + width);
    int diagonal = row[first - 1];
    row[first - 1] = first == 1 ? static_cast<int>(i) : most + 1;
    int least = row[first - 1];
    for (std::size_t j = first; j <= last; ++j) {
      const int replaced = diagonal + (left[i - 1] == right[j - 1] ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({replaced, diagonal + 1, row[j - 1] + 1});
      least = std::min(least, row[j]);
    }
    if (least > most) return most + 1;
  }
  return row.back();
}

}  // namespace

std::optional<int> EditDistance(std::u32string_view left, std::u32string_view right, int most,
                                WorkBudget& work) {
  const std::size_t longer = std::max(left.size(), right.size());
  const std::size_t shorter = std::min(left.size(), right.size());
  if (!work.Spend(kWordCost + (longer == shorter ? longer : 0))) return std::nullopt;
  if (left == right) return 0;
  if (most == 0 || longer - shorter > static_cast<std::size_t>(most)) return most + 1;
  // No distance exceeds the longer length.
  const auto width = std::min(static_cast<std::size_t>(most), longer);
  if (!work.Spend(kEditCost * longer * std::min(2 * width + 1, longer))) return std::nullopt;
  return DistanceInBand(left, right, static_cast<int>(width));
}

std::optional<int> EditsAt(const Words& text, std::size_t at, const Words& term, int most,
                           WorkBudget& work) {
  int edits = 0;
  for (std::size_t i = 0; i < term.size() && edits <= most; ++i) {
    const auto more = EditDistance(text[at + i].text, term[i].text, most - edits, work);
    if (!more) return std::nullopt;
    edits += *more;
  }
  return edits;
}

// By Knuth, Morris and Pratt: no word of the text is looked at twice.
std::optional<std::size_t> Occurrences(const Words& text, const Words& term, WorkBudget& work) {
  if (term.size() > text.size()) return 0;
  if (!work.Spend(kWordCost * (text.size() + term.size()))) return std::nullopt;
  // border[i]: how many words at the term's beginning are also the last of its first i + 1 words.
  std::vector<std::size_t> border(term.size());
  for (std::size_t i = 1, same = 0; i < term.size(); ++i) {
    while (same > 0 && !Equal(term[i], term[same], work)) same = border[same - 1];
    if (Equal(term[i], term[same], work)) ++same;
    border[i] = same;
  }
  std::size_t count = 0;
  std::size_t same = 0;
  for (const Word& word : text) {
    while (same > 0 && !Equal(word, term[same], work)) same = border[same - 1];
    if (Equal(word, term[same], work)) ++same;
    if (same < term.size()) continue;
    ++count;
    same = border[same - 1];
  }
  return work.Left() > 0 ? std::optional(count) : std::nullopt;
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

std::optional<Words> WordRules::Split(std::string_view text, WorkBudget& work) const {
  if (!work.Spend(kSplitCost * text.size())) return std::nullopt;
  const auto separators = separator_->FindAll(text, work);
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
