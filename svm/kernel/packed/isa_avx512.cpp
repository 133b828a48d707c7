// The packed forms for CPUs with AVX-512 (F, DQ, VL). This file has its own compiler flags: define
// nothing here that another file could link, and include no standard header that defines functions.
#if defined(__GNUC__) && !defined(__clang__)
// g++ 12 warns about the undefined registers inside its own intrinsics.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif
#include <immintrin.h>

#include "svm/kernel/packed/kernels.inc"

namespace MCSVM_700::packed {
namespace {

struct Avx512 {
  using D = __m512d;
  using M = __mmask8;
  static constexpr Isa kIsa = Isa::kAvx512;
  static constexpr std::size_t kLanes = 8;
  static constexpr std::size_t kWide = 4;  // 4 x 4 sums fill half of the registers
  static constexpr bool kFma = true;

  static D Load(const double* p) { return _mm512_load_pd(p); }
  static D LoadU(const double* p) { return _mm512_loadu_pd(p); }
  static void Store(double* p, D a) { _mm512_store_pd(p, a); }
  static void StoreU(double* p, D a) { _mm512_storeu_pd(p, a); }
  static D Set(double a) { return _mm512_set1_pd(a); }
  static D Add(D a, D b) { return _mm512_add_pd(a, b); }
  static D Sub(D a, D b) { return _mm512_sub_pd(a, b); }
  static D Mul(D a, D b) { return _mm512_mul_pd(a, b); }
  static D Div(D a, D b) { return _mm512_div_pd(a, b); }
  static D Fma(D a, D b, D c) { return _mm512_fmadd_pd(a, b, c); }    // a b + c
  static D Fms(D a, D b, D c) { return _mm512_fmsub_pd(a, b, c); }    // a b - c
  static D Fnma(D a, D b, D c) { return _mm512_fnmadd_pd(a, b, c); }  // c - a b
  static D Negate(D a) { return _mm512_xor_pd(a, Set(-0.0)); }
  static D Abs(D a) { return _mm512_andnot_pd(Set(-0.0), a); }
  static D CopySign(D size, D sign) {
    return _mm512_or_pd(Abs(size), _mm512_and_pd(Set(-0.0), sign));
  }
  static D Truncate(D a) { return _mm512_roundscale_pd(a, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC); }
  // Comparisons with NaN are false.
  static M Less(D a, D b) { return _mm512_cmp_pd_mask(a, b, _CMP_LT_OQ); }
  static M LessEqual(D a, D b) { return _mm512_cmp_pd_mask(a, b, _CMP_LE_OQ); }
  static M Equal(D a, D b) { return _mm512_cmp_pd_mask(a, b, _CMP_EQ_OQ); }
  static M And(M a, M b) { return static_cast<M>(a & b); }
  static D Select(M mask, D yes, D no) { return _mm512_mask_blend_pd(mask, no, yes); }
  static unsigned Bits(M mask) { return mask; }
  // One bit for each lane that is not 0.0 or -0.0; NaN counts.
  static unsigned NotZero(D a) { return _mm512_cmp_pd_mask(a, Set(0.0), _CMP_NEQ_UQ); }
  // 2^k for whole k: 2^52 + 2^51 leaves k + 1023 in the lowest bits.
  static D PowerOfTwo(D k) {
    const __m512i bits = _mm512_castpd_si512(Add(k, Set(0x1.8p52 + 1023)));
    return _mm512_castsi512_pd(_mm512_slli_epi64(bits, 52));
  }
  // The table's pair for the whole number k in the lowest bits of `shifted`.
  static void ExpTable(D shifted, D& tail, D& scale) {
    const __m512i k = _mm512_castpd_si512(shifted);
    const __m512i pair = _mm512_slli_epi64(_mm512_and_si512(k, _mm512_set1_epi64(127)), 1);
    const double* table = reinterpret_cast<const double*>(kExpTable);
    tail = _mm512_i64gather_pd(pair, table, 8);
    const __m512i base = _mm512_castpd_si512(_mm512_i64gather_pd(pair, table + 1, 8));
    scale = _mm512_castsi512_pd(_mm512_add_epi64(base, _mm512_slli_epi64(k, 45)));
  }
};

constexpr Operations kOperations = MakeOperations<Avx512>();

}  // namespace

const Operations& Avx512Operations() {
  return kOperations;
}

}  // namespace MCSVM_700::packed
