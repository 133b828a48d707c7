// Moved: programs that include it from here get it from its room.
#ifndef HOST_NUMBER_TEXT_H_
#define HOST_NUMBER_TEXT_H_

#include "host/text/number_text.h"

#endif  // HOST_NUMBER_TEXT_H_
