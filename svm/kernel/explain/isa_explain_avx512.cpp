// Integrals for explanations, for CPUs with AVX-512. This file has its own compiler flags: define
// nothing here that another file could link, and include no standard header that defines functions.
#if defined(__GNUC__) && !defined(__clang__)
// g++ 12 warns about the undefined registers inside its own intrinsics.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif
#include <immintrin.h>

#include "svm/kernel/explain/forms.inc"

namespace MCSVM_700::explain {
namespace {

struct Avx512 {
  using D = __m512d;
  static constexpr std::size_t kLanes = 8;

  static D Load(const double* p) { return _mm512_load_pd(p); }
  static void Store(double* p, D a) { _mm512_store_pd(p, a); }
  static D Set(double a) { return _mm512_set1_pd(a); }
  static D Add(D a, D b) { return _mm512_add_pd(a, b); }
  static D Sub(D a, D b) { return _mm512_sub_pd(a, b); }
  static D Mul(D a, D b) { return _mm512_mul_pd(a, b); }
  // The lanes where a < b does not hold, as for NaN.
  static __mmask8 NotLess(D a, D b) { return _mm512_cmp_pd_mask(a, b, _CMP_NLT_UQ); }
  static unsigned Bits(__mmask8 mask) { return mask; }
  static D OrZero(__mmask8 mask, D a) { return _mm512_maskz_mov_pd(mask, a); }
};

constexpr Operations kOperations = MakeOperations<Avx512>();

}  // namespace

const Operations& Avx512Operations() {
  return kOperations;
}

}  // namespace MCSVM_700::explain
