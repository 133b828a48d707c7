// How well predictions agree with what was expected.
#ifndef TOOLS_VERIFY_AGREEMENT_H_
#define TOOLS_VERIFY_AGREEMENT_H_

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/output/target_rules.h"

namespace svmscore::tools {

// Takes the predictions of cases beside what was expected of them, in their order. Cases of which
// nothing is expected do not count, and those without a prediction are counted only.
// [one thread] for each object. Owns: the caller what is returned. Lives: the rules, longer than
// this object. Fails: std::bad_alloc.
class Agreement {
 public:
  struct Confusion {
    std::string expected;
    std::string predicted;
    std::size_t cases = 0;
  };

  // `column` is the name of the column of expected values.
  Agreement(const output::TargetRules& targets, std::string column);

  // A case that expects `expected`, empty for nothing. `predicted` is the prediction as a text;
  // nothing where there is none. `row` counts from 1.
  void Add(std::size_t row, std::string_view expected, std::optional<std::string_view> predicted);

  const std::string& Column() const { return column_; }
  bool IsClassification() const { return classification_; }
  // Cases with both an expected value and a prediction; of a regression, both are numbers.
  std::size_t Compared() const { return compared_; }
  // Cases that expect something and have no prediction.
  std::size_t Unpredicted() const { return unpredicted_; }

  // Of a classification. Categories compare as the target's type has it.
  std::size_t Right() const { return right_; }
  // Right() / Compared(); nothing without a case.
  std::optional<double> Accuracy() const;
  // What was expected, what was predicted, how often: the most frequent first, the right ones too.
  std::vector<Confusion> Confusions() const;
  // The categories of the target, then the texts that were expected and are none of them.
  std::vector<std::string> Categories() const;

  // Of a regression, over the compared cases with expected values y and predictions f:
  // 1 - sum (y - f)^2 / sum (y - mean y)^2. Nothing where all y are equal.
  std::optional<double> RSquared() const;
  // sqrt(mean (y - f)^2); nothing without a case.
  std::optional<double> RootMeanSquare() const;
  // The largest |y - f| and its row, the first of several; nothing without a case.
  std::optional<std::pair<double, std::size_t>> LargestDifference() const;

  // The figures in lines for people, printable. Empty where no case was compared.
  std::string Text() const;

 private:
  struct Pair {
    double expected;
    double predicted;
    std::size_t row;
  };

  std::string NameOf(std::string_view text) const;
  std::string Matrix() const;

  const output::TargetRules* targets_;
  std::string column_;
  bool classification_;
  std::size_t compared_ = 0;
  std::size_t unpredicted_ = 0;
  std::size_t right_ = 0;
  std::map<std::pair<std::string, std::string>, std::size_t> confusions_;
  std::vector<Pair> pairs_;
};

}  // namespace svmscore::tools

#endif  // TOOLS_VERIFY_AGREEMENT_H_
