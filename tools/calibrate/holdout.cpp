#include "tools/calibrate/holdout.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <unordered_set>
#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "host/model/batch_model.h"
#include "host/output/output_plan.h"
#include "host/transform/value/arena.h"
#include "host/transform/value/value.h"
#include "tools/base/bad_input.h"
#include "tools/base/case_columns.h"
#include "tools/base/label_column.h"
#include "tools/findings/inspected.h"
#include "tools/findings/model_numbers.h"
#include "tools/score/case_batch.h"

namespace svmscore::tools {
namespace {

using MCZandor_850::ScoreModel;

// The first few of these texts, in quotation marks.
constexpr std::size_t kShown = 5;
std::string Some(const std::vector<std::string>& texts) {
  std::vector<std::string> shown;
  for (const std::string& text : texts) {
    if (shown.size() < kShown) shown.push_back('"' + text + '"');
  }
  return fmt::format("{}{}", fmt::join(shown, ", "), texts.size() > kShown ? ", ..." : "");
}

// Numbers that agree to about six digits have the same key, but for those beside an edge.
std::uint64_t KeyOf(std::uint64_t key, double number) {
  // Beyond the range of float, the cast is undefined.
  constexpr double kMost = std::numeric_limits<float>::max();
  const auto rounded = static_cast<float>(std::clamp(number, -kMost, kMost));
  const auto bits = std::bit_cast<std::uint32_t>(rounded + 0.0F);
  key = (key ^ ((bits + 8U) >> 4U)) * 0x9E3779B97F4A7C15U;
  return key ^ (key >> 29U);
}

class HoldoutScorer {
 public:
  HoldoutScorer(const LoadedModel& loaded, BatchModel& model, const TextTable& table,
                const std::string& actual, const CellRules& rules)
      : loaded_(loaded),
        plan_(*loaded.output),
        targets_(loaded.output->Targets()),
        target_(targets_.Target()),
        classification_(targets_.GetScheme().method != output::Method::kRegression),
        table_(table),
        rules_(rules),
        columns_(MatchColumns({table.header.begin(), table.header.end()}, loaded, {}, table.name)),
        record_(columns_.variables, true,
                loaded.model->GetMissingValuePolicy() == ScoreModel::kReplaceMissing),
        categories_(target_.GetCategories().size()),
        entries_(model.EntryCount()),
        batch_(model, categories_, kChunk, true),
        label_(table.header, table.name, actual, loaded, target_, classification_, rules) {
    model.FixPositions(record_);
    holdout_.machines = model.DecisionCount();
    if (!classification_) FindOutputs();
  }

  Holdout Run() {
    for (const std::vector<std::string>& row : table_.rows) {
      ++holdout_.rows;
      if (!ReadLabel(row[label_.Position()])) continue;
      SetCells(row);
      if (record_.HasInvalid() || batch_.Add(record_).IsError()) {
        ++holdout_.unscored;
        continue;
      }
      labels_.push_back(label_read_);
      ReadOutputInputs();
      if (batch_.Size() == kChunk || texts_.BytesTaken() > kMostTexts) Flush();
    }
    Flush();
    return std::move(holdout_);
  }

 private:
  // Cases that are scored together.
  static constexpr std::size_t kChunk = 128;
  static constexpr std::size_t kMostTexts = std::size_t{1} << 20;  // bytes that they may take

  void FindOutputs() {
    const auto& fields = plan_.Fields();
    for (const int f : plan_.FinalFields()) {
      const auto field = static_cast<std::size_t>(f);
      if (fields[field].feature != output::Feature::kExpression) continue;
      output_fields_.push_back(field);
      holdout_.outputs.push_back({fields[field].name, {}});
    }
    if (output_fields_.empty()) return;
    cells_.emplace(plan_, loaded_.model->GetMissingValuePolicy() == ScoreModel::kReplaceMissing);
  }

  void ReadOutputInputs() {
    if (!cells_) return;
    const std::size_t begin = inputs_.size();
    inputs_.resize(begin + plan_.InputCount());
    plan_.ReadInputs(record_, inputs_.data() + begin, texts_);
  }

  void TakeOutputs(const output::Outcome& outcome, std::size_t place) {
    if (!cells_) return;
    plan_.Evaluate(outcome, inputs_.data() + place * plan_.InputCount(), *cells_);
    for (std::size_t i = 0; i < output_fields_.size(); ++i) {
      const transform::Value& cell = cells_->Cell(output_fields_[i]);
      const bool is_number = cell.IsPresent() && !cell.IsText();
      holdout_.outputs[i].numbers.push_back(is_number ? cell.GetNumber()
                                                      : std::numeric_limits<double>::quiet_NaN());
    }
  }

  // The category, or the number, that the cell holds; false where it holds none.
  bool ReadLabel(std::string_view cell) {
    const LabelColumn::Found found = label_.Read(cell, label_read_);
    if (found == LabelColumn::Found::kMissing) ++holdout_.unlabelled;
    if (found == LabelColumn::Found::kUnknown) ++holdout_.unknown_labels[std::string(cell)];
    return found == LabelColumn::Found::kLabel;
  }

  void SetCells(const std::vector<std::string>& row) {
    for (std::size_t i = 0; i < columns_.cells.size(); ++i) {
      rules_.Set(record_, i, row[columns_.cells[i]], buffer_);
    }
  }

  void Flush() {
    if (batch_.Size() == 0) return;
    batch_.Score();
    for (std::size_t c = 0; c < batch_.Size(); ++c) Take(c);
    batch_.Clear();
    labels_.clear();
    inputs_.clear();
    texts_.Reset();
  }

  void Take(std::size_t place) {
    const BatchResults& results = batch_.Results();
    const output::Outcome outcome = targets_.Finish(results, place);
    bool usable = outcome.ending == output::Outcome::Ending::kPredicted;
    for (std::size_t m = 0; m < holdout_.machines; ++m) {
      usable = usable && std::isfinite(results.decisions[m * results.stride + place]);
    }
    if (!usable) {
      ++holdout_.unscored;
      return;
    }
    std::uint64_t key = 0;
    for (std::size_t e = 0; e < entries_; ++e) key = KeyOf(key, batch_.EntriesOf(e)[place]);
    ++holdout_.keys[key];
    for (std::size_t m = 0; m < holdout_.machines; ++m) {
      holdout_.decisions.push_back(results.decisions[m * results.stride + place]);
    }
    if (!classification_) {
      holdout_.observed.push_back(labels_[place]);
      holdout_.values.push_back(results.value[place]);
      holdout_.predictions.push_back(outcome.prediction.GetNumber());
      TakeOutputs(outcome, place);
      if (outcome.has_interval) holdout_.intervals.emplace_back(outcome.lower, outcome.upper);
      return;
    }
    holdout_.actual.push_back(static_cast<int>(labels_[place]));
    holdout_.predicted.push_back(outcome.category);
    if (targets_.GetScheme().percentages == output::Percentages::kNone) return;
    for (std::size_t k = 0; k < categories_; ++k) {
      holdout_.percents.push_back(targets_.PercentOf(outcome, k));
    }
  }

  const LoadedModel& loaded_;
  const output::OutputPlan& plan_;
  const output::TargetRules& targets_;
  const MCZandor_850::ScoreDictVar& target_;
  bool classification_;
  const TextTable& table_;
  const CellRules& rules_;
  CaseColumns columns_;
  MCZandor_850::InputCaseRecord record_;
  std::size_t categories_;
  std::size_t entries_;
  CaseBatch batch_;
  LabelColumn label_;
  double label_read_ = 0.0;     // of the present row
  std::vector<double> labels_;  // of the batch
  // Of a regression with such output fields: their positions, and what they depend on in the batch.
  std::vector<std::size_t> output_fields_;
  std::optional<output::OutputScratch> cells_;
  std::vector<transform::Value> inputs_;
  transform::Arena texts_;
  std::string buffer_;
  Holdout holdout_;
};

}  // namespace

Holdout ScoreHoldout(const LoadedModel& loaded, const TextTable& table, const std::string& actual,
                     const CellRules& rules) {
  auto* model = dynamic_cast<BatchModel*>(loaded.model.get());
  if (model == nullptr) {
    throw BadDocument(fmt::format("{}: the plug-in tells no decision values of its model",
                                  loaded.document.Name()));
  }
  return HoldoutScorer(loaded, *model, table, actual, rules).Run();
}

std::string UnknownLabelsOf(const Holdout& holdout) {
  std::vector<std::string> labels;
  for (const auto& [label, count] : holdout.unknown_labels) labels.push_back(label);
  return Some(labels);
}

void RequireUsable(const Holdout& holdout, const LoadedModel& loaded, const std::string& name) {
  if (holdout.Size() > 0) return;
  if (holdout.rows == 0) {
    throw BadCases(fmt::format("{}: there are no rows below the header", name));
  }
  const output::TargetRules& targets = loaded.output->Targets();
  const bool classification = targets.GetScheme().method != output::Method::kRegression;
  std::size_t unknown = 0;
  for (const auto& [label, count] : holdout.unknown_labels) unknown += count;
  std::string labels;
  if (unknown > 0) {
    labels = "; labels are " + UnknownLabelsOf(holdout);
    if (classification) {
      std::vector<std::string> categories;
      for (const auto* category : targets.Target().GetCategories()) {
        categories.push_back(category->GetText());
      }
      labels += ", categories " + Some(categories);
    }
  }
  throw BadCases(fmt::format(
      "{}: no row can be used: of {}, {} have no label, {} a label that is {}, and {} are not "
      "scored{}",
      name, holdout.rows, holdout.unlabelled, unknown,
      classification ? "no category of the target" : "no number", holdout.unscored, labels));
}

bool HasAllVectors(const Holdout& holdout, const LoadedModel& loaded) {
  constexpr double kRare = 1e-3;
  const ModelNumbers numbers = ReadNumbers(Inspect(loaded));
  std::unordered_set<std::uint64_t> vectors;
  for (const std::vector<double>& vector : numbers.vectors) {
    std::uint64_t key = 0;
    for (const double entry : vector) key = KeyOf(key, entry);
    if (!holdout.keys.contains(key)) return false;
    vectors.insert(key);
  }
  const auto once = std::count_if(holdout.keys.begin(), holdout.keys.end(),
                                  [](const auto& key) { return key.second == 1; });
  const double known = 1.0 - static_cast<double>(once) / static_cast<double>(holdout.Size());
  return !vectors.empty() && std::pow(known, static_cast<double>(vectors.size())) <= kRare;
}

}  // namespace svmscore::tools
