// Variables of the host as fields of expressions.
#ifndef HOST_TRANSFORM_INPUT_FIELDS_H_
#define HOST_TRANSFORM_INPUT_FIELDS_H_

#include "host/model/score_case_record.h"
#include "host/model/score_dict_var.h"
#include "host/transform/expression.h"

namespace svmscore::transform {

// The variable as a field in `slot`.
Field FieldOfVariable(const MCZandor_850::ScoreDictVar& var, int slot);

// What a record holds for an input variable, as expressions see it. A value that its declaration
// does not allow but its treatment accepts as it is, is unfit. `given` may be null: missing.
Value InputValue(const MCZandor_850::ScoreValue* given, const MCZandor_850::ScoreDictVar& var,
                 Arena& arena);

// The same from the record, even before the first scored case has set its position.
Value ReadInput(const MCZandor_850::ScoreCaseRecord& record, const MCZandor_850::ScoreDictVar& var,
                Arena& arena);

}  // namespace svmscore::transform

#endif  // HOST_TRANSFORM_INPUT_FIELDS_H_
