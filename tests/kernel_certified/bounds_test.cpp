// Every estimate lies within its bound of the exact decision value, and what the bounds are made of
// covers the true values, computed in quadruple precision.
#include <gtest/gtest.h>

#include <cmath>

#include "svm/kernel/certified/error_bounds.inc"
#include "svm/kernel/packed/operations.h"
#include "tests/kernel_certified/comparison.h"
#include "tests/kernel_certified/hard_models.h"

namespace {

using namespace MCSVM_700;
using certified::ArgumentError;
using certified::Level;
using certified::LevelPacking;
using certified::LevelView;
using certified::PolynomialError;
using certified::RadialBasisError;
using certified::SigmoidError;
using hard::Kind;
using packed::Isa;
using packed::KernelFunctionType;
using sample::Model;
using sample::Random;

__extension__ typedef __float128 Quad;

Quad Size(Quad value) {
  return value < 0 ? -value : value;
}

// f(z) by the library's long double, and what z has beyond that by the derivative.
template <class Function>
Quad Extended(Quad z, const Function& function, Quad slope_at_value(Quad)) {
  const auto head = static_cast<long double>(z);
  const Quad value = function(head);
  return value + (z - head) * slope_at_value(value);
}

struct TrueKernel {
  Quad value = 0;
  Quad argument = 0;       // of exp, tanh or the power
  Quad argument_size = 0;  // with all terms positive
  Quad slope = 0;          // |d value / d argument|
};

TrueKernel KernelOf(const Model& model, const std::vector<double>& x, std::size_t v) {
  Quad dot = 0;
  Quad dot_size = 0;
  Quad square = 0;
  std::vector<double> vector(model.fields);
  for (std::size_t i = 0; i < model.positions[v].size(); ++i) {
    vector[static_cast<std::size_t>(model.positions[v][i])] = model.entries[v][i];
  }
  for (std::size_t f = 0; f < model.fields; ++f) {
    const Quad product = static_cast<Quad>(x[f]) * vector[f];
    const Quad difference = static_cast<Quad>(x[f]) - vector[f];
    dot += product;
    dot_size += Size(product);
    square += difference * difference;
  }
  const Quad argument = model.gamma * dot + model.coef0;
  const Quad size = model.gamma * dot_size + Size(model.coef0);
  switch (model.form) {
    case KernelFunctionType::kRadialBasis: {
      const Quad z = -model.gamma * square;
      const Quad value = Extended(
          z, [](long double a) { return std::exp(a); }, [](Quad e) { return e; });
      return {value, z, -z, value};
    }
    case KernelFunctionType::kSigmoid:
      return {Extended(
                  argument, [](long double a) { return std::tanh(a); },
                  [](Quad t) { return 1 - t * t; }),
              argument, size, 1};
    case KernelFunctionType::kPolynomial:
      if (model.degree == 2) return {argument * argument, argument, size, 2 * size};
      return {argument * argument * argument, argument, size, 3 * size * size};
    default:
      return {dot, dot, dot_size, 1};
  }
}

class BoundsTest : public testing::TestWithParam<Isa> {
 protected:
  void SetUp() override {
    if (!svmscore::CpuHas(GetParam())) GTEST_SKIP() << "this CPU lacks it";
    operations_ = packed::OperationsOf(GetParam());
  }
  const packed::Operations* operations_ = nullptr;
};

INSTANTIATE_TEST_SUITE_P(All, BoundsTest, testing::Values(Isa::kAvx2, Isa::kAvx512),
                         [](const auto& isa) { return std::string(svmscore::NameOf(isa.param)); });

TEST_P(BoundsTest, HoldAllEstimates) {
  Random random(1);
  hard::Tally tally;
  for (int i = 0; i < 400; ++i) {
    const Model model =
        i < 2 ? hard::ManyMachines(i == 0 ? 300 : 600, random) : hard::RandomModel(random);
    hard::Pair pair(model, {{}, std::vector<double>(model.machines.size())}, operations_);
    for (const Kind kind : hard::kKinds) {
      pair.Compare(hard::RandomCases(model, kind, 1 + random.Below(90), random), 1, tally);
    }
    ASSERT_EQ(tally.first, "") << "model " << i;
  }
  EXPECT_GT(tally.bounded, tally.estimates / 2);
  EXPECT_GT(tally.sure, tally.cases / 3);
}

// The exact decision value is not the true one: by the roundings that the bounds count.
TEST_P(BoundsTest, CountTheRoundingsOfTheDefinition) {
  Random random(2);
  for (int i = 0; i < 300; ++i) {
    const Model model = hard::RandomModel(random);
    if (model.positions.size() > 30) continue;
    hard::Pair pair(model, {{}, std::vector<double>(model.machines.size())}, operations_);
    if (pair.certified().why_not() != nullptr) continue;
    const sample::Cases cases = hard::RandomCases(model, Kind::kNear, 8, random);
    const std::vector<double> decided = pair.Decide(cases);
    const double in_argument = 0x1p-53 * (static_cast<double>(model.fields) + 8) * 1.001;
    for (std::size_t at = 0; at < decided.size(); ++at) {
      const sample::Machine& machine = model.machines[at / cases.count];
      const double of_sum =
          0x1p-52 * (static_cast<double>(machine.coefficients.size()) + 64) * 1.001;
      Quad value = machine.offset;
      Quad error = 0x1p-50 * Size(machine.offset) + 1e-290;
      for (std::size_t k = 0; k < machine.coefficients.size(); ++k) {
        const TrueKernel kernel = KernelOf(model, cases.Case(at % cases.count), machine.vectors[k]);
        const Quad alpha = Size(machine.coefficients[k]);
        value += machine.coefficients[k] * kernel.value;
        error +=
            alpha * (kernel.slope * in_argument * kernel.argument_size +
                     of_sum * (model.form == KernelFunctionType::kLinear ? kernel.argument_size
                                                                         : Size(kernel.value)));
      }
      const auto share = static_cast<double>(Size(decided[at] - value) / error);
      ASSERT_LE(share, 1) << "model " << i << ", decision " << at;
    }
  }
}

// One vector, one coefficient of 1, no constant: the estimate is the kernel value itself.
template <class T>
void ExpectPartsHold(const packed::Operations* operations, Level level, Random& random,
                     std::size_t& checked) {
  using P = certified::Precision<T>;
  constexpr std::size_t kCases = 40;
  Model model = hard::RandomModel(random);
  model.storage = packed::Storage::kDense;
  if (model.form == KernelFunctionType::kLinear) return;
  if (model.positions.size() > 6) return;
  model.machines.assign(1, {});
  for (std::uint32_t v = 0; v < model.positions.size(); ++v) {  // the others move the centre
    model.machines[0].coefficients.push_back(v == 0 ? 1.0 : 0.0);
    model.machines[0].vectors.push_back(v);
  }
  const PackedEngine exact(model.Input(), operations);
  const CertifiedEngine engine(exact, {{}, {0.0}});
  if (engine.why_not() != nullptr) return;
  const LevelPacking<T> packing(exact);
  if (!packing.usable()) return;
  const LevelView<T>& view = packing.view();
  const certified::Run<T>& run = view.runs[0];
  const sample::Cases cases = hard::RandomCases(model, Kind::kNear, kCases, random);
  std::vector<double> found(kCases);
  std::vector<double> errors(kCases);
  CertifiedScratch scratch;
  ASSERT_TRUE(engine.Estimate(level, {cases.columns.data(), kCases}, kCases, scratch,
                              {found.data(), errors.data(), kCases, kCases}));
  const double u = P::kUnit;
  const auto chain = static_cast<double>(view.chain);
  for (std::size_t c = 0; c < kCases; ++c) {
    const std::vector<double> x = cases.Case(c);
    if (!(errors[c] < INFINITY)) continue;
    ++checked;
    Quad square = 0;
    Quad weighted = 0;
    for (std::size_t f = 0; f < model.fields; ++f) {
      const Quad from = x[f] - static_cast<Quad>(view.centre == nullptr ? 0 : view.centre[f]);
      square += from * from;
      weighted += view.weight[f] * from * from;
    }
    const double X = std::sqrt(static_cast<double>(square)) * (1 + 0x1p-30) + 0x1p-500;
    const double WX = std::sqrt(static_cast<double>(weighted)) * (1 + 0x1p-30) + 0x1p-500;
    const TrueKernel kernel = KernelOf(model, x, 0);
    const double found_size = std::fabs(found[c]);
    double allowed = 0;
    if (model.form == KernelFunctionType::kRadialBasis) {
      allowed =
          found_size * (RadialBasisError(view, run, X, WX) + (chain + 3) * u + P::kExp2Error) +
          P::kBelowLeast;
    } else if (model.form == KernelFunctionType::kSigmoid) {
      allowed =
          SigmoidError(view, run.columns[0], WX) + 0.51 * P::kExp2Error + (chain + 9) * u + 0x1p-57;
    } else {
      const double argument = model.degree == 2 ? std::sqrt(found_size) : std::cbrt(found[c]);
      const auto truly =
          static_cast<double>(model.degree == 2 ? Size(kernel.argument) : kernel.argument);
      if (found_size > 0x1p-90) {  // below, powers underflow
        ASSERT_LE(std::fabs(argument - truly),
                  ArgumentError(view, run, X, WX) + 3 * u * std::fabs(argument));
      }
      allowed = PolynomialError(view, run, run.columns[0], X, WX, -1) + 0x1p-110;
    }
    ASSERT_LE(static_cast<double>(Size(found[c] - kernel.value)), allowed)
        << "form " << model.form << ", found " << found[c] << ", case " << c;
  }
}

TEST_P(BoundsTest, CoverTheTrueKernelByTheirParts) {
  Random random(3);
  std::size_t single = 0;
  std::size_t twofold = 0;
  for (int i = 0; i < 1000; ++i) {
    ExpectPartsHold<float>(operations_, Level::kSingle, random, single);
    ExpectPartsHold<double>(operations_, Level::kTwofold, random, twofold);
    if (HasFatalFailure()) FAIL() << "model " << i;
  }
  EXPECT_GT(single, 2000U);
  EXPECT_GT(twofold, 2000U);
}

// All entries of vectors and cases are alike, so that additions of single precision round the same
// way again and again: exponents that should be near 0 come out as hundreds.
TEST_P(BoundsTest, ClaimNothingWhereRoundingRaisesAnExponentBeyondAllPowers) {
  constexpr std::size_t kCases = 70;
  Random random(4);
  for (const std::size_t fields : {8192U, 16384U}) {
    Model model;
    model.form = KernelFunctionType::kRadialBasis;
    model.fields = fields;
    std::vector<int> all;
    for (std::size_t f = 0; f < fields; ++f) all.push_back(static_cast<int>(f));
    model.AddVector(all, std::vector<double>(fields, 1.0));
    model.AddVector(all, std::vector<double>(fields, -1.0));
    model.gamma = 0x1.fp23 / static_cast<double>(fields);
    model.machines.push_back({{1, 1}, {0, 1}, -0.5});
    sample::Cases cases{fields, kCases, std::vector<double>(fields * kCases)};
    for (std::size_t c = 0; c < kCases; ++c) {
      const double entry = 1 + random.Within(-1e-4, 1e-4);
      for (std::size_t f = 0; f < fields; ++f) cases.columns[f * kCases + c] = entry;
    }
    hard::Tally tally;
    hard::Pair(model, {{}, {0.0}}, operations_).Compare(cases, 1, tally);
    EXPECT_EQ(tally.first, "");
  }
}

}  // namespace
