// Moved: programs that include it from here get it from its room.
#ifndef HOST_SCORE_VALUE_H_
#define HOST_SCORE_VALUE_H_

#include "host/model/score_value.h"

#endif  // HOST_SCORE_VALUE_H_
