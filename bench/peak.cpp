#include "bench/peak.h"

namespace bench {
namespace {

using MCSVM_700::packed::Isa;

constexpr std::size_t kCases = 2;
constexpr std::size_t kVectors = 4;

using D2 = double __attribute__((vector_size(16), may_alias));
using D4 = double __attribute__((vector_size(32), may_alias));
using D8 = double __attribute__((vector_size(64), may_alias));

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wpsabi"
#endif

// Read again in each round.
alignas(64) double entries[kVectors * 8] = {0.5, 0.125, 0.375, 0.625};

// Inlined into functions of an instruction set, whose registers they then use. The sums are
// separate variables, because an array would be kept in memory.
template <class D, bool kDistance>
[[gnu::always_inline]] inline void Term(D& sum, const D& x, const D& v) {
  if constexpr (kDistance) {
    const D difference = x - v;
    sum += difference * difference;
  } else {
    sum += x * v;
  }
}

template <class D, bool kDistance>
[[gnu::always_inline]] inline double Terms(std::size_t rounds) {
  static_assert(kCases == 2 && kVectors == 4);
  const D x = D{} + 0.25;
  const D y = D{} + 0.75;
  D x0 = {}, x1 = {}, x2 = {}, x3 = {}, y0 = {}, y1 = {}, y2 = {}, y3 = {};
  for (std::size_t round = 0; round < rounds; ++round) {
    asm volatile("" : : "r"(entries) : "memory");  // else the terms would be computed only once
    const D* v = reinterpret_cast<const D*>(entries);
    Term<D, kDistance>(x0, x, v[0]);
    Term<D, kDistance>(y0, y, v[0]);
    Term<D, kDistance>(x1, x, v[1]);
    Term<D, kDistance>(y1, y, v[1]);
    Term<D, kDistance>(x2, x, v[2]);
    Term<D, kDistance>(y2, y, v[2]);
    Term<D, kDistance>(x3, x, v[3]);
    Term<D, kDistance>(y3, y, v[3]);
  }
  const D sum = x0 + x1 + x2 + x3 + y0 + y1 + y2 + y3;
  return sum[0];
}

template <class D, bool kDistance>
[[gnu::target("avx2")]] double Avx2Terms(std::size_t rounds) {
  return Terms<D, kDistance>(rounds);
}
template <class D, bool kDistance>
[[gnu::target("avx512f")]] double Avx512Terms(std::size_t rounds) {
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
