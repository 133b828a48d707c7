// Moved: programs that include it from here get it from its room.
#ifndef HOST_CANCEL_QUERY_H_
#define HOST_CANCEL_QUERY_H_

#include "host/model/cancel_query.h"

#endif  // HOST_CANCEL_QUERY_H_
