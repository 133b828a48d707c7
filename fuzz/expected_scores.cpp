#include "fuzz/expected_scores.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "app/table/read_table.h"
#include "fuzz/checked_scoring.h"
#include "fuzz/grammar.h"
#include "fuzz/memory_file.h"
#include "fuzz/promise.h"
#include "host/text/number_text.h"

namespace svmscore::fuzz {
namespace {

using tools::TextTable;

// Explaining scores tries many changed models on every case.
constexpr std::size_t kMostExplained = 8;

TextTable Scores(const LoadedModel& loaded, const TextTable& cases, Choices& choices) {
  RunOptions options;
  if (choices.Half()) options.columns = tools::ColumnChoice::kComputed;
  const app::ScoringPlan plan = PlanOf(loaded, {cases.header.begin(), cases.header.end()}, options);
  app::CaseScorer scorer(plan);
  scorer.FixPositions();
  app::CaseBlock block;
  block.rows.text = CsvOf(cases.rows);
  scorer.Work(block);
  Rows header(1);
  for (const auto& column : plan.results) header[0].push_back(column->Name());
  const MemoryFile file(CsvOf(header) + block.out);
  return app::ReadTable(file.Path(), {});
}

void Spoil(TextTable& scores, Choices& choices) {
  const double scale = choices.Half() ? -1.0 : OddNumber(choices);
  const double offset = choices.Half() ? 0.0 : OddNumber(choices);
  const std::size_t column = choices.Below(scores.header.size());
  if (choices.Half()) {
    std::swap(scores.header[column], scores.header[choices.Below(scores.header.size())]);
  }
  const bool all = choices.Half();
  for (auto& row : scores.rows) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      const auto number = ParseNumber(row[i]);
      if (number && (all || i == column)) row[i] = FormatNumber(*number * scale + offset);
    }
    if (choices.Rarely()) row[column] = Word(choices);
  }
}

}  // namespace

tools::CaseFiles MakeCaseFiles(const LoadedModel& loaded, Choices& choices) {
  TextTable cases;
  cases.name = "cases";
  cases.header = NamesFor(loaded);
  cases.rows = MakeRows(loaded, cases.header, 1 + choices.Below(kMostExplained), choices);
  // For a model without inputs a row would be empty, and so not a row of a table.
  if (cases.header.empty()) cases.rows.clear();
  TextTable scores = Scores(loaded, cases, choices);
  if (!choices.Rarely()) Spoil(scores, choices);
  return {std::move(cases), std::move(scores), tools::CellRules({"NA"}),
          choices.Half() ? 1e-9 : 0.25};
}

}  // namespace svmscore::fuzz
