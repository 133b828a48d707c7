// Moved: programs that include it from here get it from its room.
#ifndef HOST_DOM_ELEM_UTILITY_H_
#define HOST_DOM_ELEM_UTILITY_H_

#include "host/translate/dom_elem_utility.h"

#endif  // HOST_DOM_ELEM_UTILITY_H_
