#include "svm/kernel/packed/pool.h"

#include <functional>
#include <queue>

namespace MCSVM_700::packed {
namespace {

constexpr std::uint32_t kNone = UINT32_MAX;

// "Term k comes before term k + 1" for all machines, as a graph over the vectors in the order of
// their first use.
struct Precedence {
  std::vector<std::uint32_t> vectors;                  // by first use
  std::vector<std::vector<std::uint32_t>> successors;  // of and in first uses
  std::vector<std::size_t> predecessor_count;
};

Precedence PrecedenceOf(std::span<const MachineView> machines, std::size_t vector_count) {
  Precedence graph;
  std::vector<std::uint32_t> first_use(vector_count, kNone);
  for (const MachineView& machine : machines) {
    std::uint32_t before = kNone;
    for (const std::uint32_t vector : machine.vectors) {
      if (first_use[vector] == kNone) {
        first_use[vector] = static_cast<std::uint32_t>(graph.vectors.size());
        graph.vectors.push_back(vector);
        graph.successors.emplace_back();
        graph.predecessor_count.push_back(0);
      }
      const std::uint32_t here = first_use[vector];
      if (before != kNone && before != here) {
        graph.successors[before].push_back(here);
        ++graph.predecessor_count[here];
      }
      before = here;
    }
  }
  return graph;
}

// The graph's nodes in an order in which each follows its predecessors, by first use where there is
// a choice. Where the machines contradict one another, the earliest remaining node comes next.
std::vector<std::uint32_t> Sorted(Precedence graph) {
  std::priority_queue<std::uint32_t, std::vector<std::uint32_t>, std::greater<>> ready;
  std::vector<bool> placed(graph.vectors.size(), false);
  for (std::uint32_t node = 0; node < graph.vectors.size(); ++node) {
    if (graph.predecessor_count[node] == 0) ready.push(node);
  }
  std::vector<std::uint32_t> order;
  order.reserve(graph.vectors.size());
  std::uint32_t earliest_left = 0;
  while (order.size() < graph.vectors.size()) {
    std::uint32_t node = 0;
    if (ready.empty()) {
      while (placed[earliest_left]) ++earliest_left;
      node = earliest_left;
    } else {
      node = ready.top();
      ready.pop();
      if (placed[node]) continue;
    }
    placed[node] = true;
    order.push_back(node);
    for (const std::uint32_t next : graph.successors[node]) {
      if (--graph.predecessor_count[next] == 0 && !placed[next]) ready.push(next);
    }
  }
  return order;
}

}  // namespace

Pool MakePool(std::span<const MachineView> machines, std::size_t vector_count) {
  Precedence graph = PrecedenceOf(machines, vector_count);
  Pool pool;
  std::vector<std::uint32_t> position(vector_count, kNone);
  const std::vector<std::uint32_t> by_first_use = graph.vectors;
  for (const std::uint32_t node : Sorted(std::move(graph))) {
    position[by_first_use[node]] = static_cast<std::uint32_t>(pool.vectors.size());
    pool.vectors.push_back(by_first_use[node]);
  }
  for (const MachineView& machine : machines) {
    std::vector<std::uint32_t>& terms = pool.terms.emplace_back();
    terms.reserve(machine.vectors.size());
    bool ascending = true;
    for (const std::uint32_t vector : machine.vectors) {
      ascending = ascending && (terms.empty() || terms.back() < position[vector]);
      terms.push_back(position[vector]);
    }
    pool.ascending.push_back(ascending);
  }
  return pool;
}

}  // namespace MCSVM_700::packed
