#include "tools/verify/verify_files.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "host/text/number_text.h"
#include "tools/base/bad_input.h"
#include "tools/base/case_columns.h"
#include "tools/base/header_hints.h"

namespace svmscore::tools {
namespace {

using output::Feature;

// What a lone column of expected values may be: the prediction, or an output field made from it.
std::vector<Quantity> Candidates(const LoadedModel& loaded, const VerifyCase& scored) {
  std::vector<Quantity> candidates = {scored.Prediction()};
  for (const int field : loaded.output->FinalFields()) {
    const auto& output = loaded.output->Fields()[static_cast<std::size_t>(field)];
    if (output.feature == Feature::kExpression || output.feature == Feature::kDisplayValue) {
      candidates.push_back(*scored.FindOutputField(output.name));
    }
  }
  return candidates;
}

ExpectedColumns MatchExpected(const LoadedModel& loaded, const TextTable& expected,
                              const VerifyCase& scored) {
  ExpectedColumns matched;
  for (std::size_t i = 0; i < expected.header.size(); ++i) {
    auto quantity = scored.FindOutputField(expected.header[i]);
    if (!quantity) quantity = scored.FindPlainColumn(expected.header[i]);
    if (quantity) matched.push_back({i, *std::move(quantity)});
  }
  // Beside a column of predictions, one of the target's name has the actual values.
  const int target = expected.FindColumn(scored.Prediction().name);
  if (target >= 0 && PredictionAmong(loaded, matched) == matched.size()) {
    matched.push_back({static_cast<std::size_t>(target), scored.Prediction()});
  }
  return matched;
}

// The first column that does not name the rows; the first one where all do.
std::size_t FirstOfValues(const TextTable& expected) {
  const auto found = std::find_if_not(expected.header.begin(), expected.header.end(), NamesRows);
  return found == expected.header.end() ? 0
                                        : static_cast<std::size_t>(found - expected.header.begin());
}

bool IsDecision(const ExpectedColumn& column) {
  return column.quantity.kind == Quantity::Kind::kDecision;
}

bool IsCompared(std::size_t cell, const ExpectedColumns& columns) {
  return std::any_of(columns.begin(), columns.end(),
                     [cell](const ExpectedColumn& column) { return column.cell == cell; });
}

// Where only decision values are known by name, the first column beside them that may be a result;
// header.size() without one.
std::size_t FirstBesideDecisions(const TextTable& expected, const ExpectedColumns& by_name,
                                 const VerifyCase& scored) {
  const std::size_t none = expected.header.size();
  if (!std::all_of(by_name.begin(), by_name.end(), IsDecision)) return none;
  for (std::size_t i = 0; i < none; ++i) {
    const std::string& name = expected.header[i];
    if (!IsCompared(i, by_name) && !NamesRows(name) && !scored.IsInput(name)) return i;
  }
  return none;
}

// Names of rows and inputs are no results that somebody expects.
void RemarkLeftOut(const TextTable& expected, const ExpectedColumns& compared,
                   const VerifyCase& scored, VerifyReport& report) {
  std::vector<std::string_view> names;
  for (std::size_t i = 0; i < expected.header.size(); ++i) {
    const std::string& name = expected.header[i];
    if (!IsCompared(i, compared) && !NamesRows(name) && !scored.IsInput(name))
      names.push_back(name);
  }
  std::vector<std::string_view> lacking;
  for (const ExpectedColumn& column : compared) {
    if (IsDecision(column) && column.quantity.index < 0) lacking.push_back(column.quantity.name);
  }
  if (!lacking.empty()) {
    report.Remark(
        fmt::format("expected, but the model has no machine for it: {}", fmt::join(lacking, ", ")));
  }
  if (!names.empty()) {
    report.Remark(fmt::format("not compared, for lack of an output of that name: {}",
                              fmt::join(names, ", ")));
  }
}

}  // namespace

std::size_t PredictionAmong(const LoadedModel& loaded, const ExpectedColumns& columns) {
  const auto found =
      std::find_if(columns.begin(), columns.end(), [&loaded](const ExpectedColumn& column) {
        if (column.quantity.kind == Quantity::Kind::kPrediction) return true;
        if (column.quantity.kind != Quantity::Kind::kOutputField) return false;
        const auto field = static_cast<std::size_t>(column.quantity.index);
        return loaded.output->Fields()[field].feature == Feature::kPredictedValue;
      });
  return static_cast<std::size_t>(found - columns.begin());
}

bool NamesRows(std::string_view column) {
  constexpr std::array<std::string_view, 20> kNames = {
      "row",      "rows",    "row_id", "rowid", "row.id", "row.names", "row_names",
      "rownames", "rowname", "id",     "index", "idx",    "case",      "case_id",
      "caseid",   "record",  "obs",    "no",    "nr",     "#"};
  if (column.empty() || column.starts_with("Unnamed: ")) return true;
  std::string folded(column);
  std::transform(folded.begin(), folded.end(), folded.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return std::find(kNames.begin(), kNames.end(), folded) != kNames.end();
}

void RequireInputs(const LoadedModel& loaded, const TextTable& cases) {
  const std::vector<std::string_view> header(cases.header.begin(), cases.header.end());
  MatchColumns(header, loaded, {}, cases.name);
}

void SetInputs(const TextTable& cases, const std::vector<std::string>& row, const CellRules& rules,
               VerifyCase& scored) {
  std::string buffer;
  scored.Clear();
  for (std::size_t i = 0; i < row.size(); ++i) {
    const auto input = scored.FindInput(cases.header[i]);
    if (row[i].empty() || !input) continue;
    const MCZandor_850::ScoreDictVar& var = scored.VariableOf(*input);
    if (rules.IsMissing(row[i], var)) {
      scored.SetMissing(*input, row[i]);
    } else {
      scored.Set(*input, rules.TextOf(row[i], var, buffer), row[i]);
    }
  }
}

void ReadDecimalCommas(const LoadedModel& loaded, TextTable& expected) {
  const VerifyCase scored(loaded);
  const bool texts = !CellRules::IsOfNumbers(loaded.output->Targets().Target());
  std::string buffer;
  for (std::size_t i = 0; i < expected.header.size(); ++i) {
    auto quantity = scored.FindOutputField(expected.header[i]);
    if (!quantity) quantity = scored.FindPlainColumn(expected.header[i]);
    // A column that is not known may be the prediction.
    if (quantity ? quantity->is_label && texts : texts) continue;
    const auto is_comma_number = [i, &buffer](const std::vector<std::string>& row) {
      return !ParseNumber(row[i]) &&
             ParseNumber(CellRules::ExchangePointAndComma(row[i], buffer)).has_value();
    };
    if (std::none_of(expected.rows.begin(), expected.rows.end(), is_comma_number)) continue;
    for (std::vector<std::string>& row : expected.rows) {
      const std::string_view number = CellRules::ExchangePointAndComma(row[i], buffer);
      if (ParseNumber(number) || ParseNumber(row[i])) row[i] = number;
    }
  }
}

ExpectedReadings ReadingsOf(const LoadedModel& loaded, const TextTable& cases,
                            const TextTable& expected) {
  RequireInputs(loaded, cases);
  if (cases.rows.size() != expected.rows.size()) {
    throw BadCases(fmt::format("{} has {} rows of cases, and {} has {} of expected values",
                               cases.name, cases.rows.size(), expected.name, expected.rows.size()));
  }
  const VerifyCase scored(loaded);
  ExpectedColumns by_name = MatchExpected(loaded, expected, scored);
  std::size_t cell = FirstBesideDecisions(expected, by_name, scored);
  if (!by_name.empty() && cell == expected.header.size()) return {true, {std::move(by_name)}};
  const std::string hint = DelimiterHint(
      {expected.header.begin(), expected.header.end()}, [&scored](const std::string& name) {
        return scored.FindOutputField(name) || scored.FindPlainColumn(name);
      });
  if (by_name.empty() && !hint.empty()) {
    throw BadCases(fmt::format("{}: no column of the header is known; {}", expected.name, hint));
  }
  ExpectedReadings readings;
  if (by_name.empty()) cell = FirstOfValues(expected);
  for (Quantity& quantity : Candidates(loaded, scored)) {
    readings.all.push_back({{cell, std::move(quantity)}});
    readings.all.back().insert(readings.all.back().end(), by_name.begin(), by_name.end());
  }
  return readings;
}

FilesReport VerifyFiles(const LoadedModel& loaded, const TextTable& cases,
                        const TextTable& expected, double tolerance, const CellRules& rules) {
  const auto [by_name, readings] = ReadingsOf(loaded, cases, expected);
  VerifyCase scored(loaded);
  output::Allowance allowance;
  allowance.precision = tolerance;
  std::vector<FilesReport> reports(readings.size());
  std::vector<std::size_t> predictions;
  for (std::size_t i = 0; i < readings.size(); ++i) {
    predictions.push_back(PredictionAmong(loaded, readings[i]));
    if (predictions[i] == readings[i].size()) continue;
    const std::string& name = expected.header[readings[i][predictions[i]].cell];
    reports[i].agreement.emplace(loaded.output->Targets(), name);
  }
  for (std::size_t row = 0; row < cases.rows.size(); ++row) {
    SetInputs(cases, cases.rows[row], rules, scored);
    scored.Score();
    for (std::size_t i = 0; i < readings.size(); ++i) {
      for (std::size_t c = 0; c < readings[i].size(); ++c) {
        const auto& [cell, quantity] = readings[i][c];
        const std::string& text = expected.rows[row][cell];
        reports[i].report.Compare(row + 1, quantity, text, allowance, scored);
        if (c != predictions[i]) continue;
        const transform::Value value = scored.Read(quantity);
        reports[i].agreement->Add(
            row + 1, text, value.IsPresent() ? std::optional(scored.TextOf(value)) : std::nullopt);
      }
    }
  }
  std::size_t chosen = 0;
  for (std::size_t i = readings.size(); i-- > 0;) {
    if (reports[i].report.Disagreements() == 0) chosen = i;
  }
  VerifyReport& report = reports[chosen].report;
  if (!by_name) {
    report.Remark(fmt::format(
        "column {} is compared with {}", expected.header[readings[chosen][0].cell],
        chosen == 0 ? std::string("the prediction") : readings[chosen][0].quantity.name));
  }
  RemarkLeftOut(expected, readings[chosen], scored, report);
  return std::move(reports[chosen]);
}

}  // namespace svmscore::tools
