#include "tools/verify/verify_block.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <unordered_set>
#include <vector>

#include <fmt/format.h>

#include "tools/base/bad_input.h"
#include "tools/base/document_bytes.h"

namespace svmscore::tools {
namespace {

struct Column {
  std::string field;
  std::string element;
  bool number = false;
  std::vector<std::optional<std::string>> cells;  // one a record; nothing where there is no value

  bool IsEmpty() const {
    return std::none_of(cells.begin(), cells.end(), [](const auto& cell) { return cell; });
  }
};

// The text as XML in ASCII.
std::string Escape(std::string_view text) {
  std::optional<std::string> escaped = EscapeToAscii(text);
  if (!escaped) throw BadCases("the cases hold a character that XML cannot hold");
  return *std::move(escaped);
}

bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool IsElementName(const std::string& name) {
  const auto is_part = [](char c) {
    return IsLetter(c) || (c >= '0' && c <= '9') || c == '.' || c == '-';
  };
  std::string start = name.substr(0, 3);
  for (char& c : start) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  // A reader takes elements of these names for something else.
  const bool reserved = start == "xml" || name.starts_with("X-") || name == "Extension";
  return !name.empty() && IsLetter(name[0]) && !reserved &&
         std::all_of(name.begin(), name.end(), is_part);
}

// Gives every column the name of its field where an element can have it, else a made-up one.
void NameElements(std::vector<Column>& columns) {
  std::unordered_set<std::string> taken;
  for (Column& column : columns) {
    if (!IsElementName(column.field) || !taken.insert(column.field).second) continue;
    column.element = column.field;
  }
  std::size_t number = 0;
  for (Column& column : columns) {
    while (column.element.empty()) {
      std::string name = fmt::format("column{}", ++number);
      if (taken.insert(name).second) column.element = std::move(name);
    }
  }
}

// Columns of inputs, then columns of results.
std::vector<Column> ScoreCases(const LoadedModel& loaded, const TextTable& cases,
                               const CellRules& rules) {
  VerifyCase scored(loaded);
  std::vector<Column> inputs;
  std::vector<std::size_t> cells;
  for (std::size_t i = 0; i < cases.header.size(); ++i) {
    if (!scored.IsInput(cases.header[i])) continue;
    inputs.push_back({cases.header[i], {}, false, {}});
    cells.push_back(i);
  }
  std::vector<Quantity> quantities;
  std::vector<Column> results;
  for (Quantity& quantity : scored.Results()) {
    // A name that is an input's is read as one.
    if (scored.IsInput(quantity.name)) continue;
    results.push_back({quantity.name, {}, false, {}});
    quantities.push_back(std::move(quantity));
  }
  bool any_scored = false;
  std::string buffer;
  for (const std::vector<std::string>& row : cases.rows) {
    SetInputs(cases, row, rules, scored);
    scored.Score();
    any_scored = any_scored || scored.Status() == 0;
    for (std::size_t i = 0; i < inputs.size(); ++i) {
      const std::string& cell = row[cells[i]];
      const MCZandor_850::ScoreDictVar& var =
          scored.VariableOf(*scored.FindInput(cases.header[cells[i]]));
      const bool given = !rules.IsMissing(cell, var);
      inputs[i].cells.push_back(given ? std::optional(std::string(rules.TextOf(cell, var, buffer)))
                                      : std::nullopt);
    }
    for (std::size_t i = 0; i < results.size(); ++i) {
      const transform::Value value = scored.Read(quantities[i]);
      results[i].number =
          value.IsPresent() && value.Data() != DataType::kString && !quantities[i].is_label;
      results[i].cells.push_back(value.IsPresent() ? std::optional(scored.TextOf(value))
                                                   : std::nullopt);
    }
  }
  if (!any_scored) {
    throw BadCases(
        fmt::format("{}: no case is scored, so that records would have "
                    "nothing to compare; svmscore score gives the reasons",
                    cases.name));
  }
  inputs.insert(inputs.end(), results.begin(), results.end());
  return inputs;
}

}  // namespace

std::string VerificationBlock(const LoadedModel& loaded, const TextTable& cases,
                              const CellRules& rules, const std::string& prefix) {
  RequireInputs(loaded, cases);
  std::vector<Column> columns = ScoreCases(loaded, cases, rules);
  std::erase_if(columns, [](const Column& column) { return column.IsEmpty(); });
  NameElements(columns);
  std::string block = fmt::format(
      "<{0}ModelVerification recordCount=\"{1}\" fieldCount=\"{2}\">\n"
      "      <{0}VerificationFields>\n",
      prefix, cases.rows.size(), columns.size());
  for (const Column& column : columns) {
    block += fmt::format("        <{}VerificationField field=\"{}\"", prefix, Escape(column.field));
    if (column.element != column.field) block += fmt::format(" column=\"{}\"", column.element);
    // The program's own numbers come out the same on every machine; other systems add up in
    // another order.
    if (column.number) block += " precision=\"1E-9\" zeroThreshold=\"1E-12\"";
    block += "/>\n";
  }
  block += fmt::format("      </{0}VerificationFields>\n      <{0}InlineTable>\n", prefix);
  for (std::size_t record = 0; record < cases.rows.size(); ++record) {
    block += fmt::format("        <{}row>", prefix);
    for (const Column& column : columns) {
      if (!column.cells[record]) continue;
      block += fmt::format("<{0}{1}>{2}</{0}{1}>", prefix, column.element,
                           Escape(*column.cells[record]));
    }
    block += fmt::format("</{}row>\n", prefix);
  }
  return block + fmt::format("      </{0}InlineTable>\n    </{0}ModelVerification>", prefix);
}

}  // namespace svmscore::tools
