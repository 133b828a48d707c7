// Moved: programs that include it from here get it from its room.
#ifndef HOST_TAGS_H_
#define HOST_TAGS_H_

#include "host/xml/tags.h"

#endif  // HOST_TAGS_H_
