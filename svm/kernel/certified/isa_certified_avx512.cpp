// The certified forms for CPUs with AVX-512 (F, DQ, VL). This file has its own compiler flags:
// define nothing here that another file could link, and include no standard header that defines
// functions.
#if defined(__GNUC__) && !defined(__clang__)
// g++ 12 warns about the undefined registers inside its own intrinsics.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif
#include <immintrin.h>

#include "svm/kernel/certified/forms.inc"

namespace MCSVM_700::certified {
namespace {

struct Single512 {
  using T = float;
  using F = __m512;
  static constexpr std::size_t kLanes = 16;
  static constexpr std::size_t kWide = 4;  // 4 x 4 sums fill half of the registers
  static constexpr std::size_t kColumnsWide = 2;

  static F Load(const T* p) { return _mm512_load_ps(p); }
  static F LoadU(const T* p) { return _mm512_loadu_ps(p); }
  static void Store(T* p, F a) { _mm512_store_ps(p, a); }
  static F Set(T a) { return _mm512_set1_ps(a); }
  static F Add(F a, F b) { return _mm512_add_ps(a, b); }
  static F Sub(F a, F b) { return _mm512_sub_ps(a, b); }
  static F Mul(F a, F b) { return _mm512_mul_ps(a, b); }
  static F Div(F a, F b) { return _mm512_div_ps(a, b); }
  static F Max(F a, F b) { return _mm512_max_ps(a, b); }  // b where either is not a number
  static F Min(F a, F b) { return _mm512_min_ps(a, b); }
  static F Fma(F a, F b, F c) { return _mm512_fmadd_ps(a, b, c); }  // a b + c
  static T FmaOne(T a, T b, T c) { return __builtin_fmaf(a, b, c); }
  static void AddTo(double* to, F a) {
    const __m512d low = _mm512_cvtps_pd(_mm512_castps512_ps256(a));
    const __m512d high = _mm512_cvtps_pd(_mm512_extractf32x8_ps(a, 1));
    _mm512_storeu_pd(to, _mm512_add_pd(_mm512_loadu_pd(to), low));
    _mm512_storeu_pd(to + 8, _mm512_add_pd(_mm512_loadu_pd(to + 8), high));
  }
  // Four columns of one case.
  static __m128 Mul4(const T* a, T b) { return _mm_mul_ps(_mm_loadu_ps(a), _mm_set1_ps(b)); }
  static __m128 Fma4(const T* a, T b, __m128 c) {
    return _mm_fmadd_ps(_mm_loadu_ps(a), _mm_set1_ps(b), c);
  }
  static void AddTo4(double* to, __m128 a) {
    _mm256_storeu_pd(to, _mm256_add_pd(_mm256_loadu_pd(to), _mm256_cvtps_pd(a)));
  }
  // One bit for each of the first `count` <= 8 values that is not 0; NaN counts.
  static unsigned NotZero(const double* p, std::size_t count) {
    const __m512d zero = _mm512_setzero_pd();
    if (count == 8) return _mm512_cmp_pd_mask(_mm512_loadu_pd(p), zero, _CMP_NEQ_UQ);
    const auto mask = static_cast<__mmask8>((1u << count) - 1);
    return _mm512_mask_cmp_pd_mask(mask, _mm512_maskz_loadu_pd(mask, p), zero, _CMP_NEQ_UQ);
  }

  // The least exponent, then what Exp2 needs: see exp2_polynomial.py.
  alignas(64) static constexpr T kConstants[7] = {Precision<T>::kLeastExponent,
                                                  0x1.ec320ap-10f,
                                                  0x1.26900cp-7f,
                                                  0x1.c95446p-5f,
                                                  0x1.ebd5a8p-3f,
                                                  0x1.62e4f6p-1f,
                                                  0x1.fffffep-1f};
  // 2^z for z from -125 to 127: a polynomial for f = z - floor(z), times 2^floor(z).
  static F Exp2(F z, const T* c) {
    const F f = _mm512_reduce_ps(z, _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC);
    F value = Set(c[0]);
#pragma GCC unroll 8
    for (int i = 1; i < 6; ++i) value = Fma(value, f, Set(c[i]));
    return _mm512_scalef_ps(value, z);
  }
  // A whole tile: entries less their centre, scaled and rounded; sums of squares, and weighted.
  template <std::size_t kTileWide>
  static void PackCases(CaseColumns cases, const double* centre, const double* weight, double scale,
                        std::size_t fields, T* tile, double* squares, double* weighted) {
    constexpr std::size_t kHalves = 2 * kTileWide;
    __m512d sum[kHalves];
    __m512d weighted_sum[kHalves];
    for (auto& lane : sum) lane = _mm512_setzero_pd();
    for (auto& lane : weighted_sum) lane = _mm512_setzero_pd();
    const __m512d factor = _mm512_set1_pd(scale);
    const __m512d least = _mm512_set1_pd(Precision<T>::kLeastEntry);
    for (std::size_t f = 0; f < fields; ++f) {
      const __m512d middle = _mm512_set1_pd(centre == nullptr ? 0 : centre[f]);
      const __m512d rounds = _mm512_set1_pd(weight[f]);
      for (std::size_t h = 0; h < kHalves; ++h) {
        const double* entries = cases.entries + f * cases.stride + 8 * h;
        const __m512d x = _mm512_sub_pd(_mm512_loadu_pd(entries), middle);
        const __m512d square = _mm512_mul_pd(x, x);
        sum[h] = _mm512_add_pd(square, sum[h]);
        weighted_sum[h] = _mm512_fmadd_pd(rounds, square, weighted_sum[h]);
        const __m512d scaled = _mm512_mul_pd(x, factor);
        const __mmask8 kept = _mm512_cmp_pd_mask(_mm512_abs_pd(scaled), least, _CMP_NLT_UQ);
        _mm256_store_ps(tile + f * kLanes * kTileWide + 8 * h, _mm512_maskz_cvtpd_ps(kept, scaled));
      }
    }
    for (std::size_t h = 0; h < kHalves; ++h) {
      _mm512_storeu_pd(squares + 8 * h, sum[h]);
      _mm512_storeu_pd(weighted + 8 * h, weighted_sum[h]);
    }
  }
};

struct Twofold512 {
  using T = double;
  using F = __m512d;
  static constexpr std::size_t kLanes = 8;
  static constexpr std::size_t kWide = 4;
  static constexpr std::size_t kColumnsWide = 2;

  static F Load(const T* p) { return _mm512_load_pd(p); }
  static F LoadU(const T* p) { return _mm512_loadu_pd(p); }
  static void Store(T* p, F a) { _mm512_store_pd(p, a); }
  static F Set(T a) { return _mm512_set1_pd(a); }
  static F Add(F a, F b) { return _mm512_add_pd(a, b); }
  static F Sub(F a, F b) { return _mm512_sub_pd(a, b); }
  static F Mul(F a, F b) { return _mm512_mul_pd(a, b); }
  static F Div(F a, F b) { return _mm512_div_pd(a, b); }
  static F Max(F a, F b) { return _mm512_max_pd(a, b); }
  static F Min(F a, F b) { return _mm512_min_pd(a, b); }
  static F Fma(F a, F b, F c) { return _mm512_fmadd_pd(a, b, c); }
  static T FmaOne(T a, T b, T c) { return __builtin_fma(a, b, c); }
  static void StoreU(T* p, F a) { _mm512_storeu_pd(p, a); }
  static void AddTo(double* to, F a) {
    _mm512_storeu_pd(to, _mm512_add_pd(_mm512_loadu_pd(to), a));
  }

  static constexpr const T* kConstants = kTwofoldConstants;
  // 2^z for z from -1000 to 1000, f = z - round(z).
  static F Exp2(F z, const T* c) {
    const F f = _mm512_reduce_pd(z, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
    F value = Set(c[0]);
#pragma GCC unroll 16
    for (int i = 1; i < 11; ++i) value = Fma(value, f, Set(c[i]));
    return _mm512_scalef_pd(value, Sub(z, f));
  }
};

constexpr Operations kOperations = MakeOperations<Single512, Twofold512>();

}  // namespace

const Operations& Avx512Operations() {
  return kOperations;
}

}  // namespace MCSVM_700::certified
