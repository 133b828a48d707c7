// Moved: programs that include it from here get it from its room.
#ifndef HOST_TRANSFORMATION_DICTIONARY_H_
#define HOST_TRANSFORMATION_DICTIONARY_H_

#include "host/transform/transformation_dictionary.h"

#endif  // HOST_TRANSFORMATION_DICTIONARY_H_
