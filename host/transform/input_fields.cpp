#include "host/transform/input_fields.h"

#include "host/transform/value/conversion.h"

namespace svmscore::transform {

using MCZandor_850::FieldTreatment;
using MCZandor_850::ScoreCaseRecord;
using MCZandor_850::ScoreDictVar;
using MCZandor_850::ScoreValue;

Field FieldOfVariable(const ScoreDictVar& var, int slot) {
  Field field;
  field.slot = slot;
  field.type = var.GetFieldType();
  field.ordinal = var.GetTypeCode() == static_cast<int>(OpType::kOrdinal);
  if (field.ordinal && !var.GetCategories().empty()) {
    field.order = std::make_shared<const ValueOrder>(var);
  }
  return field;
}

Value ReadInput(const ScoreCaseRecord& record, const ScoreDictVar& var, Arena& arena) {
  const ScoreValue* given = nullptr;
  if (record.IsIndexedByPosition()) {
    const int position = var.GetCasePosition();
    given = record.GetValue(position >= 0 ? position : record.GetPosition(var.GetName()));
  } else {
    given = record.GetValue(var.GetName());
  }
  return InputValue(given, var, arena);
}

Value InputValue(const ScoreValue* given, const ScoreDictVar& var, Arena& arena) {
  const Value value = FromRecord(given, var.GetFieldType(), arena);
  if (var.GetTreatment().invalid != FieldTreatment::Invalid::kAsIs || !value.IsPresent() ||
      given == var.GetMissingReplacement() || var.IsDeclaredValid(*given)) {
    return value;
  }
  return value.AsUnfit();
}

}  // namespace svmscore::transform
