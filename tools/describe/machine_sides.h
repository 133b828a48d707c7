// Which side of a machine's threshold speaks for which category.
#ifndef TOOLS_DESCRIBE_MACHINE_SIDES_H_
#define TOOLS_DESCRIBE_MACHINE_SIDES_H_

#include <cstddef>
#include <limits>
#include <utility>

#include "tools/describe/model_summary.h"

namespace svmscore::tools {

// What a decision value means. Categories of the target: -1 for a regression, and where no single
// category is meant.
struct MachineSides {
  int above = -1;
  int below = -1;
  double threshold = std::numeric_limits<double>::quiet_NaN();  // NaN: nothing changes anywhere
};
// Of a machine by its position in the document; `categories` are what BatchModel says of it. [any
// thread] Fails: never.
MachineSides SidesOf(const ModelSummary& summary, std::pair<int, int> categories,
                     std::size_t machine);

}  // namespace svmscore::tools

#endif  // TOOLS_DESCRIBE_MACHINE_SIDES_H_
