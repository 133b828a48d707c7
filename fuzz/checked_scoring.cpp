#include "fuzz/checked_scoring.h"

#include <array>
#include <bit>
#include <cstdint>
#include <memory>
#include <set>
#include <utility>

#include "fuzz/promise.h"
#include "host/model/score_status.h"

namespace svmscore::fuzz {
namespace {

using app::ScoringPlan;
using MCZandor_850::InputCaseRecord;
using MCZandor_850::ScoreDictVar;
using MCZandor_850::ScoreModel;
using MCZandor_850::ScoreResult;
using output::Outcome;

constexpr std::size_t kMostRows = 40;

bool IsSame(double a, double b) {
  return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b) || (a != a && b != b);
}

bool IsSame(const transform::Value& a, const transform::Value& b) {
  if (a.IsPresent() != b.IsPresent() || a.IsMissing() != b.IsMissing()) return false;
  if (!a.IsPresent()) return true;
  if (a.Data() != b.Data()) return false;
  return a.IsText() ? a.GetText() == b.GetText() : IsSame(a.GetNumber(), b.GetNumber());
}

// "" if the outcomes are the same, else where they differ.
std::string Difference(const Outcome& a, const Outcome& b, const ScoreDictVar& target) {
  if (a.status != b.status) return "status";
  if (a.ending != b.ending) return "ending";
  if (a.category != b.category) return "category";
  if (!IsSame(a.prediction, b.prediction)) return "prediction";
  if (!IsSame(a.confidence, b.confidence)) return "confidence";
  if (!IsSame(a.std_dev, b.std_dev)) return "standard deviation";
  if (a.has_interval != b.has_interval) return "interval";
  if (a.has_interval && !(IsSame(a.lower, b.lower) && IsSame(a.upper, b.upper))) return "bounds";
  for (std::size_t k = 0; k < target.GetCategories().size(); ++k) {
    if (!IsSame(a.PercentAt(k), b.PercentAt(k))) return "percentage";
  }
  return "";
}

std::string CellOf(const std::string& name, const LoadedModel& loaded, Choices& choices) {
  const std::size_t kind = choices.Below(8);
  if (kind < 5) return NumberText(choices);
  if (kind < 7) return Word(choices);
  const ScoreDictVar* var = loaded.model->GetDictionary()->FindVar(name);
  if (var == nullptr || var->GetCategories().empty()) return "";
  return var->GetCategories()[choices.Below(var->GetCategories().size())]->GetText();
}

// Every case by itself, then all of them as a batch.
void CompareBatch(const ScoringPlan& plan, const Rows& rows) {
  auto* batch_model = dynamic_cast<BatchModel*>(plan.model);
  if (batch_model == nullptr) return;
  const output::TargetRules& targets = plan.output->Targets();
  InputCaseRecord record(plan.columns.variables, true, plan.replace_missing);
  tools::CaseBatch batch(*batch_model, targets.Target().GetCategories().size(), rows.size(), false);
  std::vector<std::unique_ptr<ScoreResult>> results;
  std::vector<Outcome> alone;
  for (const std::vector<std::string>& row : rows) {
    for (std::size_t i = 0; i < plan.columns.cells.size(); ++i) {
      record.SetText(i, row[plan.columns.cells[i]]);
    }
    if (record.HasInvalid()) continue;
    ScoreResult* result = nullptr;
    const MCScore::MCStatus status = plan.model->GetScore(&record, result, false);
    results.emplace_back(result);
    const MCScore::MCStatus read = batch.Add(record);
    if (read.IsError()) {
      Promise(status.GetErrorCode() == read.GetErrorCode(), "a batch refuses what a case does");
    } else {
      alone.push_back(targets.Finish(status, result));
    }
  }
  batch.Score();
  for (std::size_t i = 0; i < alone.size(); ++i) {
    const std::string difference =
        Difference(alone[i], targets.Finish(batch.Results(), i), targets.Target());
    Promise(difference.empty(), "a batch scores as a case alone: " + difference);
  }
}

}  // namespace

const Plugin& ThePlugin() {
  static const Plugin plugin(SVMSCORE_PLUGIN_FILE);
  return plugin;
}

RunOptions ChooseOptions(ScoreModel& model, Choices& choices) {
  RunOptions options;
  constexpr std::array kColumns = {tools::ColumnChoice::kDocument, tools::ColumnChoice::kComputed,
                                   tools::ColumnChoice::kAll};
  options.columns = choices.Pick(kColumns);
  options.json = choices.Half();
  options.decisions = choices.Half() && dynamic_cast<BatchModel*>(&model) != nullptr;
  if (choices.Half()) options.missing_tokens = {"NA", Word(choices)};
  model.SetPredictionOnly(choices.Rarely());
  constexpr std::array kPolicies = {ScoreModel::kReplaceMissing, ScoreModel::kPredictMissing,
                                    ScoreModel::kFailOnMissing};
  if (choices.Half()) model.SetMissingValuePolicy(choices.Pick(kPolicies));
  return options;
}

ScoringPlan PlanOf(const LoadedModel& loaded, const std::vector<std::string_view>& header,
                   const RunOptions& options) {
  ScoringPlan plan;
  plan.model = loaded.model.get();
  plan.columns = tools::MatchColumns(header, loaded, options.copied, "cases");
  plan.rows.delimiter = options.delimiter;
  plan.cells = tools::CellRules(options.missing_tokens, options.decimal_comma);
  plan.replace_missing = loaded.model->GetMissingValuePolicy() == ScoreModel::kReplaceMissing;
  plan.output = loaded.output.get();
  plan.computes_output =
      options.columns == tools::ColumnChoice::kDocument && !loaded.output->Fields().empty();
  plan.results = tools::MakeColumns(*loaded.model, *loaded.output, options.columns,
                                    options.decisions, options.decisions);
  plan.examiner = std::make_unique<reasons::CaseExaminer>(loaded, plan.columns.variables);
  plan.writes_reasons = options.decisions;
  std::vector<std::string> names = options.copied;
  for (const auto& column : plan.results) names.push_back(column->Name());
  plan.format = options.json ? app::JsonLinesFormat(names) : app::CsvFormat(std::move(names));
  return plan;
}

std::vector<std::string> NamesFor(const LoadedModel& loaded) {
  std::set<std::string> names;
  for (const auto* variables : {&loaded.needed, &loaded.active, &loaded.output->ExtraInputs()}) {
    for (const ScoreDictVar* var : *variables) names.insert(var->GetName());
  }
  return {names.begin(), names.end()};
}

Rows MakeRows(const LoadedModel& loaded, const std::vector<std::string>& names, std::size_t count,
              Choices& choices) {
  Rows rows(count);
  for (auto& row : rows) {
    for (const std::string& name : names) row.push_back(CellOf(name, loaded, choices));
  }
  return rows;
}

std::string CsvOf(const Rows& rows) {
  std::string text;
  for (const std::vector<std::string>& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      text += i == 0 ? "\"" : ",\"";
      for (const char letter : row[i]) text.append(letter == '"' ? 2 : 1, letter);
      text += '"';
    }
    text += '\n';
  }
  return text;
}

void ScoreCases(const LoadedModel& loaded, Choices& choices) {
  const RunOptions options = ChooseOptions(*loaded.model, choices);
  const std::vector<std::string> names = NamesFor(loaded);
  const ScoringPlan plan = PlanOf(loaded, {names.begin(), names.end()}, options);
  const Rows rows = MakeRows(loaded, names, 1 + choices.Below(kMostRows), choices);
  app::CaseScorer scorer(plan);
  scorer.FixPositions();
  CompareBatch(plan, rows);
  app::CaseBlock block;
  block.rows.text = CsvOf(rows);
  scorer.Work(block);
  // For a model without inputs a row is empty, which is an error.
  if (names.empty()) return;
  Promise(!block.error, "the rows are read");
  Promise(block.tally.cases == rows.size(), "every case is counted");
}

}  // namespace svmscore::fuzz
