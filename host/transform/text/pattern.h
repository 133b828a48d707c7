// Perl-compatible regular expressions over UTF-8.
#ifndef HOST_TRANSFORM_TEXT_PATTERN_H_
#define HOST_TRANSFORM_TEXT_PATTERN_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/transform/text/work_budget.h"

namespace svmscore::transform {

// Immutable; any number of threads. A search spends work, so that no text keeps a thread busy for
// long: when there is none left, and for texts that are not UTF-8, the answer is nothing.
class Pattern {
 public:
  // Null where the text is not a pattern; `error`, where given, then says why.
  static std::unique_ptr<Pattern> Compile(std::string_view text, bool ignore_case,
                                          std::string* error);
  ~Pattern();
  Pattern(const Pattern&) = delete;
  Pattern& operator=(const Pattern&) = delete;

  // True where some part of the text matches.
  std::optional<bool> Matches(std::string_view text, WorkBudget& work) const;

  // The matches of at least one character, from left to right, without overlaps.
  struct Match {
    std::size_t begin;
    std::size_t end;
  };
  std::optional<std::vector<Match>> FindAll(std::string_view text, WorkBudget& work) const;
  // Every match replaced: $1 to $9 mean groups, $$ a dollar sign.
  std::optional<std::string> Replace(std::string_view text, std::string_view replacement,
                                     WorkBudget& work) const;
  // Every match replaced by the text as it is.
  std::optional<std::string> ReplaceLiteral(std::string_view text, std::string_view replacement,
                                            WorkBudget& work) const;

  // False where a dollar sign in the replacement is followed by neither a digit nor another one.
  static bool IsReplacement(std::string_view replacement);

 private:
  struct Code;
  class Search;
  explicit Pattern(std::unique_ptr<Code> code);
  std::optional<std::string> Substitute(std::string_view text, std::string_view replacement,
                                        std::uint32_t options, WorkBudget& work) const;

  std::unique_ptr<Code> code_;
};

}  // namespace svmscore::transform

#endif  // HOST_TRANSFORM_TEXT_PATTERN_H_
