// Variables of the host as fields of expressions.
#ifndef HOST_TRANSFORM_INPUT_FIELDS_H_
#define HOST_TRANSFORM_INPUT_FIELDS_H_

#include "host/model/score_case_record.h"
#include "host/model/score_dict_var.h"
#include "host/transform/expression.h"

namespace svmscore::transform {

// The variable as a field in `slot`.
Field FieldOfVariable(const MCZandor_850::ScoreDictVar& var, int slot);

// The value of an input variable, even before the first scored case has set its position. A value
// that its declaration does not allow but its treatment accepts as it is, is unfit.
Value ReadInput(const MCZandor_850::ScoreCaseRecord& record, const MCZandor_850::ScoreDictVar& var,
                Arena& arena);

}  // namespace svmscore::transform

#endif  // HOST_TRANSFORM_INPUT_FIELDS_H_
