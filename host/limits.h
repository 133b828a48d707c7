// Moved: programs that include it from here get it from its room.
#ifndef HOST_LIMITS_H_
#define HOST_LIMITS_H_

#include "host/xml/limits.h"

#endif  // HOST_LIMITS_H_
