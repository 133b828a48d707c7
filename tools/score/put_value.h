// Values that are given as such, put into a record as their shortest texts would be read from a
// file. [one thread] for each record. Fails: std::bad_alloc.
#ifndef TOOLS_SCORE_PUT_VALUE_H_
#define TOOLS_SCORE_PUT_VALUE_H_

#include <cstddef>
#include <cstdint>

#include "host/model/score_case_record.h"

namespace svmscore::tools {

void PutNumber(MCZandor_850::InputCaseRecord& record, std::size_t position, double number);
void PutWhole(MCZandor_850::InputCaseRecord& record, std::size_t position, std::int64_t number);
// true and false in a field of texts, 1 and 0 elsewhere.
void PutBool(MCZandor_850::InputCaseRecord& record, std::size_t position, bool truth);

}  // namespace svmscore::tools

#endif  // TOOLS_SCORE_PUT_VALUE_H_
