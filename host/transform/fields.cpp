#include "host/transform/fields.h"

#include "host/transform/conversion.h"

namespace svmscore::transform {

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

const ScoreValue* ReadInput(const ScoreCaseRecord& record, const ScoreDictVar& var) {
  if (!record.IsIndexedByPosition()) return record.GetValue(var.GetName());
  const int position = var.GetCasePosition();
  return record.GetValue(position >= 0 ? position : record.GetPosition(var.GetName()));
}

}  // namespace svmscore::transform
