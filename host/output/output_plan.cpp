#include "host/output/output_plan.h"

#include <algorithm>

#include "host/model/score_status.h"
#include "host/model/scoring_log.h"
#include "host/output/output_reader.h"
#include "host/transform/derived_fields.h"
#include "host/transform/input_fields.h"
#include "host/transform/value/conversion.h"

namespace svmscore::output {

using MCZandor_850::DerivedCaseRecord;
using MCZandor_850::InputCaseRecord;
using MCZandor_850::ScoreCaseRecord;
using MCZandor_850::ScoreModel;
using MCZandor_850::ScoreValue;
using transform::Value;

OutputPlan::OutputPlan(const ScoreModel& model, const xercesc::DOMDocument* document, Faults faults,
                       bool as_written)
    : targets_(model, document, notes_, faults, as_written) {
  OutputReader(model, document, faults, *this).Read();
  told_ = std::make_unique<std::atomic<bool>[]>(fields_.size());
  if (notes_.empty()) return;
  std::string line;
  for (const Note& note : notes_) line += (line.empty() ? "" : "; ") + note.text;
  MCZandor_850::ScoringLog::GetInstance().TraceText(1, "Results: %s", line.c_str());
}

OutputPlan::~OutputPlan() = default;

OutputScratch::OutputScratch(const OutputPlan& plan, bool replace_missing)
    : slots_(plan.slot_count_),
      inputs_(plan.InputCount()),
      extras_(plan.extra_, true, replace_missing) {}

OutputScratch::~OutputScratch() = default;

std::string_view OutputScratch::TextOf(const Value& value) {
  return value.IsPresent() ? transform::TextOf(value, arena_) : std::string_view();
}

// The value with its text, if any, copied into the arena.
Value OutputPlan::Copied(const Value& value, transform::Arena& texts) {
  if (!value.IsPresent() || !value.IsText()) return value;
  const Value copy = Value::Text(texts.Copy(value.GetText()));
  return value.IsUnfit() ? copy.AsUnfit() : copy;
}

void OutputPlan::ReadInputs(const ScoreCaseRecord& record, Value* inputs,
                            transform::Arena& texts) const {
  const auto derived = GatherInputs(record, inputs, texts);
  for (std::size_t i = 0; i < InputCount(); ++i) inputs[i] = Copied(inputs[i], texts);
}

std::unique_ptr<DerivedCaseRecord> OutputPlan::GatherInputs(const ScoreCaseRecord& record,
                                                            Value* inputs,
                                                            transform::Arena& texts) const {
  for (const Read& read : reads_) {
    *inputs++ = transform::InputValue(record.GetValueOf(*read.var), *read.var, texts);
  }
  if (transformations_ == nullptr) return nullptr;
  // An InputCaseRecord keeps the values itself.
  if (const auto* record_of_inputs = dynamic_cast<const InputCaseRecord*>(&record)) {
    const transform::Scratch& values = transformations_->ValuesOf(*record_of_inputs);
    for (const ReadDerived& read : derived_) *inputs++ = values.Slot(read.position);
    return nullptr;
  }
  auto derived = transformations_->GetValuesForDerivedVars(&record, nullptr);
  for (const ReadDerived& read : derived_) *inputs++ = derived->Values().Slot(read.position);
  return derived;
}

long OutputPlan::Evaluate(const Outcome& outcome, const ScoreCaseRecord& record,
                          OutputScratch& scratch) const {
  scratch.arena_.Reset();
  if (outcome.ending != Outcome::Ending::kFailed) {
    scratch.derived_ = GatherInputs(record, scratch.inputs_.data(), scratch.arena_);
  }
  return Compute(outcome, scratch.inputs_.data(), scratch);
}

long OutputPlan::Evaluate(const Outcome& outcome, const Value* inputs,
                          OutputScratch& scratch) const {
  scratch.arena_.Reset();
  return Compute(outcome, inputs, scratch);
}

long OutputPlan::Compute(const Outcome& outcome, const Value* inputs,
                         OutputScratch& scratch) const {
  Value* slots = scratch.slots_.data();
  if (outcome.ending == Outcome::Ending::kFailed) {
    std::fill(scratch.slots_.begin(), scratch.slots_.end(), Value::Missing());
    return outcome.status;
  }
  slots[prediction_slot_] = outcome.prediction;
  for (const Read& read : reads_) slots[read.slot] = *inputs++;
  for (const ReadDerived& read : derived_) slots[read.slot] = *inputs++;
  for (std::size_t i = 0; i < extra_reads_.size(); ++i) {
    const Read& read = extra_reads_[i];
    const ScoreValue* value = scratch.extras_.GetValue(static_cast<int>(i));
    const bool usable = read.var->IsMissingValue(value) || read.var->IsValidValue(value);
    slots[read.slot] =
        usable ? transform::InputValue(value, *read.var, scratch.arena_) : Value::Missing();
  }
  const transform::Frame frame{slots, scratch.arena_};
  long status = outcome.status;
  std::size_t texts = 0;
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    Value value = ComputeField(i, outcome, frame);
    if (fields_[i].type) value = transform::Convert(value, *fields_[i].type, scratch.arena_);
    if (value.IsPresent() && value.IsText()) {
      // A row of fields is written as a whole.
      texts += value.GetText().size();
      if (texts > transform::Arena::kMostBytes) value = Value::Invalid();
    }
    if (value.IsInvalid() && status == 0) {
      status = MCScore::kInvalidValue;
      scratch.first_invalid_ = i;
    }
    slots[i] = value.IsPresent() ? value : Value::Missing();
    if (!steps_[i].decisions.empty() && value.IsPresent()) TellDecision(i, value);
  }
  return status;
}

Value OutputPlan::ComputeField(std::size_t field, const Outcome& outcome,
                               const transform::Frame& frame) const {
  const Step& step = steps_[field];
  switch (fields_[field].feature) {
    case Feature::kPredictedValue:
      return outcome.prediction;
    case Feature::kDisplayValue:
      if (outcome.category >= 0) return Value::Text(targets_.DisplayOf(outcome.category));
      if (!outcome.prediction.IsPresent()) return Value::Missing();
      return Value::Text(transform::TextOf(outcome.prediction, frame.arena));
    case Feature::kProbability: {
      const auto share =
          targets_.ShareOf(outcome, step.category >= 0 ? step.category : outcome.category);
      return share ? Value::Double(*share) : Value::Missing();
    }
    case Feature::kResidual:
      return Residual(step, outcome, frame);
    case Feature::kStandardDeviation:
      return outcome.std_dev >= 0.0 ? Value::Result(outcome.std_dev) : Value::Missing();
    case Feature::kIntervalLower:
      return outcome.has_interval ? Value::Result(outcome.lower) : Value::Missing();
    case Feature::kIntervalUpper:
      return outcome.has_interval ? Value::Result(outcome.upper) : Value::Missing();
    case Feature::kExpression:
      return step.expression->Evaluate(frame);
    case Feature::kNothing:
      break;
  }
  return Value::Missing();
}

// For a number: the actual value minus the predicted one. For a category: 1 if the actual category
// is the one in question, else 0, minus the probability of that category.
Value OutputPlan::Residual(const Step& step, const Outcome& outcome,
                           const transform::Frame& frame) const {
  const Value& actual = frame.slots[actual_slot_];
  if (!outcome.prediction.IsPresent() || !actual.IsPresent()) return Value::Missing();
  if (targets_.GetScheme().method == Method::kRegression) {
    const auto number = transform::NumberOf(actual);
    if (!number) return Value::Missing();
    return Value::Result(*number - outcome.prediction.GetNumber());
  }
  const int category = step.category >= 0 ? step.category : outcome.category;
  const auto share = targets_.ShareOf(outcome, category);
  if (!share) return Value::Missing();
  const bool same =
      transform::Compare(actual, targets_.CategoryValue(category)) == transform::Comparison::kEqual;
  return Value::Double((same ? 1.0 : 0.0) - *share);
}

void OutputPlan::TellDecision(std::size_t field, const Value& value) const {
  const auto& decisions = steps_[field].decisions;
  const bool listed =
      std::any_of(decisions.begin(), decisions.end(), [&value](const Value& decision) {
        return transform::Compare(decision, value) == transform::Comparison::kEqual;
      });
  if (listed || told_[field].exchange(true, std::memory_order_relaxed)) return;
  MCZandor_850::ScoringLog::GetInstance().TraceText(
      1, "Output field %s has a value that is not among its decisions",
      fields_[field].name.c_str());
}

}  // namespace svmscore::output
