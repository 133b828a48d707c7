// How the expected values relate to the actual ones.
#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "host/text/number_text.h"
#include "host/xml/attributes.h"
#include "tools/doctor/comparison.h"

namespace svmscore::tools {
namespace {

using Kind = Quantity::Kind;

// With fewer rows, any explanation would fit.
constexpr std::size_t kNeededRows = 3;
constexpr double kPrecision = 1e-6;

const Element* FirstMachine(const LoadedModel& loaded) {
  return FindChild(FindModelElement(loaded.document.Dom()), "SupportVectorMachine");
}

// The expected category for each predicted one, if it is always the same; else nothing.
std::map<std::string, std::string> Renaming(const CaseFiles& files, const Comparison& comparison,
                                            std::size_t column) {
  std::map<std::string, std::string> renamed;
  for (std::size_t row = 0; row < comparison.rows.size(); ++row) {
    const std::string& expected = files.expected.rows[row][comparison.columns[column].cell];
    const std::string& got = comparison.rows[row].cells[column].got;
    if (expected.empty()) continue;
    if (got.empty() || renamed.try_emplace(got, expected).first->second != expected) return {};
  }
  std::set<std::string> expected;
  for (const auto& [got, wanted] : renamed) expected.insert(wanted);
  if (expected.size() != renamed.size()) return {};
  return renamed;
}

bool ExplainLabels(const Suspect& suspect, const CaseFiles& files, const Comparison& comparison,
                   FindingList& findings) {
  const auto& target = suspect.loaded.output->Targets().Target();
  for (std::size_t i = 0; i < comparison.columns.size(); ++i) {
    if (!comparison.columns[i].quantity.is_label ||
        comparison.columns[i].quantity.kind == Kind::kStatus) {
      continue;
    }
    const auto renamed = Renaming(files, comparison, i);
    std::string what;
    bool listed = false;  // some text that is expected instead is a category, too
    for (const auto& [got, expected] : renamed) {
      if (got == expected) continue;
      listed = listed || target.GetCategoryIndexOfText(expected) >= 0;
      what += fmt::format("{}\"{}\" is expected wherever \"{}\" is predicted",
                          what.empty() ? "" : ", ", expected, got);
    }
    if (renamed.size() < 2 || what.empty()) continue;
    what += ", in all rows";
    if (!listed) {
      findings.Add("categories-renamed", nullptr, std::move(what));
      return true;
    }
    const bool two = target.GetCategories().size() == 2;
    findings.Add(two ? KindOfFinding("classes-swapped") : KindOfFinding("classes-permuted"),
                 FirstMachine(suspect.loaded), std::move(what));
    return true;
  }
  return false;
}

bool IsPercentage(const Suspect& suspect, const Quantity& quantity) {
  if (quantity.kind == Kind::kProbability) return true;
  return quantity.kind == Kind::kOutputField &&
         suspect.loaded.output->Fields()[static_cast<std::size_t>(quantity.index)].feature ==
             output::Feature::kProbability;
}

bool Near(double a, double b) {
  return std::abs(a - b) <= kPrecision * std::max(std::abs(a), std::abs(b)) + 1e-12;
}

// True if column `from` holds the values expected of column `to`; with `complement`, 1 minus these
// values.
bool Holds(const Comparison& comparison, std::size_t from, std::size_t to, bool complement) {
  std::size_t rows = 0;
  for (const ComparedRow& row : comparison.rows) {
    if (!row.cells[to].expected) continue;
    if (!row.cells[from].number) return false;
    const double got = *row.cells[from].number;
    if (!Near(complement ? 1.0 - got : got, *row.cells[to].expected)) return false;
    ++rows;
  }
  return rows >= kNeededRows;
}

bool ExplainPercentages(const Suspect& suspect, const Comparison& comparison,
                        FindingList& findings) {
  std::vector<std::size_t> columns;
  for (std::size_t i = 0; i < comparison.columns.size(); ++i) {
    if (IsPercentage(suspect, comparison.columns[i].quantity)) columns.push_back(i);
  }
  const bool two = suspect.loaded.output->Targets().Target().GetCategories().size() == 2;
  std::string what;
  for (const std::size_t to : columns) {
    if (Holds(comparison, to, to, false)) continue;
    const auto from = std::find_if(columns.begin(), columns.end(), [&](std::size_t other) {
      return other != to && Holds(comparison, other, to, false);
    });
    const std::string& name = comparison.columns[to].quantity.name;
    if (from != columns.end()) {
      what += fmt::format("{}{} is in {}", what.empty() ? "" : ", ", name,
                          comparison.columns[*from].quantity.name);
    } else if (two && Holds(comparison, to, to, true)) {
      what += fmt::format("{}{} holds what is expected of the other category",
                          what.empty() ? "" : ", ", name);
    } else {
      return false;
    }
  }
  if (what.empty()) return false;
  findings.Add("percentages-swapped", FirstMachine(suspect.loaded), what);
  return true;
}

// expected = scale * got + shift.
struct Line {
  double scale;
  double shift;
};

std::optional<Line> FitLine(const Comparison& comparison, std::size_t column) {
  std::vector<std::pair<double, double>> points;
  for (const ComparedRow& row : comparison.rows) {
    const ComparedCell& cell = row.cells[column];
    if (cell.number && cell.expected) points.emplace_back(*cell.number, *cell.expected);
  }
  if (points.size() < kNeededRows) return std::nullopt;
  const auto [least, most] = std::minmax_element(points.begin(), points.end());
  const double width = most->first - least->first;
  const Line line{(most->second - least->second) / width,
                  least->second - (most->second - least->second) / width * least->first};
  if (!(width > 0.0) || !std::isfinite(line.scale) || line.scale == 0.0) return std::nullopt;
  const double height = std::abs(most->second - least->second);
  std::size_t between = 0;
  for (const auto& [got, expected] : points) {
    const double error = std::abs(line.scale * got + line.shift - expected);
    if (error > kPrecision * std::max(height, std::abs(expected))) return std::nullopt;
    if (got > least->first && got < most->first) ++between;
  }
  // Two points lie on any line.
  return between > 0 ? std::optional(line) : std::nullopt;
}

NumberRelation RelationOf(const Line& line) {
  if (std::abs(line.scale + 1.0) < kPrecision) return NumberRelation::kNegated;
  return std::abs(line.scale - 1.0) < kPrecision ? NumberRelation::kShifted
                                                 : NumberRelation::kRescaled;
}

// A number of the column, and its row.
using NumberedRows = std::vector<std::pair<double, std::size_t>>;

}  // namespace

bool ExplainByOrder(const Comparison& comparison, FindingList& findings) {
  for (std::size_t i = 0; i < comparison.columns.size(); ++i) {
    NumberedRows got;
    NumberedRows expected;
    for (std::size_t row = 0; row < comparison.rows.size(); ++row) {
      const ComparedCell& cell = comparison.rows[row].cells[i];
      if (cell.number) got.emplace_back(*cell.number, row);
      if (cell.expected) expected.emplace_back(*cell.expected, row);
    }
    if (got.size() < kNeededRows || got.size() != expected.size()) continue;
    std::sort(got.begin(), got.end());
    std::sort(expected.begin(), expected.end());
    // Few numbers, as shares of votes are, return in many orders.
    std::size_t distinct = 1;
    std::optional<std::size_t> moved;
    bool same = true;
    for (std::size_t at = 0; at < got.size() && same; ++at) {
      same = Near(got[at].first, expected[at].first);
      if (at > 0 && !Near(got[at - 1].first, got[at].first)) ++distinct;
      if (!moved && !comparison.rows[expected[at].second].cells[i].agrees) moved = at;
    }
    if (!same || !moved || distinct < kNeededRows || 2 * distinct < got.size()) continue;
    findings.Add("rows-reordered", nullptr,
                 fmt::format("{} has the expected values in another order: what is expected in row "
                             "{} is predicted for row {}",
                             comparison.columns[i].quantity.name, expected[*moved].second + 1,
                             got[*moved].second + 1));
    return true;
  }
  return false;
}

bool ExplainByCategories(const Suspect& suspect, const CaseFiles& files,
                         const Comparison& comparison, FindingList& findings) {
  const bool labels = ExplainLabels(suspect, files, comparison, findings);
  return ExplainPercentages(suspect, comparison, findings) || labels;
}

bool ExplainByNumbers(const Suspect& suspect, const Comparison& comparison, NumberRelation relation,
                      FindingList& findings) {
  if (suspect.loaded.output->Targets().GetScheme().method != output::Method::kRegression) {
    return false;
  }
  const Element* coefficients = FindChild(FirstMachine(suspect.loaded), "Coefficients");
  for (std::size_t i = 0; i < comparison.columns.size(); ++i) {
    const auto line = FitLine(comparison, i);
    if (!line || RelationOf(*line) != relation) continue;
    const std::string& name = comparison.columns[i].quantity.name;
    const bool shifted = std::abs(line->shift) >= kPrecision;
    // The texts are made apart: clang 14 mixes up the temporaries of the cases otherwise.
    switch (relation) {
      case NumberRelation::kNegated: {
        const std::string shift = shifted ? fmt::format("{:.6g} ", line->shift) : std::string();
        std::string what =
            fmt::format("in all rows the expected {} is {}minus the predicted one", name, shift);
        findings.Add("values-negated", coefficients, std::move(what));
        return true;
      }
      case NumberRelation::kShifted: {
        if (!shifted) continue;
        std::string what = fmt::format(
            "in all rows the expected {} is the predicted one plus {:.6g}; absoluteValue is {}",
            name, line->shift, AttributeText(coefficients, "absoluteValue"));
        findings.Add("constant-offset", coefficients, std::move(what));
        return true;
      }
      case NumberRelation::kRescaled: {
        std::string what =
            fmt::format("in all rows the expected {} is {:.6g} times the predicted one plus {:.6g}",
                        name, line->scale, line->shift);
        findings.Add("values-rescaled", coefficients, std::move(what));
        return true;
      }
    }
  }
  return false;
}

}  // namespace svmscore::tools
