// Shapley values vector by vector and row by row of the background: see operations.h.
#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "svm/kernel/explain/gauss_legendre.h"
#include "svm/kernel/explain/operations.h"
#include "svm/kernel/explain/values.h"
#include "svm/kernel/packed/aligned_buffer.h"
#include "svm/kernel/packed/operations.h"
#include "svm/kernel/packed/vector_check.h"

namespace MCSVM_700::explain {
namespace {

using packed::AlignedBuffer;

// What the background contributes is kept for later calls where it takes no more than this, and
// else made anew, so many doubles at a time.
constexpr std::size_t kMaxKept = std::size_t{8} << 20;
constexpr std::size_t kAtATime = std::size_t{512} << 10;

// How many pairs of nodes integrate the products of n - 1 factors: exactly, or but for 1e-17 of the
// product of the factors' greatest values. Proof of the latter: for 0 <= c <= a the factor is
// c + (a - c) t, and else a + (c - a) (1 - t), so the product is a sum of t^k (1 - t)^l, k + l < n,
// with weights that are not negative and add up to the product of the greatest values. On the
// ellipse with the foci 0 and 1 whose half axes add up to e^s / 2, |t| and |1 - t| are no more than
// cosh(s / 2)^2 <= e^(s^2 / 4), so the rule of N nodes is wrong by no more than
// 32/15 e^(n s^2 / 4 - 2 N s) / (1 - e^(-2 s)): L. N. Trefethen, Is Gauss quadrature better than
// Clenshaw-Curtis?, SIAM Review 50 (2008), theorem 4.5. With s = 4 N / n that is
// e^(-4 N^2 / n) times less than 10 for n up to 4000; N^2 = 10.5 n makes it 6e-18.
std::size_t NodePairsFor(std::size_t n) {
  const auto enough = std::ceil(std::sqrt(10.5 * static_cast<double>(n)) / 2.0);
  return std::min((n + 3) / 4, static_cast<std::size_t>(enough));
}

class PairwiseValues : public Values {
 public:
  PairwiseValues(const Subject& subject, std::size_t degree);
  void Compute(CaseRows cases, double* values, double* errors) const override;

 private:
  struct Rule {
    std::vector<double> at, square, weight;
  };
  // What the sums over the entries of a player become: the kernel's factor, halved, or a term of
  // its base.
  void Finish(double* sums, std::size_t count) const;
  // Those of all players of a case, [players][kBlock].
  void OfCase(const double* x, const double* dense, double* parts) const;
  // Those of rows [begin, end) of the background, [rows][players][kBlock].
  void OfRows(std::size_t begin, std::size_t end, const double* dense, double* parts) const;
  // The working memory of a group of cases.
  struct Room {
    Room(const PairwiseValues& owner, std::size_t cases);
    AlignedBuffer dense, present, absent, total, work;
    std::vector<std::uint32_t> match;  // [cases][players]
    std::vector<Player> differing;
    std::vector<const double*> equal;
  };

  void Keep();
  void ComputeGroup(CaseRows cases, double* values) const;
  // Adds what row b of the background, of the chunk from `begin` on, makes of case c in a block.
  void AddRow(std::size_t block, std::size_t b, std::size_t begin, std::size_t c, Room& room) const;

  const Subject subject_;
  const std::size_t degree_;  // 0: a product
  const Operations& operations_;
  void (*exp_)(const double* in, double* out, std::size_t count) = nullptr;
  std::vector<Rule> product_rules_;  // by the number of pairs
  Rule power_rule_;
  // Kept: [blocks][slots_][kBlock]. Slots follow the first uses of values, row by row and player by
  // player, so that memory is read in one direction.
  std::size_t slots_ = 0;
  std::vector<std::uint32_t> slot_;  // [rows][players]
  AlignedBuffer kept_;
  bool keeps_ = false;
  std::size_t chunk_ = 0;  // rows of the background that are taken together
};

PairwiseValues::PairwiseValues(const Subject& subject, std::size_t degree)
    : subject_(subject), degree_(degree), operations_(OperationsOf(subject.engine.isa())) {
  const Game& game = subject_.game;
  if (const packed::Operations* packed = packed::OperationsOf(subject.engine.isa());
      packed != nullptr && packed->exp != nullptr &&
      packed::MatchingForms(*packed, SVMConst::kRadialBasis, 0.0).values) {
    exp_ = packed->exp;
  }
  if (degree_ > 0) {
    const GaussRule rule = GaussLegendre((degree_ + 1) / 2);
    for (std::size_t i = 0; i < rule.at.size(); ++i) {
      power_rule_.at.push_back(0.5 + 0.5 * rule.at[i]);
      power_rule_.weight.push_back(0.5 * rule.weight[i]);
    }
  } else {
    product_rules_.resize(NodePairsFor(game.players()) + 1);
    for (std::size_t pairs = 1; pairs < product_rules_.size(); ++pairs) {
      const GaussRule rule = GaussLegendre(2 * pairs);
      for (std::size_t i = pairs; i < 2 * pairs; ++i) {
        product_rules_[pairs].at.push_back(rule.at[i]);
        product_rules_[pairs].square.push_back(rule.at[i] * rule.at[i]);
        product_rules_[pairs].weight.push_back(0.5 * rule.weight[i]);
      }
    }
  }
  for (std::size_t j = 0; j < game.players(); ++j) slots_ += game.values(j);
  const std::size_t size = slots_ * kBlock;
  keeps_ = size > 0 && subject_.sums.blocks() <= kMaxKept / size;
  chunk_ = keeps_ ? game.rows()
                  : std::clamp(kAtATime / std::max<std::size_t>(game.players() * kBlock, 1),
                               std::size_t{1}, game.rows());
  if (keeps_) Keep();
}

void PairwiseValues::Keep() {
  const Game& game = subject_.game;
  const std::size_t size = slots_ * kBlock;
  kept_.Reserve(subject_.sums.blocks() * size);
  AlignedBuffer dense;
  dense.Reserve(subject_.sums.entries() * kBlock);
  std::uint32_t next = 0;
  for (std::size_t b = 0; b < game.rows(); ++b) {
    for (std::size_t j = 0; j < game.players(); ++j) {
      const std::size_t first = game.first_row(j, game.value_of(b, j));
      slot_.push_back(first == b ? next++ : slot_[first * game.players() + j]);
    }
  }
  for (std::size_t block = 0; block < subject_.sums.blocks(); ++block) {
    subject_.sums.Expand(block, dense.data());
    double* const parts = kept_.data() + block * size;
    for (std::size_t b = 0; b < game.rows(); ++b) {
      for (std::size_t j = 0; j < game.players(); ++j) {
        if (game.first_row(j, game.value_of(b, j)) != b) continue;
        PartialSums(subject_.sums.kernel(), game.entries_of(j), game.row(b), dense.data(),
                    parts + slot_[b * game.players() + j] * kBlock);
      }
    }
    Finish(parts, size);
  }
}

void PairwiseValues::Finish(double* sums, std::size_t count) const {
  const double gamma = subject_.sums.kernel().gamma;
  if (degree_ > 0) {
    for (std::size_t i = 0; i < count; ++i) sums[i] *= gamma;
    return;
  }
  for (std::size_t i = 0; i < count; ++i) sums[i] *= -gamma;
  if (exp_ != nullptr) {
    exp_(sums, sums, count);
  } else {
    for (std::size_t i = 0; i < count; ++i) sums[i] = std::exp(sums[i]);
  }
  for (std::size_t i = 0; i < count; ++i) sums[i] *= 0.5;
}

void PairwiseValues::OfCase(const double* x, const double* dense, double* parts) const {
  const Game& game = subject_.game;
  for (std::size_t j = 0; j < game.players(); ++j) {
    PartialSums(subject_.sums.kernel(), game.entries_of(j), x, dense, parts + j * kBlock);
  }
  Finish(parts, game.players() * kBlock);
}

void PairwiseValues::OfRows(std::size_t begin, std::size_t end, const double* dense,
                            double* parts) const {
  for (std::size_t b = begin; b < end; ++b) {
    OfCase(subject_.game.row(b), dense, parts + (b - begin) * subject_.game.players() * kBlock);
  }
}

void PairwiseValues::Compute(CaseRows cases, double* values, double*) const {
  const std::size_t entries = subject_.sums.entries();
  const std::size_t size = subject_.sums.machines().size() * subject_.game.players();
  const std::size_t room = 2 * std::max<std::size_t>(subject_.game.players(), 1) * kBlock;
  const std::size_t group = std::max<std::size_t>(kAtATime / room, 1);
  for (std::size_t c = 0; c < cases.count; c += group) {
    ComputeGroup({cases.entries + c * entries, std::min(group, cases.count - c)},
                 values + c * size);
  }
}

PairwiseValues::Room::Room(const PairwiseValues& owner, std::size_t cases)
    : match(cases * owner.subject_.game.players()),
      differing(owner.subject_.game.players()),
      equal(owner.subject_.game.players()) {
  const std::size_t players = owner.subject_.game.players();
  dense.Reserve(owner.subject_.sums.entries() * kBlock);
  present.Reserve(cases * players * kBlock);
  total.Reserve(cases * players * kBlock);
  work.Reserve(owner.degree_ > 0 ? PowerRoom(players, owner.degree_) : ProductRoom(players));
  if (!owner.keeps_) absent.Reserve(owner.chunk_ * players * kBlock);
}

// The cases of a group share what is computed of the background.
void PairwiseValues::ComputeGroup(CaseRows cases, double* values) const {
  const Game& game = subject_.game;
  const MachineSums& sums = subject_.sums;
  const std::size_t players = game.players();
  const std::size_t machines = sums.machines().size();
  const std::size_t size = players * kBlock;
  std::fill_n(values, cases.count * machines * players, 0.0);
  Room room(*this, cases.count);
  for (std::size_t c = 0; c < cases.count; ++c) {
    game.Match(cases.entries + c * sums.entries(), room.match.data() + c * players);
  }
  alignas(64) double coefficients[kBlock];
  for (std::size_t block = 0; block < sums.blocks(); ++block) {
    sums.Expand(block, room.dense.data());
    std::fill_n(room.total.data(), cases.count * size, 0.0);
    for (std::size_t c = 0; c < cases.count; ++c) {
      OfCase(cases.entries + c * sums.entries(), room.dense.data(), room.present.data() + c * size);
    }
    for (std::size_t begin = 0; begin < game.rows(); begin += chunk_) {
      const std::size_t end = std::min(begin + chunk_, game.rows());
      if (!keeps_) OfRows(begin, end, room.dense.data(), room.absent.data());
      for (std::size_t c = 0; c < cases.count; ++c) {
        for (std::size_t b = begin; b < end; ++b) AddRow(block, b, begin, c, room);
      }
    }
    for (std::size_t m = 0; m < machines; ++m) {
      if (!sums.Coefficients(block, m, coefficients)) continue;
      for (std::size_t c = 0; c < cases.count; ++c) {
        double* const to = values + (c * machines + m) * players;
        for (std::size_t j = 0; j < players; ++j) {
          to[j] += WeightedSum(coefficients, room.total.data() + c * size + j * kBlock);
        }
      }
    }
  }
  const auto rows = static_cast<double>(game.rows());
  for (std::size_t c = 0; c < cases.count; ++c) {
    double* const of_case = values + c * machines * players;
    for (std::size_t i = 0; i < machines * players; ++i) of_case[i] /= rows;
    game.Even(cases.entries + c * sums.entries(), machines, of_case);
  }
}

void PairwiseValues::AddRow(std::size_t block, std::size_t b, std::size_t begin, std::size_t c,
                            Room& room) const {
  const Game& game = subject_.game;
  const std::size_t players = game.players();
  const std::uint32_t* const match = room.match.data() + c * players;
  const double* const kept = keeps_ ? kept_.data() + block * slots_ * kBlock : nullptr;
  Players who{room.differing.data(), 0, room.equal.data(), 0};
  for (std::size_t j = 0; j < players; ++j) {
    const std::size_t place = (c * players + j) * kBlock;
    const double* const of_case = room.present.data() + place;
    if (game.value_of(b, j) == match[j]) {
      if (!game.entries_of(j).empty()) room.equal[who.equal_count++] = of_case;
      continue;
    }
    const double* const of_row = keeps_ ? kept + slot_[b * players + j] * kBlock
                                        : room.absent.data() + ((b - begin) * players + j) * kBlock;
    room.differing[who.differing_count++] = {of_case, of_row, room.total.data() + place};
  }
  if (who.differing_count == 0) return;
  if (degree_ > 0) {
    operations_.add_powers(
        who, subject_.sums.kernel().coef0, degree_,
        {power_rule_.at.size(), power_rule_.at.data(), power_rule_.weight.data()},
        room.work.data());
  } else {
    const Rule& rule = product_rules_[NodePairsFor(who.differing_count)];
    operations_.add_products(
        who, {rule.at.size(), rule.at.data(), rule.square.data(), rule.weight.data()},
        room.work.data());
  }
}

}  // namespace

std::unique_ptr<const Values> MakePairwiseValues(const Subject& subject) {
  if (subject.game.players() > kMaxExactPlayers) return nullptr;
  const SVMConst::KernelParameters& kernel = subject.sums.kernel();
  if (kernel.type == SVMConst::kRadialBasis) return std::make_unique<PairwiseValues>(subject, 0);
  const double degree = kernel.degree;
  if (kernel.type != SVMConst::kPolynomial || degree != std::floor(degree) || degree < 1.0 ||
      degree > static_cast<double>(kMaxDegree)) {
    return nullptr;
  }
  return std::make_unique<PairwiseValues>(subject, static_cast<std::size_t>(degree));
}

}  // namespace MCSVM_700::explain
