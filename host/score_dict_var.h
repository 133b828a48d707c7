// Moved: programs that include it from here get it from its room.
#ifndef HOST_SCORE_DICT_VAR_H_
#define HOST_SCORE_DICT_VAR_H_

#include "host/model/score_dict_var.h"

#endif  // HOST_SCORE_DICT_VAR_H_
