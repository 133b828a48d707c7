// Moved: programs that include it from here get it from its room.
#ifndef HOST_PMML_LOADER_H_
#define HOST_PMML_LOADER_H_

#include "host/load/loader.h"

#endif  // HOST_PMML_LOADER_H_
