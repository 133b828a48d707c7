// Integrals for explanations, for every x86-64 CPU. This file has its own compiler flags: define
// nothing here that another file could link, and include no standard header that defines functions.
#include <emmintrin.h>

#include "svm/kernel/explain/forms.inc"

namespace MCSVM_700::explain {
namespace {

struct Sse2 {
  using D = __m128d;
  static constexpr std::size_t kLanes = 2;

  static D Load(const double* p) { return _mm_load_pd(p); }
  static void Store(double* p, D a) { _mm_store_pd(p, a); }
  static D Set(double a) { return _mm_set1_pd(a); }
  static D Add(D a, D b) { return _mm_add_pd(a, b); }
  static D Sub(D a, D b) { return _mm_sub_pd(a, b); }
  static D Mul(D a, D b) { return _mm_mul_pd(a, b); }
  // All bits of a lane where a < b does not hold, as for NaN.
  static D NotLess(D a, D b) { return _mm_cmpnlt_pd(a, b); }
  static unsigned Bits(D mask) { return static_cast<unsigned>(_mm_movemask_pd(mask)); }
  static D OrZero(D mask, D a) { return _mm_and_pd(mask, a); }
};

constexpr Operations kOperations = MakeOperations<Sse2>();

}  // namespace

const Operations& Sse2Operations() {
  return kOperations;
}

}  // namespace MCSVM_700::explain
