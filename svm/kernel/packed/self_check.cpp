#include <bit>
#include <cstdint>
#include <random>
#include <vector>

#include "svm/kernel/packed/packed_engine.h"

namespace MCSVM_700 {
namespace {

constexpr std::size_t kFields = 7;
constexpr std::size_t kVectors = 45;  // one block and part of another
constexpr std::size_t kCases = 37;    // whole tiles and a remainder

// Three machines that share vectors, the last with terms that do not ascend.
struct SmallModel {
  SmallModel() {
    for (auto& position : positions) {
      for (int f = 0; f < static_cast<int>(kFields); ++f) position.push_back(f);
    }
    for (auto& entry : entries) {
      for (std::size_t f = 0; f < kFields; ++f) entry.push_back(bits() % 4 == 0 ? 0.0 : Number());
    }
    for (std::uint32_t v = 0; v < kVectors; ++v) {
      terms[0].push_back(v);
      if (v % 3 != 0) terms[1].push_back(v);
      terms[2].push_back(kVectors - 1 - v);
    }
    for (std::size_t m = 0; m < 3; ++m) {
      for (std::size_t k = 0; k < terms[m].size(); ++k) coefficients[m].push_back(Number());
    }
    for (std::size_t i = 0; i < kFields * kCases; ++i) cases.push_back(Number());
  }

  double Number() { return static_cast<double>(bits() >> 11) * 0x1p-52 - 1.0; }

  std::mt19937_64 bits{31337};
  std::vector<int> positions[kVectors];
  std::vector<double> entries[kVectors];
  std::vector<std::uint32_t> terms[3];
  std::vector<double> coefficients[3];
  std::vector<double> cases;  // [kFields][kCases]
};

bool SameBits(const std::vector<double>& a, const std::vector<double>& b) {
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (std::bit_cast<std::uint64_t>(a[i]) != std::bit_cast<std::uint64_t>(b[i]) &&
        !(a[i] != a[i] && b[i] != b[i])) {
      return false;
    }
  }
  return true;
}

}  // namespace

bool PackedEngine::Agrees(const PackedInput& input, const packed::Operations* operations,
                          packed::VectorForms forms) {
  const SmallModel model;
  PackedInput small;
  small.kernel = input.kernel;
  small.fields = kFields;
  for (std::size_t v = 0; v < kVectors; ++v) {
    small.vectors.push_back({&model.positions[v], &model.entries[v]});
  }
  // The first machine alone, then all three: the forms for one machine and for several.
  for (const std::size_t machines : {std::size_t{1}, std::size_t{3}}) {
    small.machines.clear();
    for (std::size_t m = 0; m < machines; ++m) {
      small.machines.push_back({model.coefficients[m], model.terms[m], 0.5});
    }
    PackedScratch scratch;
    std::vector<double> expected(machines * kCases);
    PackedEngine(small, nullptr, {})
        .DecideMany({model.cases.data(), kCases}, kCases, scratch, {expected.data(), kCases});
    for (const packed::Storage storage : {packed::Storage::kDense, packed::Storage::kSparse}) {
      small.storage = storage;
      const PackedEngine engine(small, operations, forms);
      std::vector<double> many(machines * kCases);
      engine.DecideMany({model.cases.data(), kCases}, kCases, scratch, {many.data(), kCases});
      std::vector<double> one(machines * kCases);
      for (std::size_t c = 0; c < kCases; ++c) {
        std::vector<double> x(kFields);
        for (std::size_t f = 0; f < kFields; ++f) x[f] = model.cases[f * kCases + c];
        std::vector<double> decisions(machines);
        engine.Decide(x.data(), scratch, decisions.data());
        for (std::size_t m = 0; m < machines; ++m) one[m * kCases + c] = decisions[m];
      }
      if (!SameBits(many, expected) || !SameBits(one, expected)) return false;
    }
  }
  return true;
}

}  // namespace MCSVM_700
