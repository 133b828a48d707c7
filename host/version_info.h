// Moved: programs that include it from here get it from its room.
#ifndef HOST_VERSION_INFO_H_
#define HOST_VERSION_INFO_H_

#include "host/model/version_info.h"

#endif  // HOST_VERSION_INFO_H_
