// The packed forms for CPUs with AVX2 and FMA. This file has its own compiler flags: define nothing
// here that another file could link, and include no standard header that defines functions.
#include <immintrin.h>

#include "svm/kernel/packed/kernels.inc"

namespace MCSVM_700::packed {
namespace {

struct Avx2 {
  using D = __m256d;
  using M = __m256d;
  static constexpr Isa kIsa = Isa::kAvx2;
  static constexpr std::size_t kLanes = 4;
  static constexpr std::size_t kWide =
      2;  // vectors of cases in a tile: 2 x 4 sums fill the registers
  static constexpr bool kFma = true;

  static D Load(const double* p) { return _mm256_load_pd(p); }
  static D LoadU(const double* p) { return _mm256_loadu_pd(p); }
  static void Store(double* p, D a) { _mm256_store_pd(p, a); }
  static void StoreU(double* p, D a) { _mm256_storeu_pd(p, a); }
  static D Set(double a) { return _mm256_set1_pd(a); }
  static D Add(D a, D b) { return _mm256_add_pd(a, b); }
  static D Sub(D a, D b) { return _mm256_sub_pd(a, b); }
  static D Mul(D a, D b) { return _mm256_mul_pd(a, b); }
  static D Div(D a, D b) { return _mm256_div_pd(a, b); }
  static D Fma(D a, D b, D c) { return _mm256_fmadd_pd(a, b, c); }    // a b + c
  static D Fms(D a, D b, D c) { return _mm256_fmsub_pd(a, b, c); }    // a b - c
  static D Fnma(D a, D b, D c) { return _mm256_fnmadd_pd(a, b, c); }  // c - a b
  static D Negate(D a) { return _mm256_xor_pd(a, Set(-0.0)); }
  static D Abs(D a) { return _mm256_andnot_pd(Set(-0.0), a); }
  static D CopySign(D size, D sign) {
    return _mm256_or_pd(Abs(size), _mm256_and_pd(Set(-0.0), sign));
  }
  static D Truncate(D a) { return _mm256_round_pd(a, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC); }
  // Comparisons with NaN are false.
  static M Less(D a, D b) { return _mm256_cmp_pd(a, b, _CMP_LT_OQ); }
  static M LessEqual(D a, D b) { return _mm256_cmp_pd(a, b, _CMP_LE_OQ); }
  static M Equal(D a, D b) { return _mm256_cmp_pd(a, b, _CMP_EQ_OQ); }
  static M And(M a, M b) { return _mm256_and_pd(a, b); }
  static D Select(M mask, D yes, D no) { return _mm256_blendv_pd(no, yes, mask); }
  static unsigned Bits(M mask) { return static_cast<unsigned>(_mm256_movemask_pd(mask)); }
  // One bit for each lane that is not 0.0 or -0.0; NaN counts.
  static unsigned NotZero(D a) { return Bits(_mm256_cmp_pd(a, Set(0.0), _CMP_NEQ_UQ)); }
  // 2^k for whole k: 2^52 + 2^51 leaves k + 1023 in the lowest bits.
  static D PowerOfTwo(D k) {
    const __m256i bits = _mm256_castpd_si256(Add(k, Set(0x1.8p52 + 1023)));
    return _mm256_castsi256_pd(_mm256_slli_epi64(bits, 52));
  }
  // The table's pair for the whole number k in the lowest bits of `shifted`.
  static void ExpTable(D shifted, D& tail, D& scale) {
    const __m256i k = _mm256_castpd_si256(shifted);
    const __m256i bytes = _mm256_and_si256(_mm256_slli_epi64(k, 4), _mm256_set1_epi64x(0x7f0));
    const __m128i low = _mm256_castsi256_si128(bytes);
    const __m128i high = _mm256_extracti128_si256(bytes, 1);
    const __m256d even = Pairs(_mm_cvtsi128_si64(low), _mm_cvtsi128_si64(high));
    const __m256d odd = Pairs(_mm_extract_epi64(low, 1), _mm_extract_epi64(high, 1));
    tail = _mm256_unpacklo_pd(even, odd);
    const __m256i base = _mm256_castpd_si256(_mm256_unpackhi_pd(even, odd));
    scale = _mm256_castsi256_pd(_mm256_add_epi64(base, _mm256_slli_epi64(k, 45)));
  }

 private:
  static __m256d Pairs(long long low, long long high) {
    const char* table = reinterpret_cast<const char*>(kExpTable);
    const __m128d first = _mm_load_pd(reinterpret_cast<const double*>(table + low));
    const __m128d second = _mm_load_pd(reinterpret_cast<const double*>(table + high));
    return _mm256_insertf128_pd(_mm256_castpd128_pd256(first), second, 1);
  }
};

constexpr Operations kOperations = MakeOperations<Avx2>();

}  // namespace

const Operations& Avx2Operations() {
  return kOperations;
}

}  // namespace MCSVM_700::packed
