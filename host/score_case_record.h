// Moved: programs that include it from here get it from its room.
#ifndef HOST_SCORE_CASE_RECORD_H_
#define HOST_SCORE_CASE_RECORD_H_

#include "host/model/score_case_record.h"

#endif  // HOST_SCORE_CASE_RECORD_H_
