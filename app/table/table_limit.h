// The sentence about a table that exceeds a limit.
#ifndef APP_TABLE_TABLE_LIMIT_H_
#define APP_TABLE_TABLE_LIMIT_H_

#include <string>

#include "host/xml/limits.h"

namespace svmscore::app {

// What a message about a table of cases says where a limit is exceeded.
std::string BeyondTableLimit(const Limits& limits, Limit limit);

}  // namespace svmscore::app

#endif  // APP_TABLE_TABLE_LIMIT_H_
