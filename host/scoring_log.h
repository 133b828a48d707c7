// Moved: programs that include it from here get it from its room.
#ifndef HOST_SCORING_LOG_H_
#define HOST_SCORING_LOG_H_

#include "host/model/scoring_log.h"

#endif  // HOST_SCORING_LOG_H_
