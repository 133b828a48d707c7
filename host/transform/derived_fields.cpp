#include "host/transform/derived_fields.h"

#include <cmath>
#include <utility>

#include "host/model/scoring_log.h"
#include "host/transform/input_fields.h"
#include "host/transform/value/conversion.h"

namespace svmscore::transform {

using MCZandor_850::NumericValue;
using MCZandor_850::ScoreCaseRecord;
using MCZandor_850::ScoreValue;
using MCZandor_850::StringValue;

Scratch::Scratch(const Program& program)
    : slots_(program.SlotCount()),
      holders_(program.Steps().size()),
      results_(program.DerivedCount(), nullptr) {}

Scratch::~Scratch() = default;

const ScoreValue* Scratch::Holder::Hold(const Value& value, FieldType type) {
  if (value.IsMissing()) {
    if (text) text->SetInvalid();
    return nullptr;
  }
  if (type.data == DataType::kString) {
    if (!text) text = std::make_unique<StringValue>("");
    if (value.IsPresent()) {
      text->SetText(value.GetText().data(), value.GetText().size());
    } else {
      text->SetInvalid();
    }
    return text.get();
  }
  if (!number) number = std::make_unique<NumericValue>(0.0);
  if (value.IsPresent()) {
    number->SetKey(KeyOf(value));
  } else {
    number->SetInvalid({});
  }
  return number.get();
}

Program::Program(std::vector<std::unique_ptr<Expression>> expressions, std::vector<Input> inputs,
                 std::vector<Step> steps, std::size_t slots)
    : expressions_(std::move(expressions)),
      inputs_(std::move(inputs)),
      steps_(std::move(steps)),
      step_of_(expressions_.size(), steps_.size()),
      slot_count_(slots),
      told_(std::make_unique<std::atomic<bool>[]>(steps_.size())) {
  for (const Input& input : inputs_) needed_.push_back(input.var);
  for (std::size_t i = 0; i < steps_.size(); ++i) {
    step_of_[static_cast<std::size_t>(steps_[i].slot)] = i;
  }
}

Program::~Program() = default;

const Program::Step* Program::FindStep(int slot) const {
  const auto position = static_cast<std::size_t>(slot);
  if (slot < 0 || position >= step_of_.size() || step_of_[position] == steps_.size()) {
    return nullptr;
  }
  return &steps_[step_of_[position]];
}

void Program::Evaluate(const ScoreCaseRecord& record, Scratch& scratch) const {
  scratch.arena_.Reset();
  Value* slots = scratch.slots_.data();
  for (const Input& input : inputs_) {
    slots[input.slot] = ReadInput(record, *input.var, scratch.arena_);
  }
  const Frame frame{slots, scratch.arena_};
  std::size_t texts = 0;
  for (std::size_t i = 0; i < steps_.size(); ++i) {
    const Step& step = steps_[i];
    const auto slot = static_cast<std::size_t>(step.slot);
    const Value value = expressions_[slot]->Evaluate(frame);
    if (step.type.data == DataType::kInteger) TellRounding(i, value);
    slots[slot] = Convert(value, step.type, scratch.arena_);
    if (slots[slot].IsPresent() && slots[slot].IsText()) {
      // Every holder has its own text.
      texts += slots[slot].GetText().size();
      if (texts > Arena::kMostBytes) slots[slot] = Value::Invalid();
    }
    scratch.results_[slot] = scratch.holders_[i].Hold(slots[slot], step.type);
  }
}

void Program::TellRounding(std::size_t step, const Value& value) const {
  if (!value.IsPresent() || value.IsText()) return;
  const double number = value.GetNumber();
  if (number == std::floor(number) || told_[step].exchange(true, std::memory_order_relaxed)) return;
  MCZandor_850::ScoringLog::GetInstance().TraceText(
      1, "Derived field %s is an integer: its fractions are rounded", steps_[step].name.c_str());
}

}  // namespace svmscore::transform
