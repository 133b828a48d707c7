// Moved: programs that include it from here get it from its room.
#ifndef HOST_SS_EXCEPTION_H_
#define HOST_SS_EXCEPTION_H_

#include "host/model/ss_exception.h"

#endif  // HOST_SS_EXCEPTION_H_
