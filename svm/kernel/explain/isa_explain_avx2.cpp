// Integrals for explanations, for CPUs with AVX2. This file has its own compiler flags: define
// nothing here that another file could link, and include no standard header that defines functions.
#include <immintrin.h>

#include "svm/kernel/explain/forms.inc"

namespace MCSVM_700::explain {
namespace {

struct Avx2 {
  using D = __m256d;
  static constexpr std::size_t kLanes = 4;

  static D Load(const double* p) { return _mm256_load_pd(p); }
  static void Store(double* p, D a) { _mm256_store_pd(p, a); }
  static D Set(double a) { return _mm256_set1_pd(a); }
  static D Add(D a, D b) { return _mm256_add_pd(a, b); }
  static D Sub(D a, D b) { return _mm256_sub_pd(a, b); }
  static D Mul(D a, D b) { return _mm256_mul_pd(a, b); }
  // All bits of a lane where a < b does not hold, as for NaN.
  static D NotLess(D a, D b) { return _mm256_cmp_pd(a, b, _CMP_NLT_UQ); }
  static unsigned Bits(D mask) { return static_cast<unsigned>(_mm256_movemask_pd(mask)); }
  static D OrZero(D mask, D a) { return _mm256_and_pd(mask, a); }
};

constexpr Operations kOperations = MakeOperations<Avx2>();

}  // namespace

const Operations& Avx2Operations() {
  return kOperations;
}

}  // namespace MCSVM_700::explain
