#include "tests/kernel_packed/wide.h"

#include <bit>
#include <cstdint>

#include "svm/kernel/packed/kernels.inc"

namespace MCSVM_700::packed {
namespace {

struct Wide {
  static constexpr Isa kIsa = Isa::kAvx512;
  static constexpr std::size_t kLanes = 8;
  static constexpr std::size_t kWide = 4;
  static constexpr bool kFma = true;
  struct D {
    double lane[kLanes];
  };
  using M = unsigned;

  template <class Function>
  static D Each(const Function& function) {
    D result;
    for (std::size_t i = 0; i < kLanes; ++i) result.lane[i] = function(i);
    return result;
  }
  template <class Function>
  static M Mask(const Function& function) {
    M result = 0;
    for (std::size_t i = 0; i < kLanes; ++i) result |= function(i) ? 1u << i : 0u;
    return result;
  }

  static D Load(const double* p) {
    return Each([&](std::size_t i) { return p[i]; });
  }
  static D LoadU(const double* p) { return Load(p); }
  static void Store(double* p, D a) {
    for (std::size_t i = 0; i < kLanes; ++i) p[i] = a.lane[i];
  }
  static void StoreU(double* p, D a) { Store(p, a); }
  static D Set(double a) {
    return Each([&](std::size_t) { return a; });
  }
  static D Add(D a, D b) {
    return Each([&](std::size_t i) { return a.lane[i] + b.lane[i]; });
  }
  static D Sub(D a, D b) {
    return Each([&](std::size_t i) { return a.lane[i] - b.lane[i]; });
  }
  static D Mul(D a, D b) {
    return Each([&](std::size_t i) { return a.lane[i] * b.lane[i]; });
  }
  static D Div(D a, D b) {
    return Each([&](std::size_t i) { return a.lane[i] / b.lane[i]; });
  }
  static D Fma(D a, D b, D c) {
    return Each([&](std::size_t i) { return __builtin_fma(a.lane[i], b.lane[i], c.lane[i]); });
  }
  static D Fms(D a, D b, D c) { return Fma(a, b, Negate(c)); }
  static D Fnma(D a, D b, D c) { return Fma(Negate(a), b, c); }
  static D Negate(D a) {
    return Each([&](std::size_t i) { return -a.lane[i]; });
  }
  static D Abs(D a) {
    return Each([&](std::size_t i) { return __builtin_fabs(a.lane[i]); });
  }
  static D CopySign(D size, D sign) {
    return Each([&](std::size_t i) { return __builtin_copysign(size.lane[i], sign.lane[i]); });
  }
  static D Truncate(D a) {
    return Each([&](std::size_t i) { return __builtin_trunc(a.lane[i]); });
  }
  static M Less(D a, D b) {
    return Mask([&](std::size_t i) { return a.lane[i] < b.lane[i]; });
  }
  static M LessEqual(D a, D b) {
    return Mask([&](std::size_t i) { return a.lane[i] <= b.lane[i]; });
  }
  static M Equal(D a, D b) {
    return Mask([&](std::size_t i) { return a.lane[i] == b.lane[i]; });
  }
  static M And(M a, M b) { return a & b; }
  static D Select(M mask, D yes, D no) {
    return Each([&](std::size_t i) { return (mask >> i & 1) != 0 ? yes.lane[i] : no.lane[i]; });
  }
  static unsigned NotZero(D a) {
    return Mask([&](std::size_t i) { return a.lane[i] != 0.0; });
  }
  static unsigned Bits(M mask) { return mask; }
  static D PowerOfTwo(D k) {
    return Each([&](std::size_t i) {
      return std::bit_cast<double>(std::bit_cast<std::uint64_t>(k.lane[i] + 0x1.8p52 + 1023) << 52);
    });
  }
  static void ExpTable(D shifted, D& tail, D& scale) {
    for (std::size_t i = 0; i < kLanes; ++i) {
      const auto k = std::bit_cast<std::uint64_t>(shifted.lane[i]);
      const std::uint64_t* pair = kExpTable + k % 128 * 2;
      tail.lane[i] = std::bit_cast<double>(pair[0]);
      scale.lane[i] = std::bit_cast<double>(pair[1] + (k << 45));
    }
  }
};

constexpr Operations kOperations = MakeOperations<Wide>();

}  // namespace
}  // namespace MCSVM_700::packed

const MCSVM_700::packed::Operations& WideOperations() {
  return MCSVM_700::packed::kOperations;
}
