#include "tools/doctor/comparison.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "host/output/verification_records.h"
#include "host/text/number_text.h"
#include "tools/base/bad_input.h"

namespace svmscore::tools {
namespace {

// How many rows are shown with values, and how many by their numbers.
constexpr std::size_t kShownValues = 3;
constexpr std::size_t kShownRows = 10;

ComparedCell CompareCell(const Quantity& quantity, const std::string& expected, double tolerance,
                         VerifyCase& scored) {
  ComparedCell cell;
  const transform::Value actual = scored.Read(quantity);
  if (actual.IsPresent()) {
    cell.got = scored.TextOf(actual);
    cell.number = ParseNumber(cell.got);
  }
  if (expected.empty()) return cell;
  cell.expected = ParseNumber(expected);
  output::Allowance allowance;
  allowance.precision = tolerance;
  if (quantity.is_label) allowance = {0.0, 0.0};
  cell.agrees = output::Judge(expected, actual, allowance).agrees;
  return cell;
}

ComparedRow CompareRow(const CaseFiles& files, const ExpectedColumns& columns, std::size_t row,
                       VerifyCase& scored) {
  SetInputs(files.cases, files.cases.rows[row], files.rules, scored);
  scored.Score();
  ComparedRow compared;
  compared.status = scored.Status();
  for (const ExpectedColumn& column : columns) {
    compared.cells.push_back(CompareCell(column.quantity, files.expected.rows[row][column.cell],
                                         files.tolerance, scored));
    compared.agrees = compared.agrees && compared.cells.back().agrees;
  }
  return compared;
}

std::string TextOfRow(const CaseFiles& files, const Comparison& comparison, std::size_t row) {
  std::string text;
  const ComparedRow& compared = comparison.rows[row];
  for (std::size_t i = 0; i < comparison.columns.size(); ++i) {
    if (compared.cells[i].agrees) continue;
    const ExpectedColumn& column = comparison.columns[i];
    std::string got = compared.cells[i].got;
    if (got.empty()) {
      got = "nothing";
      if (compared.status != 0) {
        got += fmt::format(" (status {}; {})", compared.status, compared.why);
      }
    }
    text = fmt::format("row {}: {}: expected {}, got {}", row + 1, column.quantity.name,
                       files.expected.rows[row][column.cell], got);
    break;
  }
  return text;
}

void TellMismatch(const CaseFiles& files, const Comparison& comparison, FindingList& findings) {
  std::string what = fmt::format("{} of {} rows disagree with {}", comparison.wrong.size(),
                                 comparison.rows.size(), files.expected.name);
  for (std::size_t i = 0; i < std::min(comparison.wrong.size(), kShownValues); ++i) {
    what += "; " + TextOfRow(files, comparison, comparison.wrong[i]);
  }
  if (comparison.wrong.size() > kShownValues) {
    what += "; rows";
    for (std::size_t i = kShownValues; i < std::min(comparison.wrong.size(), kShownRows); ++i) {
      what += fmt::format("{} {}", i == kShownValues ? "" : ",", comparison.wrong[i] + 1);
    }
    if (comparison.wrong.size() > kShownRows) {
      what += fmt::format(" and {} more", comparison.wrong.size() - kShownRows);
    }
  }
  findings.Add("mismatch", nullptr, std::move(what));
}

// Without the machines that the model lacks: what is wrong with the categories of a machine shows
// in the predictions, and is found in the document. Unless nothing else is expected.
ExpectedColumns WithoutLackingMachines(const ExpectedColumns& columns) {
  ExpectedColumns kept;
  for (const ExpectedColumn& column : columns) {
    const Quantity& quantity = column.quantity;
    if (quantity.kind != Quantity::Kind::kDecision || quantity.index >= 0) kept.push_back(column);
  }
  return kept.empty() ? columns : kept;
}

// The simplest explanation comes first, for every way to read the columns: another scale may also
// fit columns that mean something else.
const Comparison* FirstExplained(const Suspect& suspect, const CaseFiles& files,
                                 const std::vector<Comparison>& comparisons,
                                 FindingList& findings) {
  for (const Comparison& comparison : comparisons) {
    if (ExplainByCategories(suspect, files, comparison, findings) ||
        ExplainByNumbers(suspect, comparison, NumberRelation::kNegated, findings) ||
        ExplainByOrder(comparison, findings) ||
        ExplainByChange(suspect, files, comparison, findings)) {
      return &comparison;
    }
  }
  for (const NumberRelation relation : {NumberRelation::kShifted, NumberRelation::kRescaled}) {
    for (const Comparison& comparison : comparisons) {
      if (ExplainByNumbers(suspect, comparison, relation, findings)) return &comparison;
    }
  }
  return nullptr;
}

std::optional<Agreement> AgreementOf(const LoadedModel& loaded, const CaseFiles& files,
                                     const Comparison& comparison) {
  const std::size_t column = PredictionAmong(loaded, comparison.columns);
  if (column == comparison.columns.size()) return std::nullopt;
  const std::size_t cell = comparison.columns[column].cell;
  Agreement agreement(loaded.output->Targets(), files.expected.header[cell]);
  for (std::size_t row = 0; row < comparison.rows.size(); ++row) {
    const std::string& got = comparison.rows[row].cells[column].got;
    agreement.Add(row + 1, files.expected.rows[row][cell],
                  got.empty() ? std::nullopt : std::optional<std::string_view>(got));
  }
  return agreement;
}

}  // namespace

Comparison Compare(const LoadedModel& loaded, const CaseFiles& files,
                   const ExpectedColumns& columns) {
  Comparison comparison;
  comparison.columns = columns;
  VerifyCase scored(loaded);
  for (std::size_t row = 0; row < files.cases.rows.size(); ++row) {
    comparison.rows.push_back(CompareRow(files, columns, row, scored));
    ComparedRow& compared = comparison.rows.back();
    if (!compared.agrees) comparison.wrong.push_back(row);
    // Only the first rows are told with what they got.
    const bool told = !compared.agrees && comparison.wrong.size() <= kShownValues;
    if (told && compared.status != 0) compared.why = scored.WhyFailed();
    for (const ExpectedColumn& column : columns) {
      comparison.expects = comparison.expects || !files.expected.rows[row][column.cell].empty();
    }
  }
  return comparison;
}

std::size_t CountWrong(const LoadedModel& loaded, const CaseFiles& files,
                       const ExpectedColumns& columns, const std::vector<std::size_t>& rows,
                       std::size_t limit) {
  VerifyCase scored(loaded);
  std::size_t wrong = 0;
  for (const std::size_t row : rows) {
    if (wrong >= limit) break;
    if (!CompareRow(files, columns, row, scored).agrees) ++wrong;
  }
  return wrong;
}

std::optional<Agreement> CheckScores(const Suspect& suspect, const CaseFiles& files,
                                     FindingList& findings) {
  std::vector<Comparison> comparisons;
  for (const ExpectedColumns& columns :
       ReadingsOf(suspect.loaded, files.cases, files.expected).all) {
    comparisons.push_back(Compare(suspect.loaded, files, WithoutLackingMachines(columns)));
    if (!comparisons.back().expects) {
      throw BadCases(fmt::format("{} expects nothing: every cell is empty", files.expected.name));
    }
    if (comparisons.back().wrong.empty()) {
      return AgreementOf(suspect.loaded, files, comparisons.back());
    }
  }
  std::stable_sort(
      comparisons.begin(), comparisons.end(),
      [](const Comparison& a, const Comparison& b) { return a.wrong.size() < b.wrong.size(); });
  FindingList explained(suspect.loaded.document);
  const Comparison* comparison = FirstExplained(suspect, files, comparisons, explained);
  const Comparison& told = comparison != nullptr ? *comparison : comparisons.front();
  TellMismatch(files, told, findings);
  for (Finding& finding : explained.Take()) findings.Add(std::move(finding));
  if (comparison == nullptr) {
    FindFieldsBeyondVectors(suspect, files, findings);
    FindSeparatingFields(suspect, files, comparisons.front(), findings);
  }
  return AgreementOf(suspect.loaded, files, told);
}

}  // namespace svmscore::tools
