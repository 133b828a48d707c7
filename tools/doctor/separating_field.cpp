// Finds fields that distinguish the rows that disagree from the others.
#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

#include <fmt/format.h>

#include "host/text/number_text.h"
#include "tools/doctor/comparison.h"

namespace svmscore::tools {
namespace {

// With fewer rows on either side, any field would distinguish them.
constexpr std::size_t kNeededForValues = 3;
constexpr std::size_t kNeededForNumbers = 6;
constexpr std::size_t kFewValues = 3;

// The cells of one field, in the rows that disagree and in those that agree.
struct Column {
  std::vector<std::string> wrong;
  std::vector<std::string> right;
};

std::optional<std::string> Missing(const Column& column) {
  const auto empty = [](const std::string& cell) { return cell.empty(); };
  if (!std::all_of(column.wrong.begin(), column.wrong.end(), empty)) return std::nullopt;
  if (std::any_of(column.right.begin(), column.right.end(), empty)) return std::nullopt;
  return "is missing in all rows that disagree, and in none that agree";
}

std::optional<std::string> Values(const Column& column) {
  const std::set<std::string> wrong(column.wrong.begin(), column.wrong.end());
  const std::set<std::string> right(column.right.begin(), column.right.end());
  // As many values as rows is not a pattern.
  if (wrong.size() > kFewValues || wrong.size() * 2 > column.wrong.size()) return std::nullopt;
  std::string text;
  for (const std::string& value : wrong) {
    if (right.contains(value)) return std::nullopt;
    text += fmt::format("{}\"{}\"", text.empty() ? "" : " or ", value);
  }
  return fmt::format("is {} in all rows that disagree, and in none that agree", text);
}

std::pair<double, double> RangeOf(const std::vector<std::string>& cells) {
  std::pair<double, double> range(std::numeric_limits<double>::infinity(),
                                  -std::numeric_limits<double>::infinity());
  for (const std::string& cell : cells) {
    const auto number = ParseNumber(cell);
    if (!number) return {std::nan(""), std::nan("")};
    range.first = std::min(range.first, *number);
    range.second = std::max(range.second, *number);
  }
  return range;
}

std::optional<std::string> Numbers(const Column& column) {
  if (column.wrong.size() < kNeededForNumbers || column.right.size() < kNeededForNumbers) {
    return std::nullopt;
  }
  const auto wrong = RangeOf(column.wrong);
  const auto right = RangeOf(column.right);
  if (!(wrong.first > right.second) && !(wrong.second < right.first)) return std::nullopt;
  return fmt::format(
      "is from {} to {} in the rows that disagree, and from {} to {} in those that "
      "agree",
      FormatNumber(wrong.first), FormatNumber(wrong.second), FormatNumber(right.first),
      FormatNumber(right.second));
}

}  // namespace

void FindSeparatingFields(const Suspect& suspect, const CaseFiles& files,
                          const Comparison& comparison, FindingList& findings) {
  VerifyCase scored(suspect.loaded);
  for (std::size_t i = 0; i < files.cases.header.size(); ++i) {
    const std::string& name = files.cases.header[i];
    if (!scored.IsInput(name)) continue;
    const MCZandor_850::ScoreDictVar& var = scored.VariableOf(*scored.FindInput(name));
    std::string buffer;
    Column column;
    for (std::size_t row = 0; row < comparison.rows.size(); ++row) {
      const std::string& cell = files.cases.rows[row][i];
      const bool missing = files.rules.IsMissing(cell, var);
      (comparison.rows[row].agrees ? column.right : column.wrong)
          .push_back(missing ? std::string() : std::string(files.rules.TextOf(cell, var, buffer)));
    }
    if (column.wrong.size() < kNeededForValues || column.right.size() < kNeededForValues) return;
    auto pattern = Missing(column);
    if (!pattern) pattern = Values(column);
    if (!pattern) pattern = Numbers(column);
    if (pattern) findings.Add("mismatch-field", nullptr, fmt::format("{} {}", name, *pattern));
  }
}

}  // namespace svmscore::tools
