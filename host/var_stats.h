// Moved: programs that include it from here get it from its room.
#ifndef HOST_VAR_STATS_H_
#define HOST_VAR_STATS_H_

#include "host/model/var_stats.h"

#endif  // HOST_VAR_STATS_H_
