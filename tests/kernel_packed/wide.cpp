// SIMDe implements the intrinsics with the instructions that the compiler's flags allow, here
// without AVX-512.
#define SIMDE_ENABLE_NATIVE_ALIASES
#include <simde/x86/avx512.h>
#include <simde/x86/fma.h>

#include <cstdint>
#include <cstring>

#include "tests/kernel_packed/wide.h"

#ifdef __AVX512F__
#error "built with AVX-512, this file would test nothing that needs no such CPU"
#endif

namespace {

// An intrinsic that SIMDe lacks.
template <int kScale>
simde__m512d Gather(simde__m512i positions, const double* table) {
  static_assert(kScale == sizeof(double));
  std::int64_t position[8];
  double value[8];
  std::memcpy(position, &positions, sizeof position);
  for (int i = 0; i < 8; ++i) value[i] = table[position[i]];
  return simde_mm512_loadu_pd(value);
}

// SIMDe's own misreads an `or` of modes, because it lacks parentheses.
template <int kMode>
simde__m512d RoundScale(simde__m512d a) {
  return simde_mm512_roundscale_pd(a, kMode);
}

}  // namespace

#undef _mm512_roundscale_pd
#define _mm512_roundscale_pd(a, mode) RoundScale<(mode)>(a)
#undef _mm512_i64gather_pd
#define _mm512_i64gather_pd(positions, table, scale) Gather<scale>(positions, table)
#define Avx512Operations WideOperations
#include "svm/kernel/packed/isa_avx512.cpp"  // NOLINT(bugprone-suspicious-include)
