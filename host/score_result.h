// Moved: programs that include it from here get it from its room.
#ifndef HOST_SCORE_RESULT_H_
#define HOST_SCORE_RESULT_H_

#include "host/model/score_result.h"

#endif  // HOST_SCORE_RESULT_H_
