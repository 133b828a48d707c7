// Moved: programs that include it from here get it from its room.
#ifndef HOST_TRANSLATOR_H_
#define HOST_TRANSLATOR_H_

#include "host/translate/translator.h"

#endif  // HOST_TRANSLATOR_H_
