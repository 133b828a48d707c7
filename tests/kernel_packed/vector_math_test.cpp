#include <cmath>
#include <limits>

#include "svm/kernel/packed/vector_check.h"
#include "tests/kernel_packed/levels.h"
#include "tests/kernel_packed/sample.h"

namespace {

using namespace MCSVM_700::packed;
using sample::Random;

class VectorFunctions : public LevelTest {
 protected:
  void SetUp() override {
    LevelTest::SetUp();
    if (IsSkipped()) return;
    if (operations() == nullptr || operations()->exp == nullptr) {
      GTEST_SKIP() << GetParam().name << " calls the library's functions";
    }
    if (!svmscore::CpuHas(Isa::kAvx2))
      GTEST_SKIP() << "the library's functions for CPUs without FMA differ";
  }
};

// Uniform, of every magnitude, and near the ends of the ranges that the vector forms cover.
std::vector<double> Arguments(double reach) {
  Random random(7);
  std::vector<double> arguments = {0.0, 5e-324, std::numeric_limits<double>::max(), INFINITY, NAN};
  for (std::size_t i = 0; i < 5; ++i) arguments.push_back(-arguments[i]);
  for (int i = 0; i < 150000; ++i) arguments.push_back(random.Within(-reach, reach));
  for (int i = 0; i < 50000; ++i) {
    const double size = std::exp2(random.Within(-1074.0, 1023.0));
    arguments.push_back(random.Chance(0.5) ? size : -size);
  }
  for (const double edge :
       {0x1p-64,     0x1p-55, 0x1p-54, 0.25,   0x1.62e43p-3, 0x1.62e43p-2, 0x1.0a2b2p-1,
        0x1.0a2b2p0, 1.0,     19.41,   22.0,   512.0,        708.0,        708.396,
        709.783,     745.13,  746.0,   1024.0, 0x1p21,       0x1p64}) {
    double below = edge;
    double above = edge;
    for (int i = 0; i < 20; ++i) {
      for (const double x : {below, above, -below, -above}) arguments.push_back(x);
      below = std::nextafter(below, 0.0);
      above = std::nextafter(above, INFINITY);
    }
  }
  return arguments;
}

TEST_P(VectorFunctions, HaveTheBitsOfTheLibrary) {
  const auto compare = [](const char* name, double reach, auto&& library, auto&& vector) {
    const std::vector<double> in = Arguments(reach);
    std::vector<double> expected;
    for (const double x : in) expected.push_back(library(x));
    std::vector<double> found(in.size());
    vector(in.data(), found.data(), in.size());
    EXPECT_EQ(sample::Difference(expected, found), "") << name << " to " << reach;
  };
  compare(
      "exp", 760.0, [](double x) { return std::exp(x); }, operations()->exp);
  for (const double reach : {1.1, 25.0}) {
    compare(
        "tanh", reach, [](double x) { return std::tanh(x); }, operations()->tanh);
  }
  for (int degree = 1; degree <= kMaxWholeDegree; ++degree) {
    const double real = degree;
    const auto library = [real](double x) { return std::pow(x, real); };
    const auto vector = [&](const double* in, double* out, std::size_t count) {
      operations()->pow(in, degree, out, count);
    };
    compare("pow", std::exp2(65.0 / degree), library, vector);
  }
}

TEST_P(VectorFunctions, AreInUse) {
  EXPECT_TRUE(MatchingForms(*operations(), KernelFunctionType::kRadialBasis, 1.0).values);
  EXPECT_TRUE(MatchingForms(*operations(), KernelFunctionType::kSigmoid, 1.0).values);
  EXPECT_EQ(MatchingForms(*operations(), KernelFunctionType::kPolynomial, 3.0).whole_degree, 3);
  for (const double degree : {0.0, 2.5, -2.0, kMaxWholeDegree + 1.0, double{NAN}}) {
    EXPECT_EQ(MatchingForms(*operations(), KernelFunctionType::kPolynomial, degree).whole_degree,
              0);
  }
}

// A library whose last bit differs once in a while must be detected, and then be called.
TEST_P(VectorFunctions, AreLeftAsideWhereTheLibraryDiffers) {
  Operations other = *operations();
  other.exp = [](const double* in, double* out, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      const double value = std::exp(in[i]);
      const bool differs = std::hash<double>()(in[i]) % 1000 == 999;
      out[i] = differs ? std::nextafter(value, INFINITY) : value;
    }
  };
  EXPECT_FALSE(MatchingForms(other, KernelFunctionType::kRadialBasis, 1.0).values);
}

FOR_ALL_LEVELS(VectorFunctions);

}  // namespace
