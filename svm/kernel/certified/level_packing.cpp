#include "svm/kernel/certified/level_packing.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

namespace MCSVM_700::certified {
namespace {

using packed::VectorView;

constexpr std::uint32_t kGap = std::numeric_limits<std::uint32_t>::max();
constexpr double kLog2e = 1.4426950408889634;
// Sums of fewer than 2^18 squares, each rounded a few times, rounded up.
constexpr double kUp = 1 + 0x1p-30;
// More than the squares that underflow can hide: 2^17 of them, of numbers below 2^-511.
constexpr double kHidden = 0x1p-500;
// The least coefficient of a machine times its scale: with the least exponent of a radial basis
// function, products in single precision are still normal.
constexpr int kLeastScaled = -24;

bool IsRadialBasis(const PackedEngine& engine) {
  return engine.view().kernel.type == KernelFunctionType::kRadialBasis;
}

// How many roundings meet the term of field f: see error_bounds.inc.
double WeightOf(std::size_t f, std::size_t fields, std::size_t chain) {
  if (chain > fields) chain = fields;
  const std::size_t own_end = std::min((f / chain + 1) * chain, fields);
  const std::size_t chains = (fields + chain - 1) / chain;
  const std::size_t later = chains > 1 ? chains - f / chain : 0;
  return static_cast<double>(own_end - f + later + 5);
}

template <class T>
T Rounded(double value) {
  const bool vanishes = std::is_same_v<T, float> && std::fabs(value) < 0x1p-100;
  return static_cast<T>(vanishes ? 0.0 : value);
}

// Calls use(position, entry) for the entries of a vector.
template <class Use>
void ForEntries(const VectorView& vector, const Use& use) {
  const std::vector<int>& positions = *vector.positions;
  for (std::size_t i = 0; i < positions.size(); ++i) {
    use(static_cast<std::size_t>(positions[i]), (*vector.entries)[i]);
  }
}

// Whether the weights of a sparse linear model, one for each field of each machine, are so many
// more than the entries of its vectors and the terms of its machines that these take less time.
bool WeightsAreDear(const PackedEngine& engine) {
  constexpr std::size_t kWeightsForATerm = 4;
  std::size_t terms = 0;
  for (const VectorView& vector : engine.pool()) terms += vector.positions->size();
  for (std::size_t m = 0; m < engine.machines(); ++m) terms += engine.machine(m).vectors.size();
  return engine.machines() * engine.fields() > kWeightsForATerm * terms;
}

}  // namespace

const char* WhyNothingIsCertain(const PackedEngine& engine) {
  const packed::ModelView& view = engine.view();
  const SVMConst::KernelParameters& kernel = view.kernel;
  const bool linear = kernel.type == KernelFunctionType::kLinear;
  const bool polynomial = kernel.type == KernelFunctionType::kPolynomial;
  if (view.machines == 0) return "there is no machine";
  if (view.plain_count > 0) return "a vector has entries that are not finite or not in order";
  if (view.fields == 0 || view.fields > std::size_t{1} << 17) return "too many fields, or none";
  if (!linear && !(kernel.gamma >= 0x1p-60 && kernel.gamma <= 0x1p60)) {
    return "gamma is too large or too small";
  }
  if (polynomial && kernel.degree != 2 && kernel.degree != 3) {
    return "the degree is neither 2 nor 3";
  }
  if (linear && engine.sparse() && WeightsAreDear(engine)) return "estimates would take longer";
  if ((polynomial || kernel.type == KernelFunctionType::kSigmoid) &&
      !(std::fabs(kernel.coef0) <= 0x1p40)) {
    return "coef0 is too large";
  }
  for (const VectorView& vector : engine.pool()) {
    bool small = true;
    ForEntries(vector, [&](std::size_t, double entry) { small &= std::fabs(entry) <= 0x1p300; });
    if (!small) return "an entry of a vector is too large";
  }
  for (std::size_t m = 0; m < engine.machines(); ++m) {
    const packed::MachineView machine = engine.machine(m);
    if (!(std::fabs(machine.offset) <= 0x1p300)) return "a machine's constant is too large";
    for (const double alpha : machine.coefficients) {
      const double size = std::fabs(alpha);
      if (alpha != 0 && !(size >= 0x1p-80 && size <= 0x1p60))
        return "a coefficient is too large or too small";
    }
  }
  return nullptr;
}

MachineSums::MachineSums(const PackedEngine& engine) {
  for (std::size_t m = 0; m < engine.machines(); ++m) {
    const packed::MachineView machine = engine.machine(m);
    double sum = 0;
    for (const double alpha : machine.coefficients) sum += std::fabs(alpha);
    offset.push_back(machine.offset);
    size.push_back(sum * (1 + 0x1p-20));  // fewer than 2^32 additions
    terms.push_back(static_cast<double>(machine.coefficients.size()));
  }
}

template <class T>
LevelPacking<T>::LevelPacking(const PackedEngine& engine) : machines_(engine) {
  const packed::ModelView& model = engine.view();
  FindCentre(engine);
  FindNorms(engine);
  const double gamma = model.kernel.gamma;
  const double most = norm_.empty() ? 0 : *std::max_element(norm_.begin(), norm_.end());
  usable_ = most <= 0x1p30 && gamma * most <= 0x1p38 && gamma * most * most <= 0x1p24 &&
            FindScales(engine);
  if (!usable_) return;
  view_.kernel = model.kernel.type;
  // Other kernels' degree may be any number.
  view_.degree = model.kernel.degree == 2 ? 2 : 3;
  view_.gamma = gamma;
  view_.coef0 = model.kernel.coef0;
  view_.scale = model.kernel.type == KernelFunctionType::kPolynomial ? gamma : 2 * gamma * kLog2e;
  view_.fields = model.fields;
  view_.machines = model.machines;
  view_.norm = most;
  view_.centre = centre_.empty() ? nullptr : centre_.data();
  view_.weight = weight_.empty() ? nullptr : weight_.data();
  view_.offset = machines_.offset.data();
  view_.size = machines_.size.data();
  view_.terms = machines_.terms.data();

  const TermsByVector terms(engine);
  constexpr bool kOwnOrder = std::is_same_v<T, float>;
  PackRuns(terms, kOwnOrder ? FreeRuns(terms, norm_) : PoolRuns(terms));
  if constexpr (kOwnOrder) {
    if (engine.sparse()) {
      PackColumns(engine);
    } else {
      PackBlocks(engine);
    }
  } else {
    view_.blocks = model.dense;
  }
  const double c0 = model.kernel.type == KernelFunctionType::kSigmoid
                        ? 2 * kLog2e * model.kernel.coef0
                        : model.kernel.coef0;
  bias_.Reserve(std::max<std::size_t>(view_.positions, 1));
  for (std::size_t p = 0; p < view_.positions; ++p) {
    double bias = c0;
    if (IsRadialBasis(engine)) {
      bias = order_[p] == kGap ? 0 : -gamma * kLog2e * square_[order_[p]];
    }
    bias_.data()[p] = Rounded<T>(bias);
  }
  view_.bias = bias_.data();
}

// The mean of the vectors, which makes their norms small. A sparse model is not moved: its zeros
// would be lost. Nor are the engine's own blocks.
template <class T>
void LevelPacking<T>::FindCentre(const PackedEngine& engine) {
  if (!std::is_same_v<T, float> || !IsRadialBasis(engine) || engine.sparse()) return;
  centre_.assign(engine.fields(), 0.0);
  for (const VectorView& vector : engine.pool()) {
    ForEntries(vector, [&](std::size_t f, double entry) { centre_[f] += entry; });
  }
  const double count = static_cast<double>(std::max<std::size_t>(engine.pool().size(), 1));
  for (double& centre : centre_) centre /= count;
}

template <class T>
void LevelPacking<T>::FindNorms(const PackedEngine& engine) {
  const std::size_t fields = engine.fields();
  if (!engine.sparse()) {
    for (std::size_t f = 0; f < fields; ++f) {
      weight_.push_back(WeightOf(f, fields, kChainFields<T>));
    }
  }
  for (const VectorView& vector : engine.pool()) {
    double square = 0;
    double weighted = 0;
    const bool full = vector.positions->size() == fields;
    if (!full && !centre_.empty()) {
      std::vector<double> row(fields, 0.0);
      ForEntries(vector, [&](std::size_t f, double entry) { row[f] = entry; });
      for (std::size_t f = 0; f < fields; ++f) {
        const double difference = row[f] - centre_[f];
        square += difference * difference;
        weighted += weight_[f] * (difference * difference);
      }
    } else {
      ForEntries(vector, [&](std::size_t f, double entry) {
        const double difference = centre_.empty() ? entry : entry - centre_[f];
        square += difference * difference;
        weighted += (weight_.empty() ? 1 : weight_[f]) * (difference * difference);
      });
    }
    square_.push_back(square);
    norm_.push_back(std::sqrt(square) * kUp + kHidden);
    weighted_norm_.push_back(std::sqrt(weighted) * kUp + kHidden);
  }
}

// Powers of two by which the coefficients of a machine become kLeastScaled or more.
template <class T>
bool LevelPacking<T>::FindScales(const PackedEngine& engine) {
  for (std::size_t m = 0; m < engine.machines(); ++m) {
    double least = std::numeric_limits<double>::infinity();
    double most = 0;
    for (const double alpha : engine.machine(m).coefficients) {
      if (alpha == 0) continue;
      least = std::min(least, std::fabs(alpha));
      most = std::max(most, std::fabs(alpha));
    }
    scale_.push_back(most == 0 ? 1.0 : std::ldexp(1.0, kLeastScaled - std::ilogb(least)));
    // A vector that is used several times has the sum of its coefficients.
    if (machines_.size[m] > least * 0x1p120) return false;
  }
  return true;
}

template <class T>
void LevelPacking<T>::PackRuns(const TermsByVector& terms, const std::vector<RunMembers>& members) {
  view_.widest_row = 2;
  view_.chain = kGroup;
  for (const RunMembers& run : members) {
    const std::size_t begin = order_.size();
    order_.insert(order_.end(), run.vectors.begin(), run.vectors.end());
    order_.resize((order_.size() + kRunStart - 1) / kRunStart * kRunStart, kGap);
    if (run.columns.empty()) continue;
    Run<T> packed = {};
    packed.begin = begin;
    packed.end = order_.size();
    packed.column_count = run.columns.size();
    const std::size_t padded = (run.columns.size() + kRowStep - 1) / kRowStep * kRowStep;
    packed.row = run.columns.size() == 1 ? 1 : padded;
    view_.widest_row = std::max(view_.widest_row, packed.row);
    if (packed.row > 1) view_.chain = kGroup + kBlock / kGroup;
    std::vector<Column>& columns = columns_.emplace_back();
    for (const ColumnNumber number : run.columns) {
      const double factor = 1 / scale_[number / 2];
      columns.push_back({number / 2, number % 2 == 0 ? factor : -factor, 0, 0});
    }
    std::vector<T>& coefficients = coefficients_.emplace_back();
    coefficients.assign((packed.end - packed.begin) * packed.row, T(0));
    for (std::size_t i = 0; i < run.vectors.size(); ++i) {
      const std::uint32_t vector = run.vectors[i];
      packed.norm = std::max(packed.norm, norm_[vector]);
      packed.weighted_norm = std::max(packed.weighted_norm, weighted_norm_[vector]);
      for (const SignedTerm& term : terms.Of(vector)) {
        const auto found = std::lower_bound(run.columns.begin(), run.columns.end(), term.column);
        const auto j = static_cast<std::size_t>(found - run.columns.begin());
        coefficients[i * packed.row + j] = static_cast<T>(term.size * scale_[term.column / 2]);
        columns[j].size += term.size * kUp;
        columns[j].weighted_size += term.size * kUp * weighted_norm_[vector];
      }
    }
    for (Column& column : columns) {
      column.size *= 1 + 0x1p-20;  // fewer than 2^32 additions
      column.weighted_size *= 1 + 0x1p-20;
    }
    packed.columns = columns.data();
    packed.coefficients = coefficients.data();
    runs_.push_back(packed);
  }
  order_.resize((order_.size() + kBlock - 1) / kBlock * kBlock, kGap);
  view_.positions = order_.size();
  view_.runs = runs_.data();
  view_.run_count = runs_.size();
}

template <class T>
void LevelPacking<T>::PackBlocks(const PackedEngine& engine) {
  const std::size_t fields = engine.fields();
  const std::size_t size = std::max(view_.positions * fields, kBlock);
  blocks_.Reserve(size);
  std::fill_n(blocks_.data(), size, T(0));
  std::vector<double> row(fields);
  for (std::size_t p = 0; p < view_.positions; ++p) {
    if (order_[p] == kGap) continue;
    const VectorView& vector = engine.pool()[order_[p]];
    if (vector.positions->size() != fields) std::fill(row.begin(), row.end(), 0.0);
    ForEntries(vector, [&](std::size_t f, double entry) { row[f] = entry; });
    T* lane = blocks_.data() + p / kBlock * fields * kBlock + p % kBlock;
    for (std::size_t f = 0; f < fields; ++f) {
      lane[f * kBlock] = Rounded<T>(centre_.empty() ? row[f] : row[f] - centre_[f]);
    }
  }
  view_.blocks = blocks_.data();
}

template <class T>
void LevelPacking<T>::PackColumns(const PackedEngine& engine) {
  entry_begin_.assign(engine.fields() + 1, 0);
  for (const std::uint32_t vector : order_) {
    if (vector == kGap) continue;
    ForEntries(engine.pool()[vector], [&](std::size_t f, double) { ++entry_begin_[f + 1]; });
  }
  for (std::size_t f = 0; f < engine.fields(); ++f) entry_begin_[f + 1] += entry_begin_[f];
  entry_at_.resize(entry_begin_.back());
  entry_value_.resize(entry_begin_.back());
  std::vector<std::size_t> next = entry_begin_;
  for (std::size_t p = 0; p < order_.size(); ++p) {
    if (order_[p] == kGap) continue;
    ForEntries(engine.pool()[order_[p]], [&](std::size_t f, double entry) {
      const std::size_t e = next[f]++;
      entry_at_[e] = static_cast<std::uint32_t>(p);
      entry_value_[e] = Rounded<T>(entry);
    });
  }
  view_.entry_begin = entry_begin_.data();
  view_.entry_at = entry_at_.data();
  view_.entry_value = entry_value_.data();
}

template class LevelPacking<float>;
template class LevelPacking<double>;

LinearPacking::LinearPacking(const PackedEngine& engine) : machines_(engine) {
  const std::size_t fields = engine.fields();
  weights_.assign(engine.machines() * fields, 0.0);
  for (std::size_t m = 0; m < engine.machines(); ++m) {
    const packed::MachineView machine = engine.machine(m);
    double* weights = weights_.data() + m * fields;
    std::vector<double> sizes(fields, 0.0);
    for (std::size_t k = 0; k < machine.coefficients.size(); ++k) {
      const double alpha = machine.coefficients[k];
      ForEntries(engine.pool()[machine.vectors[k]], [&](std::size_t f, double entry) {
        weights[f] += alpha * entry;
        sizes[f] += std::fabs(alpha * entry);
      });
    }
    double square = 0;
    for (const double size : sizes) square += size * size;
    // Sizes are sums of fewer than 2^32 terms.
    norm_.push_back((std::sqrt(square) * kUp + kHidden) * (1 + 0x1p-20));
  }
  view_.fields = fields;
  view_.machines = engine.machines();
  view_.weights = weights_.data();
  view_.norm = norm_.data();
  view_.offset = machines_.offset.data();
  view_.size = machines_.size.data();
  view_.terms = machines_.terms.data();
}

}  // namespace MCSVM_700::certified
