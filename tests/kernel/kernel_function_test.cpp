#include "svm/kernel/kernel_function.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/slot_order.h"

namespace {

using Indices = std::vector<int>;
using Values = std::vector<double>;
using MCSVM_700::SVMKernelFunction;
using MCSVM_700::SVMKFLinear;
using MCSVM_700::SVMKFPolynomial;
using MCSVM_700::SVMKFRBF;
using MCSVM_700::SVMKFSigmoid;

struct Sparse {
  Indices idx;
  Values val;
};

double Evaluate(const SVMKernelFunction& kernel, const Sparse& x, const Sparse& y) {
  return kernel.Evaluate(x.idx, x.val, y.idx, y.val);
}

const Sparse kEmpty{};

TEST(Kernels, SparseSumsCountEveryEntryOnce) {
  const Sparse x{{0, 2, 5}, {10, 3, 7}};
  const Sparse y{{1, 2, 5, 7}, {100, 0.5, 2, 1000}};
  EXPECT_EQ(Evaluate(SVMKFLinear(), x, y), 1.5 + 14);
  EXPECT_EQ(Evaluate(SVMKFLinear(), y, x), 1.5 + 14);
  EXPECT_EQ(Evaluate(SVMKFLinear(), x, kEmpty), 0.0);

  const Sparse a{{0, 3}, {1, 2}};
  const Sparse b{{3, 4}, {5, 1}};
  EXPECT_DOUBLE_EQ(Evaluate(SVMKFRBF(0.25), a, b), std::exp(-0.25 * 11));
  EXPECT_DOUBLE_EQ(Evaluate(SVMKFRBF(0.25), b, a), std::exp(-0.25 * 11));
  // The rest of the longer list counts, too.
  EXPECT_DOUBLE_EQ(Evaluate(SVMKFRBF(1), {{0, 1, 8}, {1, 1, 2}}, {{0}, {1}}), std::exp(-5.0));
  EXPECT_DOUBLE_EQ(Evaluate(SVMKFRBF(1), kEmpty, {{2, 9}, {1, 1}}), std::exp(-2.0));
}

TEST(Kernels, EmptyVectorsLeaveTheConstants) {
  EXPECT_EQ(Evaluate(SVMKFLinear(), kEmpty, kEmpty), 0.0);
  EXPECT_EQ(Evaluate(SVMKFRBF(3), kEmpty, kEmpty), 1.0);
  EXPECT_DOUBLE_EQ(Evaluate(SVMKFPolynomial(2, 1.5, 3), kEmpty, kEmpty), std::pow(1.5, 3));
  EXPECT_DOUBLE_EQ(Evaluate(SVMKFSigmoid(2, 0.5), kEmpty, kEmpty), std::tanh(0.5));
  EXPECT_EQ(SVMKFRBF(3).Evaluate(Values(), Values()), 1.0);
}

TEST(Kernels, DenseAndSparseFormsAgree) {
  const Values x{1, 2, 3};
  const Values y{0.5, -1, 4};  // dot 10.5, squared distance 10.25
  const Sparse sx{{0, 1, 2}, x};
  const Sparse sy{{0, 1, 2}, y};
  const SVMKFLinear linear;
  const SVMKFPolynomial polynomial(0.5, 1, 2);
  const SVMKFRBF rbf(0.1);
  const SVMKFSigmoid sigmoid(0.01, -0.2);
  EXPECT_EQ(linear.Evaluate(x, y), 10.5);
  EXPECT_EQ(polynomial.Evaluate(x, y), 39.0625);
  EXPECT_DOUBLE_EQ(rbf.Evaluate(x, y), std::exp(-0.1 * 10.25));
  EXPECT_DOUBLE_EQ(sigmoid.Evaluate(x, y), std::tanh(0.01 * 10.5 + -0.2));
  for (const SVMKernelFunction* kernel : {static_cast<const SVMKernelFunction*>(&linear),
                                          static_cast<const SVMKernelFunction*>(&polynomial),
                                          static_cast<const SVMKernelFunction*>(&rbf),
                                          static_cast<const SVMKernelFunction*>(&sigmoid)}) {
    EXPECT_EQ(Evaluate(*kernel, sx, sy), kernel->Evaluate(x, y));
  }
}

TEST(Kernels, DegreeIsARealExponentAndNothingIsClamped) {
  const Sparse one{{0}, {1}};
  const Sparse minus{{0}, {-2}};
  EXPECT_TRUE(std::isnan(Evaluate(SVMKFPolynomial(1, 0, 2.5), one, minus)));
  EXPECT_EQ(Evaluate(SVMKFPolynomial(1, 0, 3), one, minus), -8.0);
  EXPECT_EQ(Evaluate(SVMKFRBF(-1000), one, minus), std::numeric_limits<double>::infinity());
}

// The terms are added one by one from the front: in any other order 1 would survive.
TEST(Kernels, TermsAreAddedInAscendingOrder) {
  const Values x{1, 1e16, -1e16, 1};
  const Values ones{1, 1, 1, 1};
  const Indices all{0, 1, 2, 3};
  EXPECT_EQ(SVMKFLinear().Evaluate(x, ones), 1.0);
  EXPECT_EQ(SVMKFLinear().Evaluate(all, x, all, ones), 1.0);
}

TEST(Kernels, SlotOrder) {
  using SparseForm = double (SVMKernelFunction::*)(const Indices&, const Values&, const Indices&,
                                                   const Values&) const;
  using DenseForm = double (SVMKernelFunction::*)(const Values&, const Values&) const;
  EXPECT_EQ(svmscore_test::SlotOf(static_cast<SparseForm>(&SVMKernelFunction::Evaluate)), 2u);
  EXPECT_EQ(svmscore_test::SlotOf(static_cast<DenseForm>(&SVMKernelFunction::Evaluate)), 3u);
}

}  // namespace
