// Moved: programs that include it from here get it from its room.
#ifndef HOST_TRANSCODER_H_
#define HOST_TRANSCODER_H_

#include "host/xml/transcoder.h"

#endif  // HOST_TRANSCODER_H_
