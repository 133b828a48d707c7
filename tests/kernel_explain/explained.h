// Models made up for explanations, and Shapley values by their definition.
#ifndef TESTS_KERNEL_EXPLAIN_EXPLAINED_H_
#define TESTS_KERNEL_EXPLAIN_EXPLAINED_H_

#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "host/model/explainable_model.h"
#include "svm/model/model.h"

namespace explained {

using Row = std::vector<double>;

struct Kernel {
  SVMConst::KernelFunctionType type = SVMConst::kRadialBasis;
  double gamma = 0.3;
  double coef0 = 0.6;
  double degree = 3;
};
inline constexpr Kernel kRbf{SVMConst::kRadialBasis, 0.3};
inline constexpr Kernel kSigmoid{SVMConst::kSigmoid, 0.2, 0.1};
Kernel Polynomial(double degree);

// Owns everything that an explanation is made of.
struct Sample {
  Kernel kernel;
  std::vector<std::vector<int>> positions;  // of the entries of each vector
  std::vector<Row> entries;
  struct Machine {
    std::vector<std::size_t> vectors;
    Row coefficients;
  };
  std::vector<Machine> machines;
  std::vector<std::vector<std::size_t>> players;
  std::vector<Row> background;
  std::vector<Row> cases;
  std::uint64_t seed = 1;
  std::size_t orders = 0;
  bool regression = false;

  std::size_t fields() const { return cases.front().size(); }
  // Machine m has the offset m + 0.5.
  std::unique_ptr<MCZandor_850::SVMModel> Model() const;
  std::unique_ptr<svmscore::Explainer> Explainer(const MCZandor_850::SVMModel& model) const;
};

// `vectors` vectors and `rows` rows of normal entries, of which a share `fill` is not 0; every
// field a player; 2 cases; `machines` that each leave out some vectors.
Sample RandomSample(const Kernel& kernel, std::size_t fields, std::size_t vectors, std::size_t rows,
                    std::size_t machines, std::uint64_t seed, double fill = 1.0);

// Entries of cases in columns.
std::vector<double> Columns(const std::vector<Row>& cases);

struct Found {
  Row decisions, values, errors, gradients;
  bool sampled = false;
};
// All cases in one call.
Found Explain(const Sample& sample);

// Decision values by the model, [cases][machines].
Row Decisions(MCZandor_850::SVMModel& model, const std::vector<Row>& cases);

// The sum of the sizes of a machine's coefficients.
double ScaleOf(const Sample& sample, std::size_t machine);

// Expects that values add up to the decision value less the base, that decisions are the model's,
// and that bits do not depend on the number of cases in a call.
void ExpectSound(const Sample& sample, const Found& found);

// By Shapley's definition, over all sets of players, [cases][machines][players].
Row ByDefinition(const Sample& sample);

}  // namespace explained

#endif  // TESTS_KERNEL_EXPLAIN_EXPLAINED_H_
