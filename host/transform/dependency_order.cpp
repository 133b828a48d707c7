#include "host/transform/dependency_order.h"

#include <algorithm>
#include <cstddef>

namespace svmscore::transform {
namespace {

enum class Mark : char { kNew, kOpen, kDone };

struct Visit {
  int item = 0;
  std::size_t next = 0;  // the next of its dependencies to look at
};

}  // namespace

DependencyOrder SortByDependency(const std::vector<std::vector<int>>& needs) {
  DependencyOrder order;
  order.sequence.reserve(needs.size());
  std::vector<Mark> marks(needs.size(), Mark::kNew);
  std::vector<Visit> path;
  for (std::size_t start = 0; start < needs.size(); ++start) {
    if (marks[start] != Mark::kNew) continue;
    path.push_back({static_cast<int>(start), 0});
    marks[start] = Mark::kOpen;
    while (!path.empty()) {
      Visit& visit = path.back();
      const auto item = static_cast<std::size_t>(visit.item);
      if (visit.next == needs[item].size()) {
        marks[item] = Mark::kDone;
        order.sequence.push_back(visit.item);
        path.pop_back();
        continue;
      }
      const int need = needs[item][visit.next++];
      Mark& mark = marks[static_cast<std::size_t>(need)];
      if (mark == Mark::kNew) {
        mark = Mark::kOpen;
        path.push_back({need, 0});
      } else if (mark == Mark::kOpen) {
        auto first = std::find_if(path.begin(), path.end(),
                                  [need](const Visit& open) { return open.item == need; });
        for (; first != path.end(); ++first) order.cycle.push_back(first->item);
        order.cycle.push_back(need);
        return order;
      }
    }
  }
  return order;
}

}  // namespace svmscore::transform
