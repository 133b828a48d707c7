// Moved: programs that include it from here get it from its room.
#ifndef HOST_SCORE_DICTIONARY_H_
#define HOST_SCORE_DICTIONARY_H_

#include "host/model/score_dictionary.h"

#endif  // HOST_SCORE_DICTIONARY_H_
