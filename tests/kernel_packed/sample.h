// Models and cases generated for the tests, and their results by the plain kernels.
#ifndef TESTS_KERNEL_PACKED_SAMPLE_H_
#define TESTS_KERNEL_PACKED_SAMPLE_H_

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "svm/kernel/packed/packed_engine.h"

namespace sample {

class Random {
 public:
  explicit Random(std::uint64_t seed) : bits_(seed) {}
  double Within(double low, double high) { return low + (high - low) * Unit(); }
  std::size_t Below(std::size_t count) { return bits_() % count; }
  bool Chance(double share) { return Unit() < share; }

 private:
  double Unit() { return static_cast<double>(bits_() >> 11) * 0x1p-53; }
  std::mt19937_64 bits_;
};

struct Machine {
  std::vector<double> coefficients;
  std::vector<std::uint32_t> vectors;
  double offset = 0.0;
};

// Owns what the views in its input point to.
struct Model {
  MCSVM_700::packed::KernelFunctionType form = MCSVM_700::packed::KernelFunctionType::kLinear;
  double gamma = 0.7;
  double coef0 = 0.3;
  double degree = 3.0;
  std::size_t fields = 0;
  std::vector<std::vector<int>> positions;
  std::vector<std::vector<double>> entries;
  std::vector<Machine> machines;
  MCSVM_700::packed::Storage storage = MCSVM_700::packed::Storage::kByFill;

  void AddVector(std::vector<int> at, std::vector<double> values) {
    positions.push_back(std::move(at));
    entries.push_back(std::move(values));
  }
  MCSVM_700::PackedInput Input() const;
};

// Vectors with the given share of entries, values in [-1, 1], and no machine.
Model RandomModel(MCSVM_700::packed::KernelFunctionType form, std::size_t fields,
                  std::size_t vectors, double fill, Random& random);
// One machine that uses all vectors in order.
void AddMachineOfAll(Model& model, Random& random);
// One machine for each pair of classes, as in one-against-one: the vectors of one class, then those
// of the other. A machine omits each vector with the given probability.
void AddPairwiseMachines(Model& model, std::size_t classes, double left_out, Random& random);

// Cases in columns: entry f of case c is [f * count + c].
struct Cases {
  std::size_t fields = 0;
  std::size_t count = 0;
  std::vector<double> columns;

  std::vector<double> Case(std::size_t c) const;
};
Cases RandomCases(std::size_t fields, std::size_t count, double fill, Random& random);

// Decision values by the definition, [machines][count].
std::vector<double> ByDefinition(const Model& model, const Cases& cases);

enum class Nan { kExact, kAnyNan };
// "" if all bits are equal, else the first difference.
std::string Difference(const std::vector<double>& expected, const std::vector<double>& found,
                       Nan nan = Nan::kExact);
// Difference for the engine on all cases at once and one by one. Where infinities cancel, the
// compiler decides which NaN results.
std::string EngineDifference(const Model& model, const Cases& cases,
                             const MCSVM_700::packed::Operations* operations);
// The same, with the result of ByDefinition given.
std::string EngineDifference(const Model& model, const Cases& cases,
                             const std::vector<double>& expected,
                             const MCSVM_700::packed::Operations* operations);

}  // namespace sample

#endif  // TESTS_KERNEL_PACKED_SAMPLE_H_
