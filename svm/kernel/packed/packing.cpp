#include "svm/kernel/packed/packing.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace MCSVM_700::packed {
namespace {

// Below this share of filled entries, columns are faster than blocks: they visit only filled ones.
constexpr double kSparseFill = 0.1;
constexpr std::size_t kSparseFields = 32;

std::size_t RoundUp(std::size_t count, std::size_t multiple) {
  return (count + multiple - 1) / multiple * multiple;
}

}  // namespace

Packing::Packing(std::span<const VectorView> vectors, std::span<const MachineView> machines,
                 const Pool& pool, std::size_t fields, std::size_t lanes, Storage storage)
    : fields_(fields), vectors_(pool.vectors.size()), machines_(machines.size()) {
  std::vector<VectorView> pooled;
  for (const std::uint32_t vector : pool.vectors) {
    pooled.push_back(vectors[vector]);
    if (Packs(pooled.back())) continue;
    pooled.back() = {};
    plain_vectors_.push_back(static_cast<std::uint32_t>(pooled.size() - 1));
  }
  sparse_ = WantsColumns(pooled, storage);
  if (sparse_) {
    PackColumns(pooled);
  } else {
    PackBlocks(pooled);
  }
  PackMachines(machines, pool, lanes);
}

bool Packing::Packs(const VectorView& vector) const {
  const std::size_t count = vector.positions->size();
  if (vector.entries->size() < count) return false;
  int before = -1;
  for (std::size_t i = 0; i < count; ++i) {
    const int position = (*vector.positions)[i];
    if (position <= before || static_cast<std::size_t>(position) >= fields_) return false;
    if (!std::isfinite((*vector.entries)[i])) return false;
    before = position;
  }
  return true;
}

bool Packing::WantsColumns(std::span<const VectorView> pooled, Storage storage) const {
  if (storage != Storage::kByFill) return storage == Storage::kSparse;
  double filled = 0.0;
  for (const VectorView& vector : pooled) {
    if (vector.positions != nullptr) filled += static_cast<double>(vector.positions->size());
  }
  const double room = static_cast<double>(pooled.size()) * static_cast<double>(fields_);
  return fields_ >= kSparseFields && filled < kSparseFill * room;
}

void Packing::PackBlocks(std::span<const VectorView> pooled) {
  // An empty model has a block too, because a null pointer means "sparse".
  const std::size_t size = std::max(RoundUp(vectors_, kBlock) * fields_, kBlock);
  blocks_.Reserve(size);
  std::fill_n(blocks_.data(), size, 0.0);
  for (std::size_t v = 0; v < vectors_; ++v) {
    if (pooled[v].positions == nullptr) continue;
    double* lane = blocks_.data() + v / kBlock * fields_ * kBlock + v % kBlock;
    for (std::size_t i = 0; i < pooled[v].positions->size(); ++i) {
      const auto position = static_cast<std::size_t>((*pooled[v].positions)[i]);
      lane[position * kBlock] = (*pooled[v].entries)[i];
    }
  }
}

void Packing::PackColumns(std::span<const VectorView> pooled) {
  column_begin_.assign(fields_ + 1, 0);
  for (const VectorView& vector : pooled) {
    if (vector.positions == nullptr) continue;
    for (const int position : *vector.positions) {
      ++column_begin_[static_cast<std::size_t>(position) + 1];
    }
  }
  for (std::size_t f = 0; f < fields_; ++f) column_begin_[f + 1] += column_begin_[f];
  entry_vector_.resize(column_begin_.back());
  entry_value_.resize(column_begin_.back());
  entry_square_.resize(column_begin_.back());
  std::vector<std::size_t> next = column_begin_;
  for (std::size_t v = 0; v < vectors_; ++v) {
    if (pooled[v].positions == nullptr) continue;
    for (std::size_t i = 0; i < pooled[v].positions->size(); ++i) {
      const std::size_t e = next[static_cast<std::size_t>((*pooled[v].positions)[i])]++;
      const double value = (*pooled[v].entries)[i];
      entry_vector_[e] = static_cast<std::uint32_t>(v);
      entry_value_[e] = value;
      entry_square_[e] = value * value;
    }
  }
}

// Neighbours go into one segment while few enough of its coefficients mean "not used": a vector
// may be used by as few as a third of the segment's machines, and new machines may join while the
// rows stay two thirds full, or are few.
void Packing::PackMachines(std::span<const MachineView> machines, const Pool& pool,
                           std::size_t lanes) {
  users_.resize(vectors_);
  for (std::uint32_t m = 0; m < machines.size(); ++m) {
    offsets_.push_back(machines[m].offset);
    const std::span<const double> coefficients = machines[m].coefficients;
    const std::vector<std::uint32_t>& terms = pool.terms[m];
    if (!pool.ascending[m]) {
      chain_vectors_.push_back(terms);
      chain_coefficients_.emplace_back(coefficients.begin(), coefficients.end());
      chains_.push_back(
          {m, terms.size(), chain_vectors_.back().data(), chain_coefficients_.back().data()});
      continue;
    }
    for (std::size_t k = 0; k < terms.size(); ++k) {
      users_[terms[k]].push_back({m, coefficients[k]});
    }
  }
  constexpr std::size_t kFew = 64;
  std::vector<std::uint32_t> members;
  std::size_t begin = 0;
  std::size_t term_count = 0;
  for (std::size_t v = 0; v < vectors_; ++v) {
    std::vector<std::uint32_t> users;
    for (const Term& term : users_[v]) users.push_back(term.machine);
    std::vector<std::uint32_t> joint;
    std::set_union(members.begin(), members.end(), users.begin(), users.end(),
                   std::back_inserter(joint));
    const bool joins = joint.size() == members.size();
    const std::size_t places = joint.size() * (v + 1 - begin);
    const bool fits = joins ? 3 * users.size() >= members.size()
                            : 2 * places <= 3 * (term_count + users.size()) + kFew;
    if (v == begin || fits) {
      members = std::move(joint);
    } else {
      AddSegment(begin, v, members, lanes);
      members = std::move(users);
      begin = v;
      term_count = 0;
    }
    term_count += users_[v].size();
  }
  if (begin < vectors_) AddSegment(begin, vectors_, members, lanes);
  users_ = {};
}

void Packing::AddSegment(std::size_t begin, std::size_t end,
                         const std::vector<std::uint32_t>& machines, std::size_t lanes) {
  if (machines.empty()) return;
  const std::size_t row = machines.size() == 1 ? 1 : RoundUp(machines.size(), lanes);
  // With a single machine, whole blocks are read.
  std::vector<double> coefficients((end - begin) * row + kBlock, 0.0);
  for (std::size_t v = begin; v < end; ++v) {
    gaps_ = gaps_ || users_[v].size() != machines.size();
    for (const Term& term : users_[v]) {
      const auto place = std::lower_bound(machines.begin(), machines.end(), term.machine);
      const auto column = static_cast<std::size_t>(place - machines.begin());
      coefficients[(v - begin) * row + column] = term.coefficient;
    }
  }
  segment_machines_.push_back(machines);
  segment_coefficients_.push_back(std::move(coefficients));
  segments_.push_back({begin, end, machines.size(), row, segment_machines_.back().data(),
                       segment_coefficients_.back().data()});
}

void Packing::Describe(ModelView& view) const {
  view.gaps = gaps_;
  view.fields = fields_;
  view.vectors = vectors_;
  view.padded_vectors = RoundUp(vectors_, kBlock);
  view.machines = machines_;
  view.dense = sparse_ ? nullptr : blocks_.data();
  view.column_begin = column_begin_.data();
  view.entry_vector = entry_vector_.data();
  view.entry_value = entry_value_.data();
  view.entry_square = entry_square_.data();
  view.segments = segments_.data();
  view.segment_count = segments_.size();
  view.chains = chains_.data();
  view.chain_count = chains_.size();
  view.offsets = offsets_.data();
  view.plain_vectors = plain_vectors_.data();
  view.plain_count = plain_vectors_.size();
}

}  // namespace MCSVM_700::packed
