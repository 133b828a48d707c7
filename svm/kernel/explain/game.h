// Players, and the background that absent ones take their entries from.
#ifndef SVM_KERNEL_EXPLAIN_GAME_H_
#define SVM_KERNEL_EXPLAIN_GAME_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "svm/kernel/explain/machine_sums.h"
#include "svm/kernel/packed/layout.h"

namespace MCSVM_700::explain {

// Immutable. Entries are compared as numbers: -0.0 is 0.0.
class Game {
 public:
  static constexpr std::uint32_t kNew = UINT32_MAX;

  // REQUIRES: players' entries are below sums.entries(); background.count >= 1.
  Game(std::vector<std::vector<std::size_t>> players, packed::CaseColumns background,
       std::size_t rows, const MachineSums& sums);

  std::size_t players() const { return players_.size(); }
  const std::vector<std::size_t>& entries_of(std::size_t player) const { return players_[player]; }
  std::size_t rows() const { return rows_; }
  // Case `row` of the background, [entries].
  const double* row(std::size_t row) const { return background_.data() + row * entries_; }

  // What the player's entries are in the background: different values 0, 1, ..., each with the
  // first row that has it, and the value of each row.
  std::size_t values(std::size_t player) const { return first_row_[player].size(); }
  std::size_t first_row(std::size_t player, std::size_t value) const {
    return first_row_[player][value];
  }
  std::uint32_t value_of(std::size_t row, std::size_t player) const {
    return value_of_[row * players_.size() + player];
  }
  // The value that a case x[entries] has, or kNew; match[players].
  void Match(const double* x, std::uint32_t* match) const;

  // Gives players that nothing distinguishes the value of the first of them; [machines][players].
  void Even(const double* x, std::size_t machines, double* values) const;
  // Players that nothing in the model and the background distinguishes, at least two in each list.
  const std::vector<std::vector<std::uint32_t>>& alike() const { return alike_; }
  bool SameEntries(const double* x, std::size_t player, std::size_t other) const;

 private:
  void FindValues();
  void FindAlike(const MachineSums& sums);

  std::vector<std::vector<std::size_t>> players_;
  std::size_t entries_;
  std::size_t rows_;
  std::vector<double> background_;                     // [rows][entries]
  std::vector<std::vector<std::uint32_t>> first_row_;  // [players][values]
  std::vector<std::uint32_t> value_of_;                // [rows][players]
  std::vector<std::vector<std::uint32_t>> alike_;
};

}  // namespace MCSVM_700::explain

#endif  // SVM_KERNEL_EXPLAIN_GAME_H_
