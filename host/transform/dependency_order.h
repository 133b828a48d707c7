// The order in which items that depend on each other are computed.
#ifndef HOST_TRANSFORM_DEPENDENCY_ORDER_H_
#define HOST_TRANSFORM_DEPENDENCY_ORDER_H_

#include <vector>

namespace svmscore::transform {

struct DependencyOrder {
  std::vector<int> sequence;  // every item after those that it depends on
  std::vector<int> cycle;     // the items of one cycle, with the first again at the end; or empty
};

// `needs[i]` are the items that item i depends on. Does not recurse, however long the chains are.
DependencyOrder SortByDependency(const std::vector<std::vector<int>>& needs);

}  // namespace svmscore::transform

#endif  // HOST_TRANSFORM_DEPENDENCY_ORDER_H_
