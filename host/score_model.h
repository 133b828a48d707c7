// Moved: programs that include it from here get it from its room.
#ifndef HOST_SCORE_MODEL_H_
#define HOST_SCORE_MODEL_H_

#include "host/model/score_model.h"

#endif  // HOST_SCORE_MODEL_H_
