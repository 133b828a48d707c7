// Moved: programs that include it from here get it from its room.
#ifndef HOST_SCORE_STATUS_H_
#define HOST_SCORE_STATUS_H_

#include "host/model/score_status.h"

#endif  // HOST_SCORE_STATUS_H_
