// Moved: programs that include it from here get it from its room.
#ifndef HOST_PMML_PLUGIN_H_
#define HOST_PMML_PLUGIN_H_

#include "host/load/plugin.h"

#endif  // HOST_PMML_PLUGIN_H_
