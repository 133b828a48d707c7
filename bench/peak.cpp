#include "bench/peak.h"

namespace bench {
namespace {

using MCSVM_700::packed::Isa;

constexpr std::size_t kCases = 2;
constexpr std::size_t kVectors = 4;

using D2 = double __attribute__((vector_size(16)));
using D4 = double __attribute__((vector_size(32)));
using D8 = double __attribute__((vector_size(64)));

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wpsabi"
#endif

// Inlined into a function of the instruction set, whose registers it then uses.
template <class D, bool kDistance>
[[gnu::always_inline]] inline double Terms(std::size_t rounds) {
  D sum[kCases][kVectors] = {};
  D x[kCases] = {D{} + 0.25, D{} + 0.75};
  D v[kVectors] = {D{} + 0.5, D{} + 0.125, D{} + 0.375, D{} + 0.625};
  for (std::size_t round = 0; round < rounds; ++round) {
    for (auto& entry : v) asm volatile("" : "+x"(entry));  // or the terms would be formed once
    for (std::size_t i = 0; i < kVectors; ++i) {
      for (std::size_t c = 0; c < kCases; ++c) {
        if constexpr (kDistance) {
          const D difference = x[c] - v[i];
          sum[c][i] += difference * difference;
        } else {
          sum[c][i] += x[c] * v[i];
        }
      }
    }
  }
  double total = 0.0;
  for (const auto& row : sum) {
    for (const D& lanes : row) total += lanes[0];
  }
  return total;
}

template <class D, bool kDistance>
[[gnu::target("avx2")]] double Avx2Terms(std::size_t rounds) {
  return Terms<D, kDistance>(rounds);
}
template <class D, bool kDistance>
[[gnu::target("avx512f,prefer-vector-width=512")]] double Avx512Terms(std::size_t rounds) {
  return Terms<D, kDistance>(rounds);
}

template <bool kDistance>
double TermsOf(Isa isa, std::size_t rounds) {
  switch (isa) {
    case Isa::kAvx512:
      return Avx512Terms<D8, kDistance>(rounds);
    case Isa::kAvx2:
      return Avx2Terms<D4, kDistance>(rounds);
    default:
      return Terms<D2, kDistance>(rounds);
  }
}

}  // namespace

double DistanceTerms(Isa isa, std::size_t rounds) {
  return TermsOf<true>(isa, rounds);
}
double ProductTerms(Isa isa, std::size_t rounds) {
  return TermsOf<false>(isa, rounds);
}

std::size_t TermsOfARound(Isa isa) {
  const std::size_t lanes = isa == Isa::kAvx512 ? 8 : isa == Isa::kAvx2 ? 4 : 2;
  return lanes * kCases * kVectors;
}

}  // namespace bench
