#include "tools/report/scored_cases.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string_view>

#include <fmt/format.h>

#include "host/model/batch_model.h"
#include "tools/base/bad_input.h"
#include "tools/base/case_columns.h"
#include "tools/base/label_column.h"
#include "tools/describe/model_summary.h"
#include "tools/report/figure_sum.h"
#include "tools/score/case_batch.h"

namespace svmscore::tools {
namespace {

using MCZandor_850::ScoreDictVar;
using MCZandor_850::ScoreModel;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

class CaseScorer {
 public:
  CaseScorer(const LoadedModel& loaded, BatchModel& model, const DrawnTable& table,
             const std::string& actual, const CellRules& rules)
      : loaded_(loaded),
        targets_(loaded.output->Targets()),
        target_(targets_.Target()),
        table_(table),
        rules_(rules),
        columns_(MatchColumns({table.header.begin(), table.header.end()}, loaded, {}, table.name)),
        record_(columns_.variables, true,
                loaded.model->GetMissingValuePolicy() == ScoreModel::kReplaceMissing),
        categories_(target_.GetCategories().size()),
        batch_(model, categories_, kChunk, true),
        figures_(categories_) {
    scored_.classification = targets_.GetScheme().method != output::Method::kRegression;
    scored_.entry_count = model.EntryCount();
    scored_.machines = model.DecisionCount();
    if (!actual.empty()) {
      label_.emplace(table.header, table.name, actual, loaded, target_, scored_.classification,
                     rules);
      scored_.has_labels = true;
    }
    model.FixPositions(record_);
  }

  ScoredCases Run() {
    scored_.rows = table_.rows;
    scored_.drawn = table_.drawn.size();
    for (const DrawnRow& row : table_.drawn) {
      SetCells(row);
      if (record_.HasInvalid()) {
        ++scored_.invalid;
        continue;
      }
      const MCScore::MCStatus status = batch_.Add(record_);
      if (status.IsError()) {
        ++(status.GetErrorCode() == MCScore::kInvalidValue ? scored_.invalid : scored_.missing);
        continue;
      }
      rows_.push_back(&row);
      if (batch_.Size() == kChunk) Flush();
    }
    Flush();
    if (figures_.Cases() > 0) scored_.figures = figures_.Total();
    DropLabelsOfAnotherUnit(*loaded_.output);
    return std::move(scored_);
  }

 private:
  // Cases that are scored together.
  static constexpr std::size_t kChunk = 128;

  void SetCells(const DrawnRow& row) {
    for (std::size_t i = 0; i < columns_.cells.size(); ++i) {
      rules_.Set(record_, i, row.Cell(columns_.cells[i]), buffer_);
    }
  }

  // The category, or the number, that the cell of the label holds; nothing where it holds none.
  std::optional<double> ReadLabel(const DrawnRow& row) {
    if (!label_) return std::nullopt;
    double label = 0.0;
    const LabelColumn::Found found = label_->Read(row.Cell(label_->Position()), label);
    if (found == LabelColumn::Found::kLabel) return label;
    ++(found == LabelColumn::Found::kMissing ? scored_.unlabelled : scored_.unknown_labels);
    return std::nullopt;
  }

  void Flush() {
    if (batch_.Size() == 0) return;
    batch_.Score();
    for (std::size_t c = 0; c < batch_.Size(); ++c) Take(c);
    figures_.AddBatch();
    batch_.Clear();
    rows_.clear();
  }

  void Take(std::size_t place) {
    const BatchResults& results = batch_.Results();
    const output::Outcome outcome = targets_.Finish(results, place);
    bool usable = outcome.ending == output::Outcome::Ending::kPredicted &&
                  (!scored_.classification || outcome.category >= 0);
    for (std::size_t m = 0; m < scored_.machines; ++m) {
      usable = usable && std::isfinite(results.decisions[m * results.stride + place]);
    }
    if (!usable) {
      ++(outcome.ending == output::Outcome::Ending::kMissing ||
                 outcome.ending == output::Outcome::Ending::kPredictedByDefault
             ? scored_.missing
             : scored_.invalid);
      return;
    }
    scored_.numbers.push_back(rows_[place]->number);
    for (std::size_t e = 0; e < scored_.entry_count; ++e) {
      scored_.entries.push_back(batch_.EntriesOf(e)[place]);
    }
    for (std::size_t m = 0; m < scored_.machines; ++m) {
      scored_.decisions.push_back(results.decisions[m * results.stride + place]);
    }
    const std::optional<double> label = ReadLabel(*rows_[place]);
    if (scored_.classification) {
      TakeCategory(outcome, label ? static_cast<int>(*label) : -1);
    } else {
      scored_.values.push_back(outcome.prediction.IsPresent() ? outcome.prediction.GetNumber()
                                                              : results.value[place]);
      scored_.observed.push_back(label.value_or(kNaN));
      if (outcome.has_interval) scored_.intervals.emplace_back(outcome.lower, outcome.upper);
    }
  }

  // Some documents predict a standardised target, and turn it into its unit by an output field.
  void DropLabelsOfAnotherUnit(const output::OutputPlan& plan) {
    if (scored_.classification) return;
    const auto field =
        std::find_if(plan.Fields().begin(), plan.Fields().end(),
                     [](const auto& each) { return each.feature == output::Feature::kExpression; });
    if (field == plan.Fields().end()) return;
    double count = 0.0;
    double labels = 0.0;
    double predictions = 0.0;
    for (std::size_t c = 0; c < scored_.Size(); ++c) {
      if (std::isnan(scored_.observed[c])) continue;
      count += 1.0;
      labels += scored_.observed[c];
      predictions += scored_.values[c];
    }
    if (count < 2.0) return;
    double squares = 0.0;
    for (const double label : scored_.observed) {
      if (!std::isnan(label)) squares += (label - labels / count) * (label - labels / count);
    }
    if (!(std::fabs(labels - predictions) / count > std::sqrt(squares / count))) return;
    scored_.own_unit = field->name;
    scored_.observed.assign(scored_.Size(), kNaN);
  }

  void TakeCategory(const output::Outcome& outcome, int actual) {
    scored_.predicted.push_back(outcome.category);
    scored_.actual.push_back(actual);
    if (targets_.GetScheme().percentages == output::Percentages::kNone) {
      if (actual >= 0) figures_.Add(actual, outcome.category, {});
      return;
    }
    percents_.clear();
    for (std::size_t k = 0; k < categories_; ++k) {
      percents_.push_back(targets_.PercentOf(outcome, k));
    }
    const std::size_t of =
        categories_ == 2 || outcome.category < 0 ? 0 : static_cast<std::size_t>(outcome.category);
    scored_.probabilities.push_back(percents_.empty() ? kNaN : percents_[of]);
    if (actual >= 0) figures_.Add(actual, outcome.category, percents_);
  }

  const LoadedModel& loaded_;
  const output::TargetRules& targets_;
  const ScoreDictVar& target_;
  const DrawnTable& table_;
  const CellRules& rules_;
  CaseColumns columns_;
  MCZandor_850::InputCaseRecord record_;
  std::size_t categories_;
  CaseBatch batch_;
  std::optional<LabelColumn> label_;   // nothing where no label is given
  std::vector<const DrawnRow*> rows_;  // of the batch
  std::vector<double> percents_;       // of a case
  std::string buffer_;
  FigureSum figures_;
  ScoredCases scored_;
};

}  // namespace

std::size_t MostCases(const LoadedModel& loaded) {
  constexpr double kMost = 20000;
  constexpr double kLeast = 50;
  constexpr double kNumbers = 16e6;  // held of all cases
  constexpr double kSteps = 2e9;     // of computing, some seconds
  const auto* model = dynamic_cast<const BatchModel*>(loaded.model.get());
  if (model == nullptr) return 0;
  const ModelSummary summary = Summarise(loaded);
  const auto entries = static_cast<double>(model->EntryCount());
  const auto machines = static_cast<double>(model->DecisionCount());
  const auto categories = static_cast<double>(summary.categories.size());
  const double coupling = summary.scheme.percentages == Percentages::kProbabilities
                              ? 20.0 * categories * categories
                              : categories;
  const double steps = static_cast<double>(summary.vectors) * (entries + 20.0) +
                       static_cast<double>(summary.terms) + 10.0 * machines + coupling + 100.0;
  return static_cast<std::size_t>(std::max(
      kLeast, std::min({kMost, kNumbers / std::max(1.0, entries + machines), kSteps / steps})));
}

ScoredCases ScoreCases(const LoadedModel& loaded, const DrawnTable& table,
                       const std::string& actual, const CellRules& rules) {
  auto* model = dynamic_cast<BatchModel*>(loaded.model.get());
  if (model == nullptr) {
    throw BadDocument(fmt::format("{}: the plug-in tells no decision values of its model",
                                  loaded.document.Name()));
  }
  return CaseScorer(loaded, *model, table, actual, rules).Run();
}

}  // namespace svmscore::tools
