// vector_functions [MILLIONS [SEED]]: compares the vector forms of exp, tanh and pow with the C
// library's functions on that many million random arguments each, 100 by default, and prints how
// many bit patterns differ. Exit status 1 if one does.
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

#include "svm/kernel/packed/operations.h"

namespace {

using namespace MCSVM_700::packed;

constexpr std::size_t kChunk = 4096;

std::mt19937_64 bits;

// Half of the numbers uniform over [-reach, reach], the others of any magnitude from 2^-70 to
// reach.
void Fill(std::vector<double>& numbers, double reach) {
  const auto unit = [] { return static_cast<double>(bits() >> 11) * 0x1p-53; };
  const double octaves = std::log2(reach) + 70.0;
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    const double sign = bits() % 2 == 0 ? 1.0 : -1.0;
    numbers[i] = sign * reach * (i % 2 == 0 ? unit() : std::exp2(-octaves * unit()));
  }
}

template <class Vector, class Library>
bool Compare(const char* name, int degree, double reach, std::size_t millions, const Vector& vector,
             const Library& library) {
  std::vector<double> in(kChunk);
  std::vector<double> out(kChunk);
  std::size_t differences = 0;
  const std::size_t chunks = (millions * 1000000 + kChunk - 1) / kChunk;
  for (std::size_t i = 0; i < chunks; ++i) {
    Fill(in, reach);
    vector(in.data(), out.data(), kChunk);
    for (std::size_t k = 0; k < kChunk; ++k) {
      if (std::bit_cast<std::uint64_t>(library(in[k])) == std::bit_cast<std::uint64_t>(out[k])) {
        continue;
      }
      if (differences++ == 0) std::printf("%s(%a) became %a\n", name, in[k], out[k]);
    }
  }
  std::printf("%s", name);
  if (degree > 0) std::printf(" to the power of %d", degree);
  std::printf(": %zu arguments up to %g, %zu differences\n", chunks * kChunk, reach, differences);
  std::fflush(stdout);
  return differences == 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::size_t millions = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 100;
  bits.seed(argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 1);
  const svmscore::IsaChoice& choice = svmscore::ChosenIsa();
  if (choice.error != nullptr) {
    std::fprintf(stderr, "vector_functions: %s\n", choice.error);
    return 2;
  }
  const Operations* operations = OperationsOf(choice.isa);
  if (operations == nullptr || operations->exp == nullptr) {
    std::printf("%s calls the library's functions\n", svmscore::NameOf(choice.isa));
    return 0;
  }
  bool same =
      Compare("exp", 0, 760.0, millions, operations->exp, [](double x) { return std::exp(x); });
  same &= Compare("exp", 0, 20.0, millions, operations->exp, [](double x) { return std::exp(x); });
  same &=
      Compare("tanh", 0, 24.0, millions, operations->tanh, [](double x) { return std::tanh(x); });
  for (int degree = 1; degree <= kMaxWholeDegree; ++degree) {
    const double real = degree;
    same &= Compare(
        "pow", degree, std::exp2(65.0 / real), millions,
        [=](const double* in, double* out, std::size_t count) {
          operations->pow(in, degree, out, count);
        },
        [=](double x) { return std::pow(x, real); });
  }
  return same ? 0 : 1;
}
