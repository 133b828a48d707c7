#include "svm/kernel/packed/packed_engine.h"

#include <algorithm>
#include <atomic>
#include <numeric>

#include "svm/kernel/packed/pool.h"

namespace MCSVM_700 {

using packed::kBlock;
using packed::Operations;
using packed::VectorForms;

namespace {

// Tiles that share a pass over the vectors take at most this much, so that they stay in the second
// level of cache together with a block.
constexpr std::size_t kTileBytes = std::size_t{256} * 1024;

std::uint64_t NextNumber() {
  static std::atomic<std::uint64_t> last{0};
  return ++last;
}

VectorForms FormsOf(const PackedInput& input, const Operations* operations) {
  if (operations == nullptr) return {};
  return packed::MatchingForms(*operations, input.kernel.type, input.kernel.degree);
}

}  // namespace

PackedEngine::PackedEngine(const PackedInput& input, const Operations* operations)
    : PackedEngine(input, operations, FormsOf(input, operations)) {
  const VectorForms forms = {view_.vector_values, view_.whole_degree};
  if (operations != nullptr && !Agrees(input, operations, forms)) operations_ = nullptr;
}

PackedEngine::PackedEngine(const PackedInput& input, const Operations* operations,
                           VectorForms forms)
    : number_(NextNumber()), kernel_(MakeKernel(input.kernel)), operations_(operations) {
  const packed::Pool pool = packed::MakePool(input.machines, input.vectors.size());
  for (const std::uint32_t vector : pool.vectors) pool_.push_back(input.vectors[vector]);
  for (std::size_t m = 0; m < input.machines.size(); ++m) {
    const auto& coefficients = input.machines[m].coefficients;
    plain_machines_.push_back({pool.terms[m], {coefficients.begin(), coefficients.end()}});
  }
  const std::size_t lanes = operations_ == nullptr ? 1 : operations_->lanes;
  packing_ = std::make_unique<packed::Packing>(input.vectors, input.machines, pool, input.fields,
                                               lanes, input.storage);
  packing_->Describe(view_);
  view_.kernel = input.kernel;
  view_.plain_context = this;
  view_.plain_value = PlainValue;
  if (operations_ == nullptr) return;
  view_.vector_values = forms.values;
  view_.whole_degree = forms.whole_degree;
  const std::size_t tile_bytes =
      std::max<std::size_t>(input.fields + view_.machines, 1) * operations_->tile * sizeof(double);
  view_.group_tiles =
      view_.chain_count > 0 ? 1 : std::clamp<std::size_t>(kTileBytes / tile_bytes, 1, 16);
}

void PackedEngine::Fit(PackedScratch& scratch) const {
  if (scratch.engine_ == number_) return;
  scratch.engine_ = 0;
  const std::size_t padded = view_.padded_vectors + kBlock;
  const std::size_t tile = operations_ == nullptr ? 1 : operations_->tile;
  const std::size_t group = operations_ == nullptr ? 1 : view_.group_tiles;
  scratch.values_.Reserve(view_.chain_count > 0 ? padded * tile : std::max(padded, kBlock * tile));
  scratch.sums_.Reserve(group * (view_.machines + 1) * tile);
  scratch.rejects_.Reserve(std::max(group * tile, packed::kSparseCases));
  scratch.positions_.resize(view_.fields);
  std::iota(scratch.positions_.begin(), scratch.positions_.end(), 0);
  scratch.entries_.resize(view_.fields);
  if (sparse()) {
    const std::size_t entries = packed::kSparseCases * view_.fields;
    scratch.nonzero_value_.Reserve(entries);
    scratch.column_.Reserve(padded);
    scratch.nonzero_field_.resize(std::max(scratch.nonzero_field_.size(), entries));
  } else {
    scratch.tiles_.Reserve(group * (view_.fields + 1) * tile);
  }
  packed::Work& work = scratch.work_;
  work.values = scratch.values_.data();
  work.tiles = scratch.tiles_.data();
  work.sums = scratch.sums_.data();
  work.rejects = scratch.rejects_.data();
  work.nonzero_field = scratch.nonzero_field_.data();
  work.nonzero_value = scratch.nonzero_value_.data();
  work.column = scratch.column_.data();
  work.plain = &scratch;
  scratch.engine_ = number_;
}

void PackedEngine::Decide(const double* x, PackedScratch& scratch, double* decisions) const {
  Fit(scratch);
  if (operations_ != nullptr && operations_->decide_one(view_, x, scratch.work_, decisions)) {
    ++scratch.counts_.alone;
    return;
  }
  DecidePlain({x, 1}, scratch, {decisions, 1});
}

void PackedEngine::DecideMany(packed::CaseColumns cases, std::size_t count, PackedScratch& scratch,
                              packed::DecisionColumns decisions) const {
  if (view_.machines == 0) return;
  Fit(scratch);
  if (view_.fields == 0) {  // there may be no columns
    for (std::size_t c = 0; c < count; ++c) {
      DecidePlain({nullptr, 0}, scratch, {decisions.values + c, decisions.stride});
    }
    return;
  }
  std::size_t done = 0;
  while (done < count) {
    std::size_t taken = 1;
    double rejected = 1.0;
    const double* rejects = &rejected;
    if (operations_ != nullptr) {
      taken = operations_->decide_many(view_, {cases.entries + done, cases.stride}, count - done,
                                       scratch.work_, {decisions.values + done, decisions.stride});
      rejects = scratch.work_.rejects;
    }
    for (std::size_t c = 0; c < taken; ++c) {
      if (rejects[c] == 0.0) {
        ++(taken > 1 ? scratch.counts_.tiled : scratch.counts_.alone);
      } else {
        DecidePlain({cases.entries + done + c, cases.stride}, scratch,
                    {decisions.values + done + c, decisions.stride});
      }
    }
    done += taken;
  }
}

double PackedEngine::PlainValue(const void* engine, packed::Work& work, packed::CaseColumns x,
                                std::uint32_t vector) {
  const auto& self = *static_cast<const PackedEngine*>(engine);
  auto& scratch = *static_cast<PackedScratch*>(work.plain);
  for (std::size_t f = 0; f < self.view_.fields; ++f) scratch.entries_[f] = x.entries[f * x.stride];
  return self.kernel_->Evaluate(scratch.positions_, scratch.entries_, *self.pool_[vector].positions,
                                *self.pool_[vector].entries);
}

void PackedEngine::DecidePlain(packed::CaseColumns x, PackedScratch& scratch,
                               packed::DecisionColumns decisions) const {
  ++scratch.counts_.plain;
  for (std::size_t f = 0; f < view_.fields; ++f) scratch.entries_[f] = x.entries[f * x.stride];
  double* values = scratch.work_.values;
  for (std::size_t v = 0; v < pool_.size(); ++v) {
    values[v] = kernel_->Evaluate(scratch.positions_, scratch.entries_, *pool_[v].positions,
                                  *pool_[v].entries);
  }
  for (std::size_t m = 0; m < plain_machines_.size(); ++m) {
    const PlainMachine& machine = plain_machines_[m];
    double sum = 0.0;
    for (std::size_t k = 0; k < machine.coefficients.size(); ++k) {
      sum += machine.coefficients[k] * values[machine.terms[k]];
    }
    decisions.values[m * decisions.stride] = sum + view_.offsets[m];
  }
}

}  // namespace MCSVM_700
