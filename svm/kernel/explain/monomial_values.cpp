// Shapley values of a kernel sum that is a polynomial in the entries, monomial by monomial.
//
// With the background's means u, x = u + y, the decision value of the kernel (gamma x.v + c)^p is
//   sum_i alpha_i (gamma y.v_i + c_i)^p = sum over monomials of w y_e y_f ..., c_i = gamma u.v_i +
//   c,
// and the linear kernel is that of p = 1, gamma = 1, c = 0. A monomial is a product over the
// players of its entries, at most p of them. The worth of a set T of them is the product of their
// parts times the mean of the product of the others' parts over the background, and the value of a
// player is the mean of its contributions with Shapley's weights over the sets of the others.
//
// Rounding: some units of 2^-53 of sum |alpha_i| (gamma |y|.|v_i| + |c_i|)^p, for the case and for
// the mean over the background. The weights w are summed in extended precision.
#include <algorithm>
#include <bit>
#include <cmath>
#include <memory>
#include <utility>
#include <vector>

#include "svm/kernel/explain/values.h"

namespace MCSVM_700::explain {
namespace {

constexpr std::size_t kMaxMonomialDegree = 4;
constexpr std::size_t kMaxMonomials = std::size_t{1} << 18;
constexpr double kMaxWeights = 0x1p22;  // machines x monomials
constexpr double kMaxWork = 0x1p27;     // vectors x monomials

double Binomial(std::size_t n, std::size_t k) {
  double value = 1.0;
  for (std::size_t i = 1; i <= k; ++i) {
    value = value * static_cast<double>(n - k + i) / static_cast<double>(i);
  }
  return value;
}

// Monomials of 1 to `degree` of `variables` variables as positions: by degree, then by the rank of
// the ascending variables v1 <= v2 <= ..., sum_k C(v_k + k - 1, k).
class MonomialOrder {
 public:
  MonomialOrder(std::size_t variables, std::size_t degree) : first_(1, 0) {
    counts_.emplace_back(variables + 1, 1);
    for (std::size_t k = 1; k <= degree; ++k) {
      std::vector<std::size_t> counts(1, 0);  // C(v + k - 1, k) for each v
      for (std::size_t v = 1; v <= variables; ++v) {
        counts.push_back(counts.back() + counts_.back()[v]);
      }
      first_.push_back(first_.back() + counts.back());
      counts_.push_back(std::move(counts));
    }
  }
  std::size_t count() const { return first_.back(); }
  // REQUIRES: 1 <= size <= degree.
  std::size_t Position(const std::uint32_t* variables, std::size_t size) const {
    std::size_t rank = first_[size - 1];
    for (std::size_t k = 0; k < size; ++k) rank += counts_[k + 1][variables[k]];
    return rank;
  }

 private:
  std::vector<std::vector<std::size_t>> counts_;
  std::vector<std::size_t> first_;
};

// Calls visit(variables, size, product) for each monomial of the variables with value[i] at[i],
// ascending; monomials that contain a zero are left out.
template <class Visit>
void VisitMonomials(const std::vector<std::uint32_t>& at, const std::vector<long double>& value,
                    std::size_t degree, const Visit& visit) {
  std::uint32_t variables[kMaxMonomialDegree];
  std::size_t index[kMaxMonomialDegree] = {};
  long double product[kMaxMonomialDegree] = {1.0L};
  if (degree == 0) return;
  for (std::size_t depth = 0;;) {
    if (index[depth] == at.size()) {
      if (depth == 0) return;
      ++index[--depth];
      continue;
    }
    const long double longer = product[depth] * value[index[depth]];
    if (longer == 0.0L) {
      ++index[depth];
      continue;
    }
    variables[depth] = at[index[depth]];
    visit(variables, depth + 1, longer);
    if (depth + 1 == degree) {
      ++index[depth];
      continue;
    }
    index[depth + 1] = index[depth];
    product[++depth] = longer;
  }
}

// Monomials of the same number of players.
struct MonomialClass {
  std::size_t players = 0;
  std::vector<std::uint32_t> part;    // [monomials][players]: positions of the players' parts
  std::vector<std::uint32_t> player;  // [monomials][players]
  // [monomials][2^players]: for each set of players that are present, the mean of what the others
  // contribute.
  std::vector<double> absent;
  std::vector<double> weight;  // [monomials][machines]
};

class MonomialValues : public Values {
 public:
  MonomialValues(const Subject& subject, std::size_t degree, std::vector<std::uint32_t> used);
  void Compute(CaseRows cases, double* values, double* errors) const override;

 private:
  void FindPlayers(std::vector<std::uint32_t> used);
  // [monomials][machines]
  std::vector<long double> Weights(const MonomialOrder& order) const;
  // Mean over the background, [monomials].
  std::vector<long double> Means(const MonomialOrder& order) const;
  void AddMonomial(const std::uint32_t* variables, std::size_t size, const double* weight,
                   const MonomialOrder& order, const std::vector<long double>& means);
  std::uint32_t PartOf(const std::uint32_t* variables, std::size_t size);

  struct Part {  // of one player: a product of its entries
    std::uint32_t variables[kMaxMonomialDegree];
    std::size_t size;
  };

  const Subject subject_;
  const std::size_t degree_;
  std::vector<std::uint32_t> entry_;   // of each variable
  std::vector<std::uint32_t> player_;  // likewise
  std::vector<double> centre_;         // likewise
  std::vector<Part> parts_;
  std::vector<std::uint32_t> part_at_;  // by the monomial's position, while parts are looked for
  MonomialClass classes_[kMaxMonomialDegree];
};

MonomialValues::MonomialValues(const Subject& subject, std::size_t degree,
                               std::vector<std::uint32_t> used)
    : subject_(subject), degree_(degree) {
  FindPlayers(std::move(used));
  const std::size_t rows = subject_.game.rows();
  for (const std::uint32_t e : entry_) {  // exact where all rows agree
    const double first = subject_.game.row(0)[e];
    long double sum = 0.0L;
    for (std::size_t b = 0; b < rows; ++b) {
      sum += static_cast<long double>(subject_.game.row(b)[e]) - static_cast<long double>(first);
    }
    centre_.push_back(static_cast<double>(first + sum / static_cast<long double>(rows)));
  }
  const MonomialOrder order(entry_.size(), degree_);
  part_at_.assign(order.count(), UINT32_MAX);
  const std::size_t machines = subject_.sums.machines().size();
  const std::vector<long double> weights = Weights(order);
  const std::vector<long double> means = Means(order);
  std::vector<std::uint32_t> all(entry_.size());
  for (std::size_t v = 0; v < all.size(); ++v) all[v] = static_cast<std::uint32_t>(v);
  std::vector<double> weight(machines);
  for (std::size_t k = 0; k < kMaxMonomialDegree; ++k) classes_[k].players = k + 1;
  VisitMonomials(all, std::vector<long double>(all.size(), 1.0L), degree_,
                 [&](const std::uint32_t* variables, std::size_t size, long double) {
                   const std::size_t position = order.Position(variables, size);
                   bool some = false;
                   for (std::size_t m = 0; m < machines; ++m) {
                     weight[m] = static_cast<double>(weights[position * machines + m]);
                     some = some || weight[m] != 0.0;
                   }
                   if (some) AddMonomial(variables, size, weight.data(), order, means);
                 });
  part_at_ = {};
}

// Variables in the order of their players, so that a player's are neighbours in each monomial.
void MonomialValues::FindPlayers(std::vector<std::uint32_t> used) {
  std::sort(used.begin(), used.end());
  for (std::size_t j = 0; j < subject_.game.players(); ++j) {
    for (const std::size_t e : subject_.game.entries_of(j)) {
      if (!std::binary_search(used.begin(), used.end(), e)) continue;
      entry_.push_back(static_cast<std::uint32_t>(e));
      player_.push_back(static_cast<std::uint32_t>(j));
    }
  }
}

std::vector<long double> MonomialValues::Weights(const MonomialOrder& order) const {
  const MachineSums& sums = subject_.sums;
  const std::size_t machines = sums.machines().size();
  const bool linear = sums.kernel().type == SVMConst::kLinear;
  const long double gamma = linear ? 1.0L : sums.kernel().gamma;
  const long double coef0 = linear ? 0.0L : sums.kernel().coef0;
  std::vector<std::uint32_t> variable(sums.entries(), UINT32_MAX);
  for (std::size_t v = 0; v < entry_.size(); ++v) {
    variable[entry_[v]] = static_cast<std::uint32_t>(v);
  }
  std::vector<std::vector<std::pair<std::uint32_t, double>>> users(sums.vectors().size());
  for (std::uint32_t m = 0; m < machines; ++m) {
    const MachineSum& machine = sums.machines()[m];
    for (std::size_t k = 0; k < machine.vectors.size(); ++k) {
      users[machine.vectors[k]].emplace_back(m, machine.coefficients[k]);
    }
  }
  std::vector<long double> weights(order.count() * machines, 0.0L);
  std::vector<std::pair<std::uint32_t, long double>> filled;
  std::vector<std::uint32_t> at;
  std::vector<long double> value;
  for (std::size_t i = 0; i < sums.vectors().size(); ++i) {
    const SparseVector& vector = sums.vectors()[i];
    long double base = coef0;
    filled.clear();
    for (std::size_t k = 0; k < vector.at.size(); ++k) {
      const std::uint32_t v = variable[vector.at[k]];
      if (v == UINT32_MAX) continue;
      const long double scaled = gamma * static_cast<long double>(vector.value[k]);
      base += scaled * static_cast<long double>(centre_[v]);
      filled.emplace_back(v, scaled);
    }
    std::sort(filled.begin(), filled.end());
    at.clear();
    value.clear();
    for (const auto& [v, scaled] : filled) {
      at.push_back(v);
      value.push_back(scaled);
    }
    // p! / (p - r)! c_i^(p - r) for a monomial of degree r; its powers' factorials follow below.
    long double factor[kMaxMonomialDegree + 1];
    for (std::size_t r = 1; r <= degree_; ++r) {
      factor[r] = 1.0L;
      for (std::size_t k = r; k < degree_; ++k) factor[r] *= base;
      for (std::size_t k = 0; k < r; ++k) factor[r] *= static_cast<long double>(degree_ - k);
    }
    VisitMonomials(at, value, degree_,
                   [&](const std::uint32_t* variables, std::size_t size, long double product) {
                     long double* const to = &weights[order.Position(variables, size) * machines];
                     for (const auto& [m, coefficient] : users[i]) {
                       to[m] += static_cast<long double>(coefficient) * factor[size] * product;
                     }
                   });
  }
  std::vector<std::uint32_t> all(entry_.size());
  for (std::size_t v = 0; v < all.size(); ++v) all[v] = static_cast<std::uint32_t>(v);
  VisitMonomials(all, std::vector<long double>(all.size(), 1.0L), degree_,
                 [&](const std::uint32_t* variables, std::size_t size, long double) {
                   long double orders = 1.0L;  // k! for each variable that comes k times
                   std::size_t times = 1;
                   for (std::size_t k = 1; k < size; ++k) {
                     times = variables[k] == variables[k - 1] ? times + 1 : 1;
                     orders *= static_cast<long double>(times);
                   }
                   if (orders == 1.0L) return;
                   long double* const to = &weights[order.Position(variables, size) * machines];
                   for (std::size_t m = 0; m < machines; ++m) to[m] /= orders;
                 });
  return weights;
}

std::vector<long double> MonomialValues::Means(const MonomialOrder& order) const {
  const std::size_t rows = subject_.game.rows();
  std::vector<long double> means(order.count(), 0.0L);
  std::vector<std::uint32_t> at;
  std::vector<long double> value;
  for (std::size_t b = 0; b < rows; ++b) {
    at.clear();
    value.clear();
    for (std::size_t v = 0; v < entry_.size(); ++v) {
      at.push_back(static_cast<std::uint32_t>(v));
      value.push_back(static_cast<long double>(subject_.game.row(b)[entry_[v]] - centre_[v]));
    }
    VisitMonomials(at, value, degree_,
                   [&](const std::uint32_t* variables, std::size_t size, long double product) {
                     means[order.Position(variables, size)] += product;
                   });
  }
  for (long double& mean : means) mean /= static_cast<long double>(rows);
  return means;
}

std::uint32_t MonomialValues::PartOf(const std::uint32_t* variables, std::size_t size) {
  Part part = {{}, size};
  std::copy_n(variables, size, part.variables);
  parts_.push_back(part);
  return static_cast<std::uint32_t>(parts_.size() - 1);
}

void MonomialValues::AddMonomial(const std::uint32_t* variables, std::size_t size,
                                 const double* weight, const MonomialOrder& order,
                                 const std::vector<long double>& means) {
  std::size_t begin[kMaxMonomialDegree + 1] = {};  // of each player's variables
  std::size_t players = 0;
  for (std::size_t k = 0; k < size; ++k) {
    if (k == 0 || player_[variables[k]] != player_[variables[k - 1]]) begin[players++] = k;
  }
  begin[players] = size;
  MonomialClass& to = classes_[players - 1];
  for (std::size_t p = 0; p < players; ++p) {
    const std::uint32_t* const first = variables + begin[p];
    const std::size_t length = begin[p + 1] - begin[p];
    std::uint32_t& part = part_at_[order.Position(first, length)];
    if (part == UINT32_MAX) part = PartOf(first, length);
    to.part.push_back(part);
    to.player.push_back(player_[*first]);
  }
  for (std::size_t present = 0; present < std::size_t{1} << players; ++present) {
    std::uint32_t rest[kMaxMonomialDegree];
    std::size_t length = 0;
    for (std::size_t p = 0; p < players; ++p) {
      if ((present >> p & 1) != 0) continue;
      for (std::size_t k = begin[p]; k < begin[p + 1]; ++k) rest[length++] = variables[k];
    }
    to.absent.push_back(length == 0 ? 1.0
                                    : static_cast<double>(means[order.Position(rest, length)]));
  }
  to.weight.insert(to.weight.end(), weight, weight + subject_.sums.machines().size());
}

// Of the sets of k of the kPlayers - 1 others: 1 / (kPlayers C(kPlayers - 1, k)).
template <std::size_t kPlayers>
void AddValues(const MonomialClass& monomials, const double* part, std::size_t machines,
               std::size_t players, double* values) {
  constexpr std::size_t kSets = std::size_t{1} << kPlayers;
  double share[kPlayers];
  for (std::size_t k = 0; k < kPlayers; ++k) {
    share[k] = 1.0 / (static_cast<double>(kPlayers) * Binomial(kPlayers - 1, k));
  }
  const std::size_t count = monomials.part.size() / kPlayers;
  const double* absent = monomials.absent.data();
  const std::uint32_t* at = monomials.part.data();
  const std::uint32_t* who = monomials.player.data();
  const double* weight = monomials.weight.data();
  for (std::size_t i = 0; i < count; ++i) {
    double worth[kSets];
    double present[kSets];
    present[0] = 1.0;
    worth[0] = absent[0];
#pragma GCC unroll 16
    for (std::size_t set = 1; set < kSets; ++set) {
      const auto lowest = static_cast<std::size_t>(std::countr_zero(set));
      present[set] = present[set & (set - 1)] * part[at[lowest]];
      worth[set] = present[set] * absent[set];
    }
#pragma GCC unroll 4
    for (std::size_t p = 0; p < kPlayers; ++p) {
      double value = 0.0;
#pragma GCC unroll 16
      for (std::size_t set = 0; set < kSets; ++set) {
        if ((set >> p & 1) != 0) continue;
        value += share[std::popcount(set)] * (worth[set | std::size_t{1} << p] - worth[set]);
      }
      for (std::size_t m = 0; m < machines; ++m) {
        values[m * players + who[p]] += weight[m] * value;
      }
    }
    absent += kSets;
    at += kPlayers;
    who += kPlayers;
    weight += machines;
  }
}

void MonomialValues::Compute(CaseRows cases, double* values, double*) const {
  const Game& game = subject_.game;
  const std::size_t machines = subject_.sums.machines().size();
  std::fill_n(values, cases.count * machines * game.players(), 0.0);
  std::vector<double> part(parts_.size());
  for (std::size_t c = 0; c < cases.count; ++c) {
    const double* const x = cases.entries + c * subject_.sums.entries();
    double* const to = values + c * machines * game.players();
    for (std::size_t k = 0; k < parts_.size(); ++k) {
      part[k] = 1.0;
      for (std::size_t i = 0; i < parts_[k].size; ++i) {
        const std::uint32_t v = parts_[k].variables[i];
        part[k] *= x[entry_[v]] - centre_[v];
      }
    }
    AddValues<1>(classes_[0], part.data(), machines, game.players(), to);
    AddValues<2>(classes_[1], part.data(), machines, game.players(), to);
    AddValues<3>(classes_[2], part.data(), machines, game.players(), to);
    AddValues<4>(classes_[3], part.data(), machines, game.players(), to);
    game.Even(x, machines, to);
  }
}

}  // namespace

std::unique_ptr<const Values> MakeMonomialValues(const Subject& subject) {
  const MachineSums& sums = subject.sums;
  const bool linear = sums.kernel().type == SVMConst::kLinear;
  if (!linear && sums.kernel().type != SVMConst::kPolynomial) return nullptr;
  const double degree = linear ? 1.0 : sums.kernel().degree;
  if (degree != std::floor(degree) || degree < 0.0 ||
      degree > static_cast<double>(kMaxMonomialDegree)) {
    return nullptr;
  }
  std::vector<bool> is_used(sums.entries());
  for (const SparseVector& vector : sums.vectors()) {
    for (std::size_t k = 0; k < vector.at.size(); ++k) {
      if (vector.value[k] == 0.0) continue;
      if (!std::isfinite(vector.value[k]) && !linear) return nullptr;
      is_used[vector.at[k]] = true;
    }
  }
  std::vector<std::uint32_t> used;
  for (std::uint32_t e = 0; e < sums.entries(); ++e) {
    if (is_used[e]) used.push_back(e);
  }
  const auto whole = static_cast<std::size_t>(degree);
  const double monomials = Binomial(used.size() + whole, whole);
  if (!linear) {
    if (subject.game.players() > kMaxExactPlayers) return nullptr;
    if (monomials > static_cast<double>(kMaxMonomials) ||
        monomials * static_cast<double>(sums.machines().size()) > kMaxWeights ||
        monomials * static_cast<double>(sums.vectors().size()) > kMaxWork) {
      return nullptr;
    }
  }
  return std::make_unique<MonomialValues>(subject, whole, std::move(used));
}

}  // namespace MCSVM_700::explain
