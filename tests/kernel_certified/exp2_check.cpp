// exp2_check [SHARE]: the powers of two that estimates are made of. In single precision every float
// from -125 to 64, or every SHARE-th block of them; in double precision random arguments, and those
// around which the polynomial begins anew. Prints the largest relative errors; exit status 1 where
// one is not below what the bounds allow for.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include "host/model/instruction_set.h"
#include "svm/kernel/certified/error_bounds.inc"
#include "svm/kernel/certified/level_operations.h"

namespace {

namespace certified = MCSVM_700::certified;
namespace packed = MCSVM_700::packed;

constexpr std::uint32_t kBlock = 4096;

template <class T>
struct Worst {
  double error = 0;
  T at = 0;
  std::uint64_t count = 0;

  // Exact is a type whose own error does not matter.
  template <class Exact>
  void Add(const certified::LevelOperations<T>& operations, const std::vector<T>& in) {
    std::vector<T> out(in.size());
    operations.exp2(in.data(), out.data(), in.size());
    for (std::size_t i = 0; i < in.size(); ++i) {
      const Exact power = std::exp2(static_cast<Exact>(in[i]));
      const double found = static_cast<double>(std::fabs(static_cast<Exact>(out[i]) / power - 1));
      if (found <= error) continue;  // false for NaN
      error = found;
      at = in[i];
    }
    count += in.size();
  }

  bool Print(const char* isa, const char* precision) const {
    const double most = certified::Precision<T>::kExp2Error;
    std::printf("%s, %s precision: %llu arguments, largest relative error %.4g at %a, allowed %g\n",
                isa, precision, static_cast<unsigned long long>(count), error,
                static_cast<double>(at), most);
    return error < most;
  }
};

// The floats from `first` on, by their bits, up to that of `last`.
void AddFloats(const certified::LevelOperations<float>& operations, float first, float last,
               std::uint32_t share, Worst<float>& worst) {
  std::uint32_t from = 0;
  std::uint32_t to = 0;
  std::memcpy(&from, &first, sizeof from);
  std::memcpy(&to, &last, sizeof to);
  std::vector<float> block;
  for (std::uint64_t begin = from; begin <= to; begin += std::uint64_t{kBlock} * share) {
    block.clear();
    for (std::uint64_t bits = begin; bits < begin + kBlock && bits <= to; ++bits) {
      const auto narrow = static_cast<std::uint32_t>(bits);
      float value = 0;
      std::memcpy(&value, &narrow, sizeof value);
      block.push_back(value);
    }
    worst.Add<double>(operations, block);
  }
}

void AddDoubles(const certified::LevelOperations<double>& operations, std::uint32_t share,
                Worst<double>& worst) {
  std::mt19937_64 bits(1);
  std::vector<double> block(kBlock);
  for (std::uint32_t b = 0; b < 16384 / share + 1; ++b) {
    for (std::uint32_t i = 0; i < kBlock; ++i) {
      const double part = static_cast<double>(bits() >> 11) * 0x1p-53;
      const double middle = std::floor(part * 965) - 900.5;  // where round(z) changes
      block[i] = i % 4 == 0 ? std::fmin(std::nextafter(middle, i % 8 == 0 ? -1e3 : 1e3), 64)
                            : (i % 4 == 1 ? 1 - 2 * part : 964 * part - 900);
      if (i % 16 == 3) block[i] = std::ldexp(1 - 2 * part, -static_cast<int>(i / 16 % 60));
      block[i] = std::fmax(block[i], -900);
    }
    worst.Add<long double>(operations, block);
  }
}

}  // namespace

int main(int argc, char** argv) {
  const auto share = static_cast<std::uint32_t>(argc > 1 ? std::atoi(argv[1]) : 1);
  bool holds = share > 0;
  for (const packed::Isa isa : {packed::Isa::kAvx2, packed::Isa::kAvx512}) {
    if (!svmscore::CpuHas(isa)) {
      std::printf("%s: this CPU lacks it\n", svmscore::NameOf(isa));
      continue;
    }
    const certified::Operations& operations = *certified::OperationsOf(isa);
    Worst<float> single;
    AddFloats(operations.single, 0.0f, 64.0f, share, single);
    AddFloats(operations.single, -0.0f, -125.0f, share, single);
    holds = single.Print(svmscore::NameOf(isa), "single") && holds;
    Worst<double> twofold;
    AddDoubles(operations.twofold, share, twofold);
    holds = twofold.Print(svmscore::NameOf(isa), "double") && holds;
  }
  return holds ? 0 : 1;
}
