// Moved: programs that include it from here get it from its room.
#ifndef HOST_BASE_MODEL_H_
#define HOST_BASE_MODEL_H_

#include "host/translate/base_model.h"

#endif  // HOST_BASE_MODEL_H_
