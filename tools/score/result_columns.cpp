#include "tools/score/result_columns.h"

#include <optional>
#include <utility>

#include "host/model/score_dict_var.h"
#include "host/model/score_result.h"
#include "host/output/decision_name.h"

namespace svmscore::tools {
namespace {

using MCZandor_850::ScoreClsResult;
using MCZandor_850::ScoreModel;
using MCZandor_850::ScoreValue;
using output::Method;
using output::Outcome;
using output::Percentages;
using output::TargetRules;
using transform::Value;

// What results hold in place of a confidence, percentage or deviation that was not computed.
constexpr double kNotComputed = -1.0;

void WriteComputed(double number, CellSink& cell) {
  if (number == kNotComputed) {
    cell.Empty();
  } else {
    cell.Number(number);
  }
}

class Status : public ResultColumn {
 public:
  Status() : ResultColumn("status", CellKind::kWhole) {}
  void Write(const ScoredCase& scored, CellSink& cell) const override {
    cell.Whole(scored.outcome.status);
  }
};

class FailureReason : public ResultColumn {
 public:
  FailureReason() : ResultColumn("reason", CellKind::kText) {}
  void Write(const ScoredCase& scored, CellSink& cell) const override {
    if (scored.reason.empty()) {
      cell.Empty();
    } else {
      cell.Text(scored.reason);
    }
  }
};

// A column whose cell is empty for a case without a prediction.
class FromOutcome : public ResultColumn {
 public:
  using ResultColumn::ResultColumn;
  void Write(const ScoredCase& scored, CellSink& cell) const final {
    if (scored.outcome.IsPredicted()) {
      WriteOutcome(scored.outcome, cell);
    } else {
      cell.Empty();
    }
  }

 private:
  virtual void WriteOutcome(const Outcome& outcome, CellSink& cell) const = 0;
};

class PredictedCategory : public FromOutcome {
 public:
  explicit PredictedCategory(const std::vector<const ScoreValue*>& categories)
      : FromOutcome("prediction", CellKind::kCategory) {
    for (const ScoreValue* category : categories) texts_.push_back(category->GetText());
  }

 private:
  void WriteOutcome(const Outcome& outcome, CellSink& cell) const override {
    if (outcome.category < 0) {
      cell.Empty();
    } else {
      cell.Category(outcome.category, texts_[static_cast<std::size_t>(outcome.category)]);
    }
  }

  std::vector<std::string> texts_;
};

class PredictedNumber : public FromOutcome {
 public:
  PredictedNumber() : FromOutcome("prediction", CellKind::kNumber) {}

 private:
  void WriteOutcome(const Outcome& outcome, CellSink& cell) const override {
    if (outcome.prediction.IsPresent()) {
      cell.Number(outcome.prediction.GetNumber());
    } else {
      cell.Empty();
    }
  }
};

class Confidence : public FromOutcome {
 public:
  Confidence() : FromOutcome("confidence", CellKind::kNumber) {}

 private:
  void WriteOutcome(const Outcome& outcome, CellSink& cell) const override {
    WriteComputed(outcome.confidence, cell);
  }
};

class Probability : public FromOutcome {
 public:
  Probability(const ScoreValue& category, std::size_t index, const TargetRules& targets)
      : FromOutcome("probability(" + category.GetText() + ")", CellKind::kNumber),
        index_(index),
        targets_(targets) {}

 private:
  void WriteOutcome(const Outcome& outcome, CellSink& cell) const override {
    if (outcome.ending == Outcome::Ending::kPredicted) {
      WriteComputed(targets_.PercentOf(outcome, index_), cell);
    } else {
      WriteComputed(targets_.ShareOf(outcome, static_cast<int>(index_)).value_or(kNotComputed),
                    cell);
    }
  }

  std::size_t index_;
  const TargetRules& targets_;
};

// The decision value of a machine.
class Decision : public ResultColumn {
 public:
  Decision(std::string name, std::size_t machine)
      : ResultColumn(std::move(name), CellKind::kNumber), machine_(machine) {}
  void Write(const ScoredCase& scored, CellSink& cell) const override {
    if (scored.decisions == nullptr) {
      cell.Empty();
    } else {
      cell.Number(scored.decisions[machine_ * scored.decision_stride]);
    }
  }

 private:
  std::size_t machine_;
};

class StandardDeviation : public FromOutcome {
 public:
  StandardDeviation() : FromOutcome("stddev", CellKind::kNumber) {}

 private:
  void WriteOutcome(const Outcome& outcome, CellSink& cell) const override {
    WriteComputed(outcome.std_dev, cell);
  }
};

class IntervalBound : public FromOutcome {
 public:
  enum Side { kLower, kUpper };
  explicit IntervalBound(Side side)
      : FromOutcome(side == kLower ? "ci_lower" : "ci_upper", CellKind::kNumber), side_(side) {}

 private:
  void WriteOutcome(const Outcome& outcome, CellSink& cell) const override {
    if (outcome.has_interval) {
      cell.Number(side_ == kLower ? outcome.lower : outcome.upper);
    } else {
      cell.Empty();
    }
  }

  Side side_;
};

// A column that the document declares.
class OutputColumn : public ResultColumn {
 public:
  OutputColumn(const output::OutputPlan& plan, std::size_t field)
      : ResultColumn(plan.Fields()[field].name, KindOf(plan, field)), field_(field) {}

  void Write(const ScoredCase& scored, CellSink& cell) const override {
    const Value& value = scored.outputs.Cell(field_);
    if (!value.IsPresent()) {
      cell.Empty();
    } else if (value.IsInteger()) {
      cell.Whole(value.GetInteger());
    } else if (value.Data() == DataType::kDouble || value.Data() == DataType::kFloat) {
      cell.Number(value.GetNumber());
    } else {
      cell.Text(scored.outputs.TextOf(value));
    }
  }

 private:
  // Cells of a field of no certain type may be of any kind.
  static CellKind KindOf(const output::OutputPlan& plan, std::size_t field) {
    const std::optional<FieldType> type = plan.Fields()[field].type;
    if (!type) return CellKind::kAny;
    if (type->data == DataType::kInteger) return CellKind::kWhole;
    const bool number = type->data == DataType::kDouble || type->data == DataType::kFloat;
    return number ? CellKind::kNumber : CellKind::kText;
  }

  std::size_t field_;
};

template <typename Column, typename... Arguments>
void Add(ResultColumns& columns, Arguments&&... arguments) {
  columns.push_back(std::make_unique<Column>(std::forward<Arguments>(arguments)...));
}

void AddPlainColumns(const ScoreModel& model, const TargetRules& targets, bool all,
                     ResultColumns& columns) {
  const output::Scheme& scheme = targets.GetScheme();
  const bool more = !model.GetPredictionOnly();
  if (scheme.method == Method::kRegression) {
    Add<PredictedNumber>(columns);
    if (!all && !(more && scheme.interval)) return;
    Add<StandardDeviation>(columns);
    Add<IntervalBound>(columns, IntervalBound::kLower);
    Add<IntervalBound>(columns, IntervalBound::kUpper);
    return;
  }
  const auto& categories = targets.Target().GetCategories();
  Add<PredictedCategory>(columns, categories);
  if (!all && !(more && scheme.percentages != Percentages::kNone)) return;
  Add<Confidence>(columns);
  std::size_t index = 0;
  for (const ScoreValue* category : categories) {
    Add<Probability>(columns, *category, index++, targets);
  }
}

}  // namespace

ResultColumns MakeColumns(const ScoreModel& model, const output::OutputPlan& output,
                          ColumnChoice choice, bool decisions, bool reasons) {
  ResultColumns made;
  if (choice == ColumnChoice::kDocument && !output.Fields().empty()) {
    for (const int field : output.FinalFields()) {
      Add<OutputColumn>(made, output, static_cast<std::size_t>(field));
    }
  } else {
    AddPlainColumns(model, output.Targets(), choice == ColumnChoice::kAll, made);
  }
  const auto* batch = decisions ? dynamic_cast<const BatchModel*>(&model) : nullptr;
  for (std::size_t i = 0; batch != nullptr && i < batch->DecisionCount(); ++i) {
    Add<Decision>(made, output::DecisionName(output.Targets(), batch->DecisionCategories(i)), i);
  }
  Add<Status>(made);
  if (reasons) Add<FailureReason>(made);
  return made;
}

}  // namespace svmscore::tools
