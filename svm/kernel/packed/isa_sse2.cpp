// The packed forms for every x86-64 CPU. Without FMA the library's own functions are called.
#include <emmintrin.h>

#include "svm/kernel/packed/kernels.inc"

namespace MCSVM_700::packed {
namespace {

struct Sse2 {
  using D = __m128d;
  static constexpr Isa kIsa = Isa::kSse2;
  static constexpr std::size_t kLanes = 2;
  static constexpr std::size_t kWide = 2;
  static constexpr bool kFma = false;

  static D Load(const double* p) { return _mm_load_pd(p); }
  static D LoadU(const double* p) { return _mm_loadu_pd(p); }
  static void Store(double* p, D a) { _mm_store_pd(p, a); }
  static void StoreU(double* p, D a) { _mm_storeu_pd(p, a); }
  static D Set(double a) { return _mm_set1_pd(a); }
  static D Add(D a, D b) { return _mm_add_pd(a, b); }
  static D Sub(D a, D b) { return _mm_sub_pd(a, b); }
  static D Mul(D a, D b) { return _mm_mul_pd(a, b); }
  // One bit for each lane that is not 0.0 or -0.0; NaN counts.
  static unsigned NotZero(D a) {
    return static_cast<unsigned>(_mm_movemask_pd(_mm_cmpneq_pd(a, _mm_setzero_pd())));
  }
};

constexpr Operations kOperations = MakeOperations<Sse2>();

}  // namespace

const Operations& Sse2Operations() {
  return kOperations;
}

}  // namespace MCSVM_700::packed
