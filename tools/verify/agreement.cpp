#include "tools/verify/agreement.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "host/text/number_text.h"
#include "host/text/printable.h"

namespace svmscore::tools {
namespace {

using MCZandor_850::ScoreValue;

// With more categories than these a matrix is not written for people, but so many pairs.
constexpr std::size_t kWidestMatrix = 10;
constexpr std::size_t kPairsShown = 10;
constexpr std::size_t kLongestCategory = 20;

std::string Shown(std::string_view category) {
  return Printable(category, kLongestCategory);
}

}  // namespace

Agreement::Agreement(const output::TargetRules& targets, std::string column)
    : targets_(&targets),
      column_(std::move(column)),
      classification_(targets.GetScheme().method != output::Method::kRegression) {}

// The target's own spelling of a category; the text where it is none.
std::string Agreement::NameOf(std::string_view text) const {
  const int category = targets_->Target().GetCategoryIndexOfText(std::string(text));
  if (category < 0) return std::string(text);
  return targets_->Target().GetCategories()[static_cast<std::size_t>(category)]->GetText();
}

void Agreement::Add(std::size_t row, std::string_view expected,
                    std::optional<std::string_view> predicted) {
  if (expected.empty()) return;
  if (!predicted) {
    ++unpredicted_;
    return;
  }
  if (classification_) {
    auto pair = std::pair(NameOf(expected), NameOf(*predicted));
    ++compared_;
    if (pair.first == pair.second) ++right_;
    ++confusions_[std::move(pair)];
    return;
  }
  const auto wanted = ParseNumber(expected);
  const auto got = ParseNumber(*predicted);
  if (!wanted || !got || !std::isfinite(*wanted) || !std::isfinite(*got)) return;
  ++compared_;
  pairs_.push_back({*wanted, *got, row});
}

std::optional<double> Agreement::Accuracy() const {
  if (!classification_ || compared_ == 0) return std::nullopt;
  return static_cast<double>(right_) / static_cast<double>(compared_);
}

std::vector<Agreement::Confusion> Agreement::Confusions() const {
  std::vector<Confusion> list;
  for (const auto& [pair, cases] : confusions_) list.push_back({pair.first, pair.second, cases});
  std::stable_sort(list.begin(), list.end(),
                   [](const Confusion& a, const Confusion& b) { return a.cases > b.cases; });
  return list;
}

std::vector<std::string> Agreement::Categories() const {
  std::vector<std::string> names;
  for (const ScoreValue* category : targets_->Target().GetCategories()) {
    names.push_back(category->GetText());
  }
  for (const auto& [pair, cases] : confusions_) {
    if (targets_->Target().GetCategoryIndexOfText(pair.first) < 0 &&
        std::find(names.begin(), names.end(), pair.first) == names.end()) {
      names.push_back(pair.first);
    }
  }
  return names;
}

std::optional<double> Agreement::RSquared() const {
  double mean = 0.0;
  for (const Pair& pair : pairs_) mean += pair.expected / static_cast<double>(pairs_.size());
  double residual = 0.0;
  double total = 0.0;
  for (const Pair& pair : pairs_) {
    residual += (pair.expected - pair.predicted) * (pair.expected - pair.predicted);
    total += (pair.expected - mean) * (pair.expected - mean);
  }
  if (!(total > 0.0)) return std::nullopt;
  return 1.0 - residual / total;
}

std::optional<double> Agreement::RootMeanSquare() const {
  if (pairs_.empty()) return std::nullopt;
  double sum = 0.0;
  for (const Pair& pair : pairs_) {
    sum += (pair.expected - pair.predicted) * (pair.expected - pair.predicted);
  }
  return std::sqrt(sum / static_cast<double>(pairs_.size()));
}

std::optional<std::pair<double, std::size_t>> Agreement::LargestDifference() const {
  std::optional<std::pair<double, std::size_t>> largest;
  for (const Pair& pair : pairs_) {
    const double difference = std::fabs(pair.expected - pair.predicted);
    if (!largest || difference > largest->first) largest = {difference, pair.row};
  }
  return largest;
}

std::string Agreement::Matrix() const {
  const std::vector<std::string> names = Categories();
  if (names.size() > kWidestMatrix) {
    std::string text;
    std::size_t shown = 0;
    for (const Confusion& pair : Confusions()) {
      if (pair.expected == pair.predicted || shown == kPairsShown) continue;
      text += ++shown == 1 ? "most frequent confusions:\n" : "";
      text += fmt::format("{:>8}  {} taken for {}\n", pair.cases, Shown(pair.expected),
                          Shown(pair.predicted));
    }
    return text;
  }
  std::size_t width = 8;
  for (const std::string& name : names) width = std::max(width, Shown(name).size() + 2);
  std::string text = "confusion matrix, expected downwards, predicted across:\n";
  text += std::string(width, ' ');
  for (const std::string& name : names) text += fmt::format("{:>{}}", Shown(name), width);
  for (const std::string& expected : names) {
    text += fmt::format("\n{:<{}}", Shown(expected), width);
    for (const std::string& predicted : names) {
      const auto found = confusions_.find({expected, predicted});
      text += fmt::format("{:>{}}", found == confusions_.end() ? 0 : found->second, width);
    }
  }
  return text + '\n';
}

std::string Agreement::Text() const {
  if (compared_ == 0) return {};
  const std::string without =
      unpredicted_ == 0
          ? ""
          : fmt::format("; {} no prediction", unpredicted_ == 1
                                                  ? "1 case has"
                                                  : fmt::format("{} cases have", unpredicted_));
  if (classification_) {
    return fmt::format("accuracy {:.4g}: {} of {} predictions are the expected category{}\n{}",
                       *Accuracy(), right_, compared_, without, Matrix());
  }
  const auto [largest, row] = *LargestDifference();
  const auto r_squared = RSquared();
  return fmt::format("R2 {}, RMSE {:.6g}, largest difference {:.6g} (record {}), {} case{}{}\n",
                     r_squared ? fmt::format("{:.6g}", *r_squared) : "undefined", *RootMeanSquare(),
                     largest, row, compared_, compared_ == 1 ? "" : "s", without);
}

}  // namespace svmscore::tools
