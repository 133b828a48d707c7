#include "svm/kernel/explain/machine_sums.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace MCSVM_700::explain {
namespace {

// The walk of the plain kernels over a case that has an entry at each position.
SparseVector MeetCase(const packed::VectorView& vector, std::size_t entries) {
  SparseVector met;
  std::size_t next = 0;
  for (std::size_t k = 0; k < vector.positions->size(); ++k) {
    const int position = (*vector.positions)[k];
    const double value = (*vector.entries)[k];
    const bool ahead = position >= 0 && static_cast<std::size_t>(position) >= next;
    if (ahead) next = std::min(static_cast<std::size_t>(position), entries);
    if (ahead && next < entries) {
      met.at.push_back(static_cast<std::uint32_t>(next++));
      met.value.push_back(value);
    } else {
      met.rest += value * value;
    }
  }
  return met;
}

MachineSum MergedTerms(const packed::MachineView& machine) {
  MachineSum merged;
  std::vector<std::size_t> order(machine.vectors.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    return machine.vectors[a] < machine.vectors[b];
  });
  for (const std::size_t k : order) {
    const double coefficient = machine.coefficients[k];
    merged.scale += std::abs(coefficient);
    if (!merged.vectors.empty() && merged.vectors.back() == machine.vectors[k]) {
      merged.coefficients.back() += coefficient;
    } else {
      merged.vectors.push_back(machine.vectors[k]);
      merged.coefficients.push_back(coefficient);
    }
  }
  return merged;
}

}  // namespace

MachineSums::MachineSums(const PackedEngine& engine)
    : kernel_(engine.view().kernel), entries_(engine.fields()) {
  for (const packed::VectorView& vector : engine.pool()) {
    vectors_.push_back(MeetCase(vector, entries_));
  }
  for (std::size_t m = 0; m < engine.machines(); ++m) {
    machines_.push_back(MergedTerms(engine.machine(m)));
  }
}

void MachineSums::Expand(std::size_t block, double* dense) const {
  std::fill_n(dense, entries_ * kBlock, 0.0);
  const std::size_t begin = block * kBlock;
  for (std::size_t v = begin; v < std::min(begin + kBlock, vectors_.size()); ++v) {
    const SparseVector& vector = vectors_[v];
    for (std::size_t k = 0; k < vector.at.size(); ++k) {
      dense[vector.at[k] * kBlock + v - begin] = vector.value[k];
    }
  }
}

bool MachineSums::Coefficients(std::size_t block, std::size_t machine, double* coefficients) const {
  std::fill_n(coefficients, kBlock, 0.0);
  const MachineSum& sum = machines_[machine];
  const std::size_t begin = block * kBlock;
  const auto first = std::lower_bound(sum.vectors.begin(), sum.vectors.end(), begin);
  auto k = static_cast<std::size_t>(first - sum.vectors.begin());
  bool used = false;
  for (; k < sum.vectors.size() && sum.vectors[k] < begin + kBlock; ++k) {
    double coefficient = sum.coefficients[k];
    const double rest = vectors_[sum.vectors[k]].rest;
    if (kernel_.type == SVMConst::kRadialBasis && rest != 0.0) {
      coefficient *= std::exp(-kernel_.gamma * rest);
    }
    coefficients[sum.vectors[k] - begin] = coefficient;
    used = true;
  }
  return used;
}

void PartialSums(const SVMConst::KernelParameters& kernel, std::span<const std::size_t> player,
                 const double* x, const double* dense, double* sums) {
  std::fill_n(sums, kBlock, 0.0);
  const bool distance = kernel.type == SVMConst::kRadialBasis;
  for (const std::size_t e : player) {
    const double entry = x[e];
    const double* const v = dense + e * kBlock;
    if (distance) {
      for (std::size_t lane = 0; lane < kBlock; ++lane) {
        const double difference = entry - v[lane];
        sums[lane] += difference * difference;
      }
    } else {
      for (std::size_t lane = 0; lane < kBlock; ++lane) sums[lane] += entry * v[lane];
    }
  }
}

double WeightedSum(const double* coefficients, const double* values) {
  double terms[kBlock];
  for (std::size_t lane = 0; lane < kBlock; ++lane) {
    const double term = coefficients[lane] * values[lane];
    terms[lane] = coefficients[lane] == 0.0 ? 0.0 : term;
  }
  for (std::size_t half = kBlock / 2; half > 0; half /= 2) {
    for (std::size_t lane = 0; lane < half; ++lane) terms[lane] += terms[lane + half];
  }
  return terms[0];
}

}  // namespace MCSVM_700::explain
