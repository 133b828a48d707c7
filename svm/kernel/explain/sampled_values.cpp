// Shapley values as means over drawn orders of the players.
//
// In an order, a player contributes what the decision value changes by when the player's entries
// turn from the background's into the case's, after those of the players before it. Contributions
// add up to the whole difference, whatever the order. Each row of the background gets the same
// number of orders, in pairs of an order and its reverse; the standard error is that of the means
// of pairs within each row. The orders depend on the seed and the row alone.
#include <algorithm>
#include <cmath>
#include <memory>
#include <numeric>
#include <utility>
#include <vector>

#include "svm/kernel/explain/values.h"

namespace MCSVM_700::explain {
namespace {

// S. Vigna's splitmix64.
class OrderSource {
 public:
  explicit OrderSource(std::uint64_t seed) : state_(seed) {}
  std::uint64_t Next() {
    std::uint64_t bits = (state_ += 0x9e3779b97f4a7c15);
    bits = (bits ^ (bits >> 30)) * 0xbf58476d1ce4e5b9;
    bits = (bits ^ (bits >> 27)) * 0x94d049bb133111eb;
    return bits ^ (bits >> 31);
  }
  void Shuffle(std::vector<std::uint32_t>& order) {
    for (std::size_t left = order.size(); left > 1; --left) {
      const std::uint64_t least = (0 - left) % left;  // below it, some remainders come more often
      std::uint64_t bits = Next();
      while (bits < least) bits = Next();
      std::swap(order[left - 1], order[bits % left]);
    }
  }

 private:
  std::uint64_t state_;
};

constexpr std::size_t kCasesAtATime = 256;
constexpr std::size_t kFewestPairs = 2;   // of each row, so that there is an error
constexpr std::size_t kUsualPairs = 200;  // of all rows together, where the caller does not say

class SampledValues : public Values {
 public:
  SampledValues(const Subject& subject, Sampling sampling) : subject_(subject) {
    const std::size_t rows = subject.game.rows();
    const std::size_t pairs =
        sampling.orders > 0 ? (sampling.orders + 1) / 2 : (kUsualPairs + rows - 1) / rows;
    pairs_ = std::max(pairs, kFewestPairs);
    seed_ = sampling.seed;
  }
  bool IsSampled() const override { return true; }
  void Compute(CaseRows cases, double* values, double* errors) const override;

 private:
  struct Room {
    PackedScratch scratch;
    std::vector<double> entries, decisions, current, before;
  };
  void ComputeCase(const double* x, double* values, double* errors, Room& room) const;
  // Adds the contributions of the players in `order`, from row to case, to sum[machines][players].
  void Walk(const double* x, std::size_t row, const std::vector<std::uint32_t>& order, Room& room,
            double* sum) const;
  void EvenPair(const double* x, double* sum) const;

  const Subject subject_;
  std::size_t pairs_;
  std::uint64_t seed_;
};

void SampledValues::Walk(const double* x, std::size_t row, const std::vector<std::uint32_t>& order,
                         Room& room, double* sum) const {
  const Game& game = subject_.game;
  const std::size_t entries = subject_.sums.entries();
  const std::size_t machines = subject_.sums.machines().size();
  room.current.assign(game.row(row), game.row(row) + entries);
  room.entries.resize(entries * kCasesAtATime);
  room.decisions.resize(machines * kCasesAtATime);
  room.before.resize(machines);
  const auto decide = [&](std::size_t count) {
    subject_.engine.DecideMany({room.entries.data(), kCasesAtATime}, count, room.scratch,
                               {room.decisions.data(), kCasesAtATime});
  };
  const auto put = [&](std::size_t at) {
    for (std::size_t e = 0; e < entries; ++e) {
      room.entries[e * kCasesAtATime + at] = room.current[e];
    }
  };
  put(0);
  decide(1);
  for (std::size_t m = 0; m < machines; ++m) room.before[m] = room.decisions[m * kCasesAtATime];
  for (std::size_t first = 0; first < order.size(); first += kCasesAtATime) {
    const std::size_t count = std::min(kCasesAtATime, order.size() - first);
    for (std::size_t i = 0; i < count; ++i) {
      for (const std::size_t e : game.entries_of(order[first + i])) room.current[e] = x[e];
      put(i);
    }
    decide(count);
    for (std::size_t m = 0; m < machines; ++m) {
      for (std::size_t i = 0; i < count; ++i) {
        const double decision = room.decisions[m * kCasesAtATime + i];
        sum[m * game.players() + order[first + i]] += decision - room.before[m];
        room.before[m] = decision;
      }
    }
  }
}

// Players that nothing distinguishes share what they contribute.
void SampledValues::EvenPair(const double* x, double* sum) const {
  const Game& game = subject_.game;
  for (const std::vector<std::uint32_t>& members : game.alike()) {
    std::vector<bool> done(members.size());
    for (std::size_t i = 0; i < members.size(); ++i) {
      if (done[i]) continue;
      std::vector<std::uint32_t> same;
      for (std::size_t k = i; k < members.size(); ++k) {
        if (done[k] || !game.SameEntries(x, members[i], members[k])) continue;
        done[k] = true;
        same.push_back(members[k]);
      }
      if (same.size() < 2) continue;
      for (std::size_t m = 0; m < subject_.sums.machines().size(); ++m) {
        double* const of_machine = sum + m * game.players();
        double total = 0.0;
        for (const std::uint32_t j : same) total += of_machine[j];
        for (const std::uint32_t j : same) of_machine[j] = total / static_cast<double>(same.size());
      }
    }
  }
}

void SampledValues::ComputeCase(const double* x, double* values, double* errors, Room& room) const {
  const Game& game = subject_.game;
  const std::size_t size = subject_.sums.machines().size() * game.players();
  std::vector<std::uint32_t> match(game.players());
  game.Match(x, match.data());
  std::fill_n(values, size, 0.0);
  std::vector<double> variance(size, 0.0);
  std::vector<double> sum(size), mean(size), squares(size);
  std::vector<std::uint32_t> all(game.players());
  std::vector<std::uint32_t> order;
  const auto pairs = static_cast<double>(pairs_);
  for (std::size_t b = 0; b < game.rows(); ++b) {
    OrderSource source(OrderSource(seed_ ^ (b + 1) * 0xd1342543de82ef95).Next());
    std::iota(all.begin(), all.end(), 0u);
    std::fill(mean.begin(), mean.end(), 0.0);
    std::fill(squares.begin(), squares.end(), 0.0);
    for (std::size_t pair = 0; pair < pairs_; ++pair) {
      source.Shuffle(all);
      order.clear();
      for (const std::uint32_t j : all) {
        if (game.value_of(b, j) != match[j]) order.push_back(j);
      }
      std::fill(sum.begin(), sum.end(), 0.0);
      Walk(x, b, order, room, sum.data());
      std::reverse(order.begin(), order.end());
      Walk(x, b, order, room, sum.data());
      EvenPair(x, sum.data());
      for (std::size_t i = 0; i < size; ++i) {  // B. P. Welford's update of mean and squares
        const double change = 0.5 * sum[i] - mean[i];
        mean[i] += change / static_cast<double>(pair + 1);
        squares[i] += change * (0.5 * sum[i] - mean[i]);
      }
    }
    for (std::size_t i = 0; i < size; ++i) {
      values[i] += mean[i];
      variance[i] += squares[i] / (pairs * (pairs - 1.0));
    }
  }
  const auto rows = static_cast<double>(game.rows());
  for (std::size_t i = 0; i < size; ++i) values[i] /= rows;
  game.Even(x, subject_.sums.machines().size(), values);
  if (errors == nullptr) return;
  for (std::size_t i = 0; i < size; ++i) errors[i] = std::sqrt(variance[i]) / rows;
}

void SampledValues::Compute(CaseRows cases, double* values, double* errors) const {
  const std::size_t size = subject_.sums.machines().size() * subject_.game.players();
  Room room;
  for (std::size_t c = 0; c < cases.count; ++c) {
    ComputeCase(cases.entries + c * subject_.sums.entries(), values + c * size,
                errors == nullptr ? nullptr : errors + c * size, room);
  }
}

}  // namespace

std::unique_ptr<const Values> MakeSampledValues(const Subject& subject, Sampling sampling) {
  return std::make_unique<SampledValues>(subject, sampling);
}

}  // namespace MCSVM_700::explain
