// Texts as words, and how far words are from each other.
#ifndef HOST_TRANSFORM_TEXT_WORD_MATCHING_H_
#define HOST_TRANSFORM_TEXT_WORD_MATCHING_H_

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/transform/text/pattern.h"
#include "host/transform/text/work_budget.h"

namespace svmscore::transform {

// A word and its place in the text, without the punctuation around it.
struct Word {
  std::u32string text;  // in lower case where case does not matter
  std::size_t begin;    // bytes
  std::size_t end;
};
using Words = std::vector<Word>;

// The number of insertions, deletions and replacements of characters that turn one word into the
// other, or some number above `most` if it is more than that. Nothing once the work is spent.
std::optional<int> EditDistance(std::u32string_view left, std::u32string_view right, int most,
                                WorkBudget& work);

// The number of edits that turn the words of `text` from `at` on into those of `term`; some number
// above `most` if it is more, and nothing once the work is spent. REQUIRES: text holds that many
// words.
std::optional<int> EditsAt(const Words& text, std::size_t at, const Words& term, int most,
                           WorkBudget& work);

// How often the term occurs in the text, word by word; occurrences may overlap.
// Nothing once the work is spent. REQUIRES: the term is not empty.
std::optional<std::size_t> Occurrences(const Words& text, const Words& term, WorkBudget& work);

// How a text is taken apart and compared.
class WordRules {
 public:
  // `separator` matches what lies between words; not null.
  WordRules(bool case_sensitive, int most_edits, std::shared_ptr<const Pattern> separator)
      : case_sensitive_(case_sensitive),
        most_edits_(most_edits),
        separator_(std::move(separator)) {}

  // Nothing where the text is not UTF-8 or once the work is spent.
  std::optional<Words> Split(std::string_view text, WorkBudget& work) const;
  int MostEdits() const { return most_edits_; }
  bool IgnoresCase() const { return !case_sensitive_; }
  const std::shared_ptr<const Pattern>& Separator() const { return separator_; }

 private:
  void AddWord(std::string_view text, std::size_t begin, std::size_t end, Words& words) const;

  bool case_sensitive_;
  int most_edits_;
  std::shared_ptr<const Pattern> separator_;
};

}  // namespace svmscore::transform

#endif  // HOST_TRANSFORM_TEXT_WORD_MATCHING_H_
