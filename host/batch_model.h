// Moved: programs that include it from here get it from its room.
#ifndef HOST_BATCH_MODEL_H_
#define HOST_BATCH_MODEL_H_

#include "host/model/batch_model.h"

#endif  // HOST_BATCH_MODEL_H_
