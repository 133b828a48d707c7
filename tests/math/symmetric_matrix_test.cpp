#include "math/symmetric_matrix.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/slot_order.h"

namespace {

using MCMath_850::IMCSymMatrix;
using MCMath_850::MCSymMatrix;
using Vector = std::vector<double>;

MCSymMatrix Counting(int n) {
  MCSymMatrix matrix(n, true);
  for (int k = 0; k < n * (n + 1) / 2; ++k) matrix.SetElem(k, k + 1);
  return matrix;
}

TEST(SymmetricMatrix, PackedPositions) {
  MCSymMatrix matrix(3, true);
  EXPECT_TRUE(matrix.SetElem(2, 0, 5.0));
  EXPECT_EQ(matrix.GetElem(0, 2), 5.0);
  EXPECT_TRUE(matrix.SetElem(5, 7.0));
  EXPECT_EQ(matrix.GetElem(2, 2), 7.0);
  EXPECT_FALSE(matrix.SetElem(6, 1.0));
  EXPECT_FALSE(matrix.SetElem(-1, 1.0));
  EXPECT_EQ(Counting(4).GetElem(1, 3), 8.0);
}

// (1 2 4 / 2 3 5 / 4 5 6)
TEST(SymmetricMatrix, Products) {
  const MCSymMatrix matrix = Counting(3);
  Vector out{9, 9, 9, 9};
  EXPECT_FALSE(matrix.ComputeSV({1, 2}, out));
  EXPECT_EQ(out, (Vector{9, 9, 9, 9}));
  EXPECT_TRUE(matrix.ComputeSV({1, 10, 100, 1000}, out));
  EXPECT_EQ(out, (Vector{421, 532, 654}));
  EXPECT_EQ(matrix.ComputeVSW({1, 10, 100}, {1, 0, 2}), 421.0 + 2 * 654);
  EXPECT_EQ(matrix.ComputeVSV({1, 10, 100}), 421.0 + 5320 + 65400);
  EXPECT_EQ(matrix.ComputeVSW({1, 10, 100, 1}, {1, 0, 2}), 0.0);
  EXPECT_EQ(matrix.ComputeVSV({1, 10}), 0.0);
}

// Rows are summed in ascending order of the column: any other order gives another sum.
TEST(SymmetricMatrix, SumsInOrder) {
  MCSymMatrix matrix(3, true);
  matrix.SetElem(1, 0, 1.0);
  matrix.SetElem(1, 1, 1e16);
  matrix.SetElem(2, 1, -1e16);
  Vector out;
  EXPECT_TRUE(matrix.ComputeSV({1, 1, 1}, out));
  EXPECT_EQ(out, (Vector{1, 0, -1e16}));
  EXPECT_EQ(matrix.ComputeVSW({1, 1, 1}, {0, 1, 0}), 0.0);
  EXPECT_EQ(matrix.ComputeVSW({0, 1, 0}, {1, 1, 1}), 0.0);
}

TEST(SymmetricMatrix, EmptyAndUnallocatable) {
  const MCSymMatrix empty(-4, false);
  EXPECT_TRUE(empty.IsValidMatrix());
  EXPECT_EQ(empty.GetNRows(), 0);
  Vector out{1};
  EXPECT_TRUE(empty.ComputeSV({}, out));
  EXPECT_EQ(empty.ComputeVSV({}), 0.0);

  MCSymMatrix huge(std::numeric_limits<int>::max(), true);
  EXPECT_FALSE(huge.IsValidMatrix());
  EXPECT_EQ(huge.GetNRows(), -1);
  EXPECT_EQ(huge.ComputeVSV({}), 0.0);
}

TEST(SymmetricMatrix, SlotOrder) {
  EXPECT_EQ(svmscore_test::SlotOf(&IMCSymMatrix::ComputeSV), 5u);
  EXPECT_EQ(svmscore_test::SlotOf(&IMCSymMatrix::ComputeVSW), 7u);
  EXPECT_EQ(svmscore_test::SlotOf(&IMCSymMatrix::Display), 9u);
}

}  // namespace
