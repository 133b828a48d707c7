// The certified forms for CPUs with AVX2 and FMA. This file has its own compiler flags: define
// nothing here that another file could link, and include no standard header that defines functions.
#include <immintrin.h>

#include "svm/kernel/certified/forms.inc"

namespace MCSVM_700::certified {
namespace {

struct Single256 {
  using T = float;
  using F = __m256;
  static constexpr std::size_t kLanes = 8;
  static constexpr std::size_t kWide = 3;  // 4 x 3 sums leave 4 registers of 16
  static constexpr std::size_t kColumnsWide = 1;

  static F Load(const T* p) { return _mm256_load_ps(p); }
  static F LoadU(const T* p) { return _mm256_loadu_ps(p); }
  static void Store(T* p, F a) { _mm256_store_ps(p, a); }
  static F Set(T a) { return _mm256_set1_ps(a); }
  static F Add(F a, F b) { return _mm256_add_ps(a, b); }
  static F Sub(F a, F b) { return _mm256_sub_ps(a, b); }
  static F Mul(F a, F b) { return _mm256_mul_ps(a, b); }
  static F Div(F a, F b) { return _mm256_div_ps(a, b); }
  static F Max(F a, F b) { return _mm256_max_ps(a, b); }  // b where either is not a number
  static F Min(F a, F b) { return _mm256_min_ps(a, b); }
  static F Fma(F a, F b, F c) { return _mm256_fmadd_ps(a, b, c); }  // a b + c
  static T FmaOne(T a, T b, T c) { return __builtin_fmaf(a, b, c); }
  static void AddTo(double* to, F a) {
    const __m256d low = _mm256_cvtps_pd(_mm256_castps256_ps128(a));
    const __m256d high = _mm256_cvtps_pd(_mm256_extractf128_ps(a, 1));
    _mm256_storeu_pd(to, _mm256_add_pd(_mm256_loadu_pd(to), low));
    _mm256_storeu_pd(to + 4, _mm256_add_pd(_mm256_loadu_pd(to + 4), high));
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
    unsigned bits = 0;
    if (count == 8) {
      const __m256d zero = _mm256_setzero_pd();
      const __m256d low = _mm256_cmp_pd(_mm256_loadu_pd(p), zero, _CMP_NEQ_UQ);
      const __m256d high = _mm256_cmp_pd(_mm256_loadu_pd(p + 4), zero, _CMP_NEQ_UQ);
      bits = static_cast<unsigned>(_mm256_movemask_pd(low) | _mm256_movemask_pd(high) << 4);
    } else {
      for (std::size_t i = 0; i < count; ++i) bits |= (p[i] != 0.0 ? 1u : 0u) << i;
    }
    return bits;
  }

  // The least exponent, then what Exp2 needs: see exp2_polynomial.py.
  alignas(64) static constexpr T kConstants[7] = {Precision<T>::kLeastExponent,
                                                  0x1.5c08e6p-10f,
                                                  0x1.3d0c52p-7f,
                                                  0x1.c6b6e4p-5f,
                                                  0x1.ebf918p-3f,
                                                  0x1.62e428p-1f,
                                                  0x1.000002p+0f};
  // 2^z for z from -125 to 126: a polynomial for f = z - round(z). Adding 1.5 2^23 leaves round(z)
  // in the lowest bits, from where it is added to the exponent of the polynomial's value.
  static F Exp2(F z, const T* c) {
    const F magic = Set(0x1.8p23f);
    const F whole = Add(z, magic);
    const F f = Sub(z, Sub(whole, magic));
    F value = Set(c[0]);
#pragma GCC unroll 8
    for (int i = 1; i < 6; ++i) value = Fma(value, f, Set(c[i]));
    const __m256i exponent = _mm256_slli_epi32(_mm256_castps_si256(whole), 23);
    return _mm256_castsi256_ps(_mm256_add_epi32(_mm256_castps_si256(value), exponent));
  }
  // A whole tile: entries less their centre, scaled and rounded; sums of squares, and weighted.
  template <std::size_t kTileWide>
  static void PackCases(CaseColumns cases, const double* centre, const double* weight, double scale,
                        std::size_t fields, T* tile, double* squares, double* weighted) {
    constexpr std::size_t kHalves = 2 * kTileWide;
    __m256d sum[kHalves];
    __m256d weighted_sum[kHalves];
    for (auto& lane : sum) lane = _mm256_setzero_pd();
    for (auto& lane : weighted_sum) lane = _mm256_setzero_pd();
    const __m256d factor = _mm256_set1_pd(scale);
    const __m256d least = _mm256_set1_pd(Precision<T>::kLeastEntry);
    for (std::size_t f = 0; f < fields; ++f) {
      const __m256d middle = _mm256_set1_pd(centre == nullptr ? 0 : centre[f]);
      const __m256d rounds = _mm256_set1_pd(weight[f]);
      for (std::size_t h = 0; h < kHalves; ++h) {
        const double* entries = cases.entries + f * cases.stride + 4 * h;
        const __m256d x = _mm256_sub_pd(_mm256_loadu_pd(entries), middle);
        const __m256d square = _mm256_mul_pd(x, x);
        sum[h] = _mm256_add_pd(square, sum[h]);
        weighted_sum[h] = _mm256_fmadd_pd(rounds, square, weighted_sum[h]);
        const __m256d scaled = _mm256_mul_pd(x, factor);
        const __m256d size = _mm256_andnot_pd(_mm256_set1_pd(-0.0), scaled);
        const __m256d kept = _mm256_cmp_pd(size, least, _CMP_NLT_UQ);
        _mm_store_ps(tile + f * kLanes * kTileWide + 4 * h,
                     _mm256_cvtpd_ps(_mm256_and_pd(kept, scaled)));
      }
    }
    for (std::size_t h = 0; h < kHalves; ++h) {
      _mm256_storeu_pd(squares + 4 * h, sum[h]);
      _mm256_storeu_pd(weighted + 4 * h, weighted_sum[h]);
    }
  }
};

struct Twofold256 {
  using T = double;
  using F = __m256d;
  static constexpr std::size_t kLanes = 4;
  static constexpr std::size_t kWide = 2;
  static constexpr std::size_t kColumnsWide = 1;

  static F Load(const T* p) { return _mm256_load_pd(p); }
  static F LoadU(const T* p) { return _mm256_loadu_pd(p); }
  static void Store(T* p, F a) { _mm256_store_pd(p, a); }
  static F Set(T a) { return _mm256_set1_pd(a); }
  static F Add(F a, F b) { return _mm256_add_pd(a, b); }
  static F Sub(F a, F b) { return _mm256_sub_pd(a, b); }
  static F Mul(F a, F b) { return _mm256_mul_pd(a, b); }
  static F Div(F a, F b) { return _mm256_div_pd(a, b); }
  static F Max(F a, F b) { return _mm256_max_pd(a, b); }
  static F Min(F a, F b) { return _mm256_min_pd(a, b); }
  static F Fma(F a, F b, F c) { return _mm256_fmadd_pd(a, b, c); }
  static T FmaOne(T a, T b, T c) { return __builtin_fma(a, b, c); }
  static void StoreU(T* p, F a) { _mm256_storeu_pd(p, a); }
  static void AddTo(double* to, F a) {
    _mm256_storeu_pd(to, _mm256_add_pd(_mm256_loadu_pd(to), a));
  }

  static constexpr const T* kConstants = kTwofoldConstants;
  // 2^z for z from -1000 to 1000, as in single precision.
  static F Exp2(F z, const T* c) {
    const F magic = Set(0x1.8p52);
    const F whole = Add(z, magic);
    const F f = Sub(z, Sub(whole, magic));
    F value = Set(c[0]);
#pragma GCC unroll 16
    for (int i = 1; i < 11; ++i) value = Fma(value, f, Set(c[i]));
    const __m256i exponent = _mm256_slli_epi64(_mm256_castpd_si256(whole), 52);
    return _mm256_castsi256_pd(_mm256_add_epi64(_mm256_castpd_si256(value), exponent));
  }
};

constexpr Operations kOperations = MakeOperations<Single256, Twofold256>();

}  // namespace

const Operations& Avx2Operations() {
  return kOperations;
}

}  // namespace MCSVM_700::certified
