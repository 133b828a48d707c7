// One case at a time.
#include <algorithm>
#include <cmath>
#include <limits>

#include "capi/call_error.h"
#include "capi/caller_structs.h"
#include "capi/scorer.h"
#include "host/text/number_text.h"

namespace svmscore::capi {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// Results as values that point at texts of the model and of the scorer.
class ValueSink final : public tools::CellSink {
 public:
  ValueSink(svmscore_value* values, std::size_t count) : values_(values), count_(count) {}
  ValueSink& At(std::size_t column) {
    at_ = column < count_ ? values_ + column : &unwanted_;
    *at_ = {SVMSCORE_MISSING, -1, kNan, 0, "", 0};
    return *this;
  }

  void Empty() override {}
  void Text(std::string_view text) override {
    at_->kind = SVMSCORE_TEXT;
    at_->text = text.data() == nullptr ? "" : text.data();
    at_->length = text.size();
  }
  void Category(int category, std::string_view text) override {
    Text(text);
    at_->category = category;
  }
  void Number(double number) override {
    at_->kind = SVMSCORE_NUMBER;
    at_->number = number;
  }
  void Whole(long number) override {
    at_->kind = SVMSCORE_WHOLE;
    at_->whole = number;
  }

 private:
  svmscore_value* values_;
  std::size_t count_;
  svmscore_value unwanted_{};
  svmscore_value* at_ = nullptr;
};

class NumberSink final : public tools::CellSink {
 public:
  NumberSink(double* numbers, std::size_t count) : numbers_(numbers), count_(count) {}
  NumberSink& At(std::size_t column) {
    at_ = column < count_ ? numbers_ + column : &unwanted_;
    *at_ = kNan;
    return *this;
  }

  void Empty() override {}
  void Text(std::string_view) override {}
  void Category(int category, std::string_view) override { *at_ = category; }
  void Number(double number) override { *at_ = number; }
  void Whole(long number) override { *at_ = static_cast<double>(number); }

 private:
  double* numbers_;
  std::size_t count_;
  double unwanted_ = 0.0;
  double* at_ = nullptr;
};

// Whether a variable that takes every number takes the value as it is.
bool IsPlain(double number) {
  constexpr double kMost = std::numeric_limits<double>::max();
  return number > -kMost && number <= kMost;
}
bool IsPlain(const svmscore_value& value) {
  return value.kind == SVMSCORE_NUMBER && IsPlain(value.number);
}
double NumberOf(double number) {
  return number;
}
double NumberOf(const svmscore_value& value) {
  return value.number;
}

}  // namespace

Scorer::Single::Single(const ScoringPlan& plan, const MissingTexts& missing)
    : Single(
          plan, missing,
          {plan.model->inputs.begin(),
           plan.model->inputs.begin() + static_cast<std::ptrdiff_t>(plan.model->record_inputs)}) {}

Scorer::Single::Single(const ScoringPlan& plan, const MissingTexts& missing,
                       const std::vector<const MCZandor_850::ScoreDictVar*>& variables)
    : rows(plan, variables, 1, plan.ExaminerOf(variables)),
      takes_plain(!plan.reads_inputs && !plan.model->plain_entries.empty()) {
  for (const auto* var : plan.model->inputs) cells.emplace_back(*var, missing);
  for (std::size_t i = 0; i < plan.model->record_inputs; ++i) {
    takes_plain = takes_plain && plan.model->inputs[i]->TakesEveryNumber();
  }
}

Scorer::Single& Scorer::TheSingle() {
  if (single_ == nullptr) single_ = std::make_unique<Single>(plan_, settings_.missing);
  return *single_;
}

void Scorer::SetInput(Single& single, std::size_t input, const svmscore_value& value) const {
  const bool extra = input >= plan_.model->record_inputs;
  auto& record = extra ? single.rows.Extras() : single.rows.Record();
  const std::size_t position = extra ? input - plan_.model->record_inputs : input;
  const InputCell& cell = single.cells[input];
  switch (value.kind) {
    case SVMSCORE_MISSING:
      record.SetMissing(position);
      return;
    case SVMSCORE_NUMBER:
      return cell.SetNumber(record, position, value.number);
    case SVMSCORE_WHOLE:
      return cell.SetWhole(record, position, value.whole);
    case SVMSCORE_TEXT:
      return cell.SetText(record, position, ViewOf(value.text, value.length));
    default:
      RefuseArgument("value " + std::to_string(input) + " is of no enum svmscore_value_kind",
                     "inputs");
  }
}

// Puts the values into the record, which plain ones went past, and tells their texts.
void Scorer::Refill(Single& single, const svmscore_value* inputs, std::size_t input_count,
                    std::vector<GivenText>& given) const {
  for (std::size_t i = 0; i < given.size() && i < input_count; ++i) {
    const svmscore_value& value = inputs[i];
    SetInput(single, i, value);
    if (value.kind == SVMSCORE_NUMBER) given[i] = {FormatNumber(value.number), false};
    if (value.kind == SVMSCORE_WHOLE) given[i] = {std::to_string(value.whole), false};
    if (value.kind != SVMSCORE_TEXT) continue;
    const std::string_view text = ViewOf(value.text, value.length);
    given[i] = {std::string(text), single.cells[i].MeansMissing(text)};
  }
}

template <typename Input>
bool Scorer::SetPlain(Single& single, const Input* inputs, std::size_t input_count) const {
  if (!single.takes_plain || input_count < plan_.model->record_inputs) return false;
  for (std::size_t i = 0; i < plan_.model->record_inputs; ++i) {
    if (!IsPlain(inputs[i])) return false;
  }
  const std::vector<std::size_t>& entries = plan_.model->plain_entries;
  for (std::size_t e = 0; e < entries.size(); ++e) {
    *single.rows.PlainEntries(e) = NumberOf(inputs[entries[e]]);
  }
  single.rows.TakePlainRows(1);
  return true;
}

void Scorer::ScoreCase(const svmscore_value* inputs, std::size_t input_count,
                       svmscore_value* outputs, std::size_t output_count) {
  if (input_count > plan_.model->inputs.size()) {
    RefuseArgument("more values than the model has inputs", "input_count");
  }
  Single& single = TheSingle();
  single.rows.Clear();
  if (!SetPlain(single, inputs, input_count)) {
    constexpr svmscore_value kMissing{SVMSCORE_MISSING, -1, 0.0, 0, nullptr, 0};
    for (std::size_t i = 0; i < plan_.model->inputs.size(); ++i) {
      SetInput(single, i, i < input_count ? inputs[i] : kMissing);
    }
    single.rows.Add();
  }
  single.rows.Score();
  ValueSink sink(outputs, output_count);
  single.rows.Write(
      0, [&](std::size_t column) -> ValueSink& { return sink.At(column); },
      [&](MCZandor_850::InputCaseRecord&, std::vector<GivenText>& given) {
        Refill(single, inputs, input_count, given);
      });
}

void Scorer::ScoreNumbers(const double* inputs, std::size_t input_count, double* outputs,
                          std::size_t output_count) {
  if (input_count > plan_.model->inputs.size()) {
    RefuseArgument("more numbers than the model has inputs", "input_count");
  }
  Single& single = TheSingle();
  single.rows.Clear();
  if (!SetPlain(single, inputs, input_count)) {
    for (std::size_t i = 0; i < plan_.model->inputs.size(); ++i) {
      svmscore_value value{};
      value.kind = i < input_count ? SVMSCORE_NUMBER : SVMSCORE_MISSING;
      if (i < input_count) value.number = inputs[i];
      SetInput(single, i, value);
    }
    single.rows.Add();
  }
  single.rows.Score();
  NumberSink sink(outputs, output_count);
  // A reason is a text, and no number tells it.
  single.rows.Write(0, [&](std::size_t column) -> NumberSink& { return sink.At(column); });
}

}  // namespace svmscore::capi
