#include "host/model/score_case_record.h"

#include <cmath>
#include <utility>

#include "host/text/field_text.h"
#include "host/text/number_text.h"

namespace MCZandor_850 {

using Invalid = FieldTreatment::Invalid;
using Outliers = FieldTreatment::Outliers;

ScoreCaseRecord::~ScoreCaseRecord() = default;
WorkedOut::~WorkedOut() = default;

InputCaseRecord::InputCaseRecord(std::vector<const ScoreDictVar*> variables, bool by_position,
                                 bool replace_missing)
    : by_position_(by_position), replace_missing_(replace_missing) {
  slots_.reserve(variables.size());
  for (const ScoreDictVar* var : variables) {
    Slot slot;
    slot.var = var;
    slot.takes_plain = var->TakesNumbersInIntervals();
    slot.number = std::make_unique<NumericValue>(NumericValue::GetSysmisValue());
    if (var->GetStorageType() == 1) slot.text = std::make_unique<StringValue>("");
    positions_.emplace(var->GetName(), static_cast<int>(slots_.size()));
    slots_.push_back(std::move(slot));
  }
  Clear();
}

InputCaseRecord::~InputCaseRecord() = default;

void InputCaseRecord::Clear() {
  for (std::size_t i = 0; i < slots_.size(); ++i) SetMissing(i);
}

InputState InputCaseRecord::Store(Slot& slot, InputState state, const ScoreValue* value) {
  if (slot.state == InputState::kInvalid) --invalid_count_;
  if (state == InputState::kInvalid) ++invalid_count_;
  slot.state = state;
  slot.current = value;
  slot.holds_plain = false;
  return state;
}

InputState InputCaseRecord::TreatMissing(Slot& slot) {
  if (slot.var->GetTreatment().missing_is_invalid) {
    slot.number->SetInvalid({});
    return Store(slot, InputState::kInvalid, slot.number.get());
  }
  const ScoreValue* replacement = replace_missing_ ? slot.var->GetMissingReplacement() : nullptr;
  return Store(slot, replacement == nullptr ? InputState::kMissing : InputState::kPresent,
               replacement);
}

// The steps come in the order that the standard lists: missing, invalid, outliers. Once a step has
// settled a value, later steps do not look at it.
InputState InputCaseRecord::Treat(Slot& slot, const ScoreValue& value) {
  const ScoreDictVar& var = *slot.var;
  const FieldTreatment& treatment = var.GetTreatment();
  if (var.IsMissingValue(&value)) return TreatMissing(slot);
  if (!var.IsValidValue(&value)) {
    switch (treatment.invalid) {
      case Invalid::kReturnInvalid:
        return Store(slot, InputState::kInvalid, &value);
      case Invalid::kAsIs:  // not a value of the field's type: there is nothing to take as it is
        return Store(slot, InputState::kMissing, nullptr);
      case Invalid::kAsMissing:
        return TreatMissing(slot);
      case Invalid::kAsValue:
        return Store(slot, InputState::kPresent, treatment.invalid_replacement.get());
    }
  }
  if (treatment.outliers != Outliers::kAsIs && value.IsNumeric()) {
    const double number = value.GetDouble();
    const bool low = number < treatment.low;
    if (low || number > treatment.high) {
      if (treatment.outliers == Outliers::kAsMissing) return TreatMissing(slot);
      slot.number->SetDoubleValue(low ? treatment.low : treatment.high);
      return Store(slot, InputState::kPresent, slot.number.get());
    }
  }
  return Store(slot, InputState::kPresent, &value);
}

bool InputCaseRecord::StorePlain(Slot& slot, double number) {
  if (!std::isfinite(number) || number == NumericValue::GetSysmisValue()) return false;
  if (!slot.var->IsInIntervals(number)) return false;
  slot.number->SetDoubleValue(number);
  Store(slot, InputState::kPresent, slot.number.get());
  slot.holds_plain = true;
  slot.plain_number = number;
  return true;
}

InputState InputCaseRecord::SetText(std::size_t position, std::string_view text) {
  kept_.is_current = false;
  Slot& slot = slots_[position];
  if (slot.takes_plain) {
    const std::optional<double> number = svmscore::ParseNumber(text);
    if (number && StorePlain(slot, *number)) return InputState::kPresent;
  }
  if (slot.text != nullptr) {
    slot.text->SetText(text.data(), text.size());
    return Treat(slot, *slot.text);
  }
  const auto number = svmscore::KeyFromFieldText(text, slot.var->GetFieldType());
  if (number) {
    slot.number->SetKey(*number);
  } else {
    slot.number->SetInvalid(text);
  }
  return Treat(slot, *slot.number);
}

InputState InputCaseRecord::SetNumber(std::size_t position, double number) {
  kept_.is_current = false;
  Slot& slot = slots_[position];
  if (slot.takes_plain && StorePlain(slot, number)) return InputState::kPresent;
  if (slot.text != nullptr) {
    const std::string text = svmscore::FieldTextFromNumber(number, {});
    slot.text->SetText(text.data(), text.size());
    return Treat(slot, *slot.text);
  }
  slot.number->SetDoubleValue(number);
  return Treat(slot, *slot.number);
}

InputState InputCaseRecord::SetMissing(std::size_t position) {
  kept_.is_current = false;
  // A long text of the last case is not kept.
  Slot& slot = slots_[position];
  if (slot.text != nullptr) slot.text->SetInvalid();
  slot.number->SetInvalid({});
  return TreatMissing(slot);
}

int InputCaseRecord::GetPosition(const std::string& name) const {
  const auto found = positions_.find(name);
  return !by_position_ || found == positions_.end() ? -1 : found->second;
}

const ScoreValue* InputCaseRecord::GetValue(int position) const {
  const auto index = static_cast<std::size_t>(position);
  return position < 0 || index >= slots_.size() ? nullptr : slots_[index].current;
}

const ScoreValue* InputCaseRecord::GetValue(const std::string& name) const {
  const auto found = positions_.find(name);
  return found == positions_.end() ? nullptr
                                   : slots_[static_cast<std::size_t>(found->second)].current;
}

}  // namespace MCZandor_850
