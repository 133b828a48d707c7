#include "tools/verify/verify_files.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "tools/base/bad_input.h"
#include "tools/base/case_columns.h"

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

ExpectedColumns MatchExpected(const TextTable& expected, const VerifyCase& scored) {
  ExpectedColumns matched;
  for (std::size_t i = 0; i < expected.header.size(); ++i) {
    auto quantity = scored.FindOutputField(expected.header[i]);
    if (!quantity) quantity = scored.FindPlainColumn(expected.header[i]);
    if (quantity) matched.push_back({i, *std::move(quantity)});
  }
  return matched;
}

void RemarkLeftOut(const TextTable& expected, const ExpectedColumns& compared,
                   VerifyReport& report) {
  std::vector<std::string_view> names;
  for (std::size_t i = 0; i < expected.header.size(); ++i) {
    const bool used = std::any_of(compared.begin(), compared.end(),
                                  [i](const ExpectedColumn& column) { return column.cell == i; });
    if (!used) names.push_back(expected.header[i]);
  }
  if (!names.empty()) {
    report.Remark(fmt::format("not compared, for lack of an output of that name: {}",
                              fmt::join(names, ", ")));
  }
}

}  // namespace

void RequireInputs(const LoadedModel& loaded, const TextTable& cases) {
  const std::vector<std::string_view> header(cases.header.begin(), cases.header.end());
  MatchColumns(header, loaded, {}, cases.name);
}

void SetInputs(const TextTable& cases, const std::vector<std::string>& row,
               const MissingTokens& missing, VerifyCase& scored) {
  scored.Clear();
  for (std::size_t i = 0; i < row.size(); ++i) {
    const auto input = scored.FindInput(cases.header[i]);
    if (row[i].empty() || !input) continue;
    if (std::find(missing.begin(), missing.end(), row[i]) != missing.end()) continue;
    scored.Set(*input, row[i]);
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
  ExpectedColumns by_name = MatchExpected(expected, scored);
  if (!by_name.empty()) return {true, {std::move(by_name)}};
  ExpectedReadings readings;
  for (Quantity& quantity : Candidates(loaded, scored)) {
    readings.all.push_back({{0, std::move(quantity)}});
  }
  return readings;
}

VerifyReport VerifyFiles(const LoadedModel& loaded, const TextTable& cases,
                         const TextTable& expected, double tolerance,
                         const MissingTokens& missing) {
  const auto [by_name, readings] = ReadingsOf(loaded, cases, expected);
  VerifyCase scored(loaded);
  output::Allowance allowance;
  allowance.precision = tolerance;
  std::vector<VerifyReport> reports(readings.size());
  for (std::size_t row = 0; row < cases.rows.size(); ++row) {
    SetInputs(cases, cases.rows[row], missing, scored);
    scored.Score();
    for (std::size_t i = 0; i < readings.size(); ++i) {
      for (const ExpectedColumn& column : readings[i]) {
        reports[i].Compare(row + 1, column.quantity, expected.rows[row][column.cell], allowance,
                           scored);
      }
    }
  }
  std::size_t chosen = 0;
  for (std::size_t i = readings.size(); i-- > 0;) {
    if (reports[i].Disagreements() == 0) chosen = i;
  }
  if (!by_name) {
    reports[chosen].Remark(fmt::format(
        "column {} is compared with {}", expected.header[0],
        chosen == 0 ? std::string("the prediction") : readings[chosen][0].quantity.name));
  }
  RemarkLeftOut(expected, readings[chosen], reports[chosen]);
  return std::move(reports[chosen]);
}

}  // namespace svmscore::tools
