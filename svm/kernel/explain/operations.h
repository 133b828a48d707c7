// What an instruction set offers to explanations. Plain data: the files of the instruction sets
// share no function with the rest of the program.
#ifndef SVM_KERNEL_EXPLAIN_OPERATIONS_H_
#define SVM_KERNEL_EXPLAIN_OPERATIONS_H_

#include <cstddef>

#include "host/model/instruction_set.h"

namespace MCSVM_700::explain {

// Vectors that are worked on together, lane by lane. A multiple of every vector width.
constexpr std::size_t kBlock = 32;

// A player whose entries differ between the explained case and a case of the background. All
// arrays are [kBlock], one lane for each vector, 64-byte aligned.
struct Player {
  const double* present;  // of the explained case
  const double* absent;   // of the background
  double* sum;            // what is added to
};

// The players of a case and a case of the background.
struct Players {
  const Player* differing;
  std::size_t differing_count;
  const double* const* equal;  // what is present and absent alike of the other players
  std::size_t equal_count;
};

// Symmetric nodes +-at of a Gauss-Legendre rule on [-1, 1], for the mean over it: each node has
// the weight weight[i], and together they have 1.
struct NodePairs {
  std::size_t count;
  const double* at;
  const double* square;  // at^2
  const double* weight;
};

// Nodes on [0, 1] for the mean over it.
struct Nodes {
  std::size_t count;
  const double* at;
  const double* weight;
};

constexpr std::size_t kMaxDegree = 12;

struct Operations {
  // Adds to each differing player j
  //   (a_j - c_j) prod_equal e * integral_0^1 prod_{l != j} (t a_l + (1 - t) c_l) dt,
  // where a, c and e are twice what `present`, `absent` and `equal` hold. `room` has space for
  // ProductRoom() doubles.
  void (*add_products)(const Players& players, const NodePairs& nodes, double* room);
  // Adds to each differing player j, with s = offset + sum_equal e + sum_{l != j} Y_l, where the
  // independent Y_l are a_l with probability t and else c_l,
  //   integral_0^1 E[(s + a_j)^degree - (s + c_j)^degree] dt.
  // 1 <= degree <= kMaxDegree; `room` has space for PowerRoom() doubles.
  void (*add_powers)(const Players& players, double offset, std::size_t degree, const Nodes& nodes,
                     double* room);
};

constexpr std::size_t kMaxLanes = 8;
constexpr std::size_t kChunk = 3;  // node pairs that are worked on together

constexpr std::size_t ProductRoom(std::size_t players) {
  return (players / 2 + 1) * (9 + 4 * kChunk) * kMaxLanes;
}
constexpr std::size_t PowerRoom(std::size_t players, std::size_t degree) {
  return (players + 1) * degree * kMaxLanes;
}

// Each defined in the file of its instruction set.
const Operations& Sse2Operations();
const Operations& Avx2Operations();
const Operations& Avx512Operations();

// REQUIRES: the CPU has the instruction set.
const Operations& OperationsOf(svmscore::Isa isa);

}  // namespace MCSVM_700::explain

#endif  // SVM_KERNEL_EXPLAIN_OPERATIONS_H_
