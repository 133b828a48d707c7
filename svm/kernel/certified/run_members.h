// Which vectors form a run: neighbours that the same machines use with the same signs.
#ifndef SVM_KERNEL_CERTIFIED_RUN_MEMBERS_H_
#define SVM_KERNEL_CERTIFIED_RUN_MEMBERS_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "svm/kernel/packed/packed_engine.h"

namespace MCSVM_700::certified {

// The coefficients of one sign of one machine: 2 machine, or 2 machine + 1 where they are negative.
using ColumnNumber = std::uint32_t;

// A coefficient as its column and its size.
struct SignedTerm {
  ColumnNumber column;
  double size;  // more than 0
};

// The terms of all vectors; coefficients of 0 are left out, and those of the same column added.
class TermsByVector {
 public:
  explicit TermsByVector(const PackedEngine& engine);
  // By ascending column.
  std::span<const SignedTerm> Of(std::size_t vector) const {
    return {terms_.data() + begin_[vector], begin_[vector + 1] - begin_[vector]};
  }
  std::size_t vectors() const { return begin_.size() - 1; }

 private:
  std::vector<std::size_t> begin_;
  std::vector<SignedTerm> terms_;
};

struct RunMembers {
  std::vector<ColumnNumber> columns;   // ascending: every column that a member has a term in
  std::vector<std::uint32_t> vectors;  // positions in the pool, by their place in the run
  std::size_t terms = 0;               // of all members
};

// Runs in an order of their own, so that few columns of a run are empty, vectors of opposite signs
// lie apart, and those of a long run with one column have much the same norm: bounds are then
// tight, and sums cheap. Vectors without terms are left out.
std::vector<RunMembers> FreeRuns(const TermsByVector& terms, std::span<const double> norms);

// Runs in the order of the pool, each of whole groups of kRunStart vectors but for the last.
std::vector<RunMembers> PoolRuns(const TermsByVector& terms);

}  // namespace MCSVM_700::certified

#endif  // SVM_KERNEL_CERTIFIED_RUN_MEMBERS_H_
