#include "host/transform/case_scope.h"

#include "host/transform/conversion.h"
#include "host/transform/fields.h"

namespace svmscore::transform {

using MCZandor_850::DerivedCaseRecord;
using MCZandor_850::ScoreCaseRecord;
using MCZandor_850::ScoreDictVar;
using MCZandor_850::ScoreValue;
using MCZandor_850::TransformVar;

int CaseScope::AddValue(const std::string& name, std::optional<FieldType> type, bool ordinal) {
  Field field;
  field.slot = slots_++;
  field.type = type;
  field.ordinal = ordinal;
  added_.insert_or_assign(name, field);
  return field.slot;
}

Field CaseScope::FieldOf(const ScoreDictVar* var, bool derived) {
  const auto known = fields_.find(var);
  if (known != fields_.end()) return known->second;
  const Field field = FieldOfVariable(*var, slots_++);
  sources_.push_back({var, derived, field.slot});
  if (!derived) needed_.push_back(var);
  fields_.emplace(var, field);
  return field;
}

std::optional<Field> CaseScope::Find(const std::string& name) {
  const auto found = added_.find(name);
  if (found != added_.end()) return found->second;
  const ScoreDictVar* input = inputs_ == nullptr ? nullptr : inputs_->FindVar(name);
  const TransformVar* derived = derived_ == nullptr ? nullptr : derived_->FindDerived(name);
  if (derived != nullptr && (input == nullptr || input->IsHiddenByDerived())) {
    return FieldOf(derived, true);
  }
  if (input == nullptr) return std::nullopt;
  return FieldOf(input, false);
}

void CaseValues::Begin(const ScoreCaseRecord& inputs, const DerivedCaseRecord* derived) {
  arena_.Reset();
  slots_.assign(static_cast<std::size_t>(scope_.slots_), Value::Missing());
  for (const CaseScope::Source& source : scope_.sources_) {
    const ScoreValue* value = nullptr;
    if (!source.derived) {
      value = ReadInput(inputs, *source.var);
    } else if (derived != nullptr) {
      value = derived->GetValue(source.var->GetCasePosition());
    }
    slots_[static_cast<std::size_t>(source.slot)] =
        FromRecord(value, source.var->GetFieldType(), arena_);
  }
}

void CaseValues::Set(int index, const Value& value) {
  const bool text = value.IsPresent() && value.IsText();
  slots_[static_cast<std::size_t>(index)] =
      text ? Value::Text(arena_.Copy(value.GetText())) : value;
}

Value CaseValues::Evaluate(const Expression& expression, std::optional<FieldType> type) {
  const Value value = expression.Evaluate({slots_.data(), arena_});
  return type ? Convert(value, *type, arena_) : value;
}

std::string_view CaseValues::Text(const Value& value) {
  return TextOf(value, arena_);
}

}  // namespace svmscore::transform
