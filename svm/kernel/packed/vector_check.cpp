#include "svm/kernel/packed/vector_check.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <map>
#include <mutex>
#include <random>
#include <tuple>
#include <vector>

namespace MCSVM_700::packed {
namespace {

constexpr std::size_t kUniform = 3000;
constexpr std::size_t kLogarithmic = 1000;
constexpr std::size_t kDense = 40000;

// Within these ranges a library with fused multiply-add and one without give different bits for one
// in some hundreds or thousands of arguments; outside them, for none.
constexpr double kExpRange = 40.0;
constexpr double kTanhRange = 1.0;
constexpr double kWitnesses[] = {
    -0x1.ea721c7192600p-3, -0x1.066277e5ff088p+2, -0x1.caf4084ca1e84p+3, 0x1.9a33212d175e6p-4,
    0x1.280c3fd137e70p-1,  -0x1.70c47ca621740p-3, -0x1.c6ff45dac304dp-6};

// Uniform over [-reach, reach], then of every magnitude from 2^-60 to reach, then densely over
// [-dense, dense], then special values.
std::vector<double> Arguments(double reach, double dense) {
  std::mt19937_64 bits(20240229);
  const auto unit = [&] { return static_cast<double>(bits() >> 11) * 0x1p-53; };
  std::vector<double> arguments;
  for (std::size_t i = 0; i < kUniform; ++i) arguments.push_back(reach * (2.0 * unit() - 1.0));
  const double octaves = std::log2(reach) + 60.0;
  for (std::size_t i = 0; i < kLogarithmic; ++i) {
    const double size = std::exp2(octaves * unit() - 60.0);
    arguments.push_back(i % 2 == 0 ? size : -size);
  }
  for (std::size_t i = 0; i < kDense; ++i) arguments.push_back(dense * (2.0 * unit() - 1.0));
  arguments.insert(arguments.end(), std::begin(kWitnesses), std::end(kWitnesses));
  for (const double odd : {0.0, 1.0, 22.0, 0.34657359, 1.0397207, 512.0, 708.0, 746.0, 0x1p-1074,
                           std::numeric_limits<double>::infinity()}) {
    arguments.push_back(odd);
    arguments.push_back(-odd);
  }
  return arguments;
}

template <class Vector, class Library>
bool Match(const std::vector<double>& arguments, const Vector& vector, const Library& library) {
  std::vector<double> results(arguments.size());
  vector(arguments.data(), results.data(), arguments.size());
  return std::equal(arguments.begin(), arguments.end(), results.begin(),
                    [&](double argument, double result) {
                      return std::bit_cast<std::uint64_t>(library(argument)) ==
                             std::bit_cast<std::uint64_t>(result);
                    });
}

bool ExpMatches(const Operations& operations) {
  return operations.exp != nullptr &&
         Match(Arguments(750.0, kExpRange), operations.exp, [](double x) { return std::exp(x); });
}

bool TanhMatches(const Operations& operations) {
  return operations.tanh != nullptr &&
         Match(Arguments(24.0, kTanhRange), operations.tanh, [](double x) { return std::tanh(x); });
}

// `degree` if it is a whole number from 1 to kMaxWholeDegree for which the form matches, else 0.
int WholeDegreeThatMatches(const Operations& operations, double degree) {
  if (operations.pow == nullptr || !(degree >= 1.0 && degree <= kMaxWholeDegree)) return 0;
  const int whole = static_cast<int>(degree);
  if (whole != degree) return 0;
  const auto vector = [&](const double* in, double* out, std::size_t count) {
    operations.pow(in, whole, out, count);
  };
  const auto library = [degree](double x) { return std::pow(x, degree); };
  // Near 1, and as far as the vector form reaches.
  const bool matches = Match(Arguments(std::exp2(66.0 / degree), 4.0), vector, library);
  return matches ? whole : 0;
}

VectorForms Try(const Operations& operations, KernelFunctionType form, double degree) {
  switch (form) {
    case KernelFunctionType::kRadialBasis:
      return {ExpMatches(operations), 0};
    case KernelFunctionType::kSigmoid:
      return {TanhMatches(operations), 0};
    case KernelFunctionType::kPolynomial:
      return {false, WholeDegreeThatMatches(operations, degree)};
    case KernelFunctionType::kLinear:
      break;
  }
  return {};
}

}  // namespace

VectorForms MatchingForms(const Operations& operations, KernelFunctionType form, double degree) {
  // The library and the forms do not change while the process runs.
  static std::mutex mutex;
  static std::map<std::tuple<const void*, KernelFunctionType, double>, VectorForms> known;
  const void* function = nullptr;
  if (form == KernelFunctionType::kRadialBasis) function = reinterpret_cast<void*>(operations.exp);
  if (form == KernelFunctionType::kSigmoid) function = reinterpret_cast<void*>(operations.tanh);
  if (form == KernelFunctionType::kPolynomial) function = reinterpret_cast<void*>(operations.pow);
  const double kept_degree = form == KernelFunctionType::kPolynomial ? degree : 0.0;
  if (kept_degree != std::trunc(kept_degree) || std::abs(kept_degree) > kMaxWholeDegree) return {};
  const std::scoped_lock lock(mutex);
  const auto [found, is_new] = known.try_emplace({function, form, kept_degree});
  if (is_new) found->second = Try(operations, form, degree);
  return found->second;
}

}  // namespace MCSVM_700::packed
