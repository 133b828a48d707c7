#include "svm/learn/multi_prob_learn.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <random>
#include <sstream>

#include "common/display.h"

namespace {

using MCMath_850::MCSymMatrix;
using MCSVM_700::SVMMultiProbLearn;
using Vector = std::vector<double>;
using Rows = std::vector<Vector>;

// Counts how often it is asked; says yes from the given call on.
class Query : public MCCommon_850::MCQueryCancel {
 public:
  explicit Query(int cancel_at = 1000) : cancel_at_(cancel_at) {}
  bool IsCancelled() override { return ++asked >= cancel_at_; }
  int asked = 0;

 private:
  int cancel_at_;
};

MCSymMatrix Packed(const Rows& q) {
  MCSymMatrix matrix(static_cast<int>(q.size()), true);
  for (std::size_t i = 0; i < q.size(); ++i) {
    for (std::size_t j = 0; j <= i; ++j) {
      matrix.SetElem(static_cast<int>(i), static_cast<int>(j), q[i][j]);
    }
  }
  return matrix;
}

// The diagonal of `r` is 0.
Rows CouplingOf(const Rows& r) {
  Rows q(r.size(), Vector(r.size()));
  for (std::size_t i = 0; i < r.size(); ++i) {
    for (std::size_t j = 0; j < r.size(); ++j) q[i][j] = -r[i][j] * r[j][i];
    for (const Vector& row : r) q[i][i] += row[i] * row[i];
  }
  return q;
}

const Rows kThree{{0, 0.75, 0.875}, {0.25, 0, 0.625}, {0.125, 0.375, 0}};

// At the minimum all entries of Qp equal p'Qp.
TEST(Learner, EndsWithinTheStoppingBoundOfTheMinimum) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> pairwise(0.01, 0.99);
  for (std::size_t k = 3; k <= 20; ++k) {
    for (int repeat = 0; repeat < 20; ++repeat) {
      Rows r(k, Vector(k, 0.0));
      for (std::size_t i = 0; i < k; ++i) {
        for (std::size_t j = i + 1; j < k; ++j) {
          r[i][j] = pairwise(random);
          r[j][i] = 1 - r[i][j];
        }
      }
      const Rows q = CouplingOf(r);
      MCSymMatrix matrix = Packed(q);
      Query query;
      SVMMultiProbLearn learner(&query, static_cast<int>(k), matrix);
      ASSERT_TRUE(learner.MultiLearning().IsOK());
      ASSERT_LT(query.asked, 101) << "converges";
      const Vector& p = learner.GetProbabilities();
      ASSERT_EQ(p.size(), k);
      double sum = 0;
      double form = 0;
      Vector product(k);
      for (std::size_t i = 0; i < k; ++i) {
        EXPECT_GE(p[i], 0.0);
        sum += p[i];
        for (std::size_t j = 0; j < k; ++j) product[i] += q[i][j] * p[j];
        form += p[i] * product[i];
      }
      EXPECT_NEAR(sum, 1.0, 1e-14);
      const double tolerance = 0.005 / static_cast<double>(k);
      for (const double entry : product) {
        EXPECT_LT(std::abs(entry - form), tolerance * (1 + 1e-12));
      }
    }
  }
}

// The first sweep's result was computed in exact fractions. Keeping the quadratic form of the start
// of the sweep, or normalising only once in a sweep, changes the second digit.
TEST(Learner, CancelledBeforeASweepKeepsTheOneBefore) {
  const Vector expected[] = {Vector(3, 1.0 / 3),
                             {0.6658266317485471, 0.2248338643610145, 0.10933950389043846}};
  for (const int at : {1, 2}) {
    MCSymMatrix matrix = Packed(CouplingOf(kThree));
    Query query(at);
    SVMMultiProbLearn learner(&query, 3, matrix);
    EXPECT_EQ(learner.MultiLearning(), MCSvm::MCStatus(1, false));
    EXPECT_EQ(query.asked, at);
    for (std::size_t i = 0; i < 3; ++i) {
      EXPECT_DOUBLE_EQ(learner.GetProbabilities()[i], expected[at - 1][i]) << at;
    }
    EXPECT_TRUE(learner.MultiLearning().IsError()) << "cancelled for good";
    EXPECT_EQ(query.asked, at) << "and not asked again";
  }
}

// Asked before every sweep and once at the end.
TEST(Learner, CountsItsSweepsAndStartsAnew) {
  const struct {
    const char* name;
    Rows q;
    int sweeps;
    double first;  // the first probability, where it matters
  } rows[] = {{"a minimum", {{0.25, -0.25}, {-0.25, 0.25}}, 1, 0.5},
              {"in two", CouplingOf(kThree), 2, 0.6759486389326246},
              {"restless", {{1, 5}, {5, 2}}, 100, 0},
              {"a zero diagonal divides", Rows(3, Vector(3)), 1, NAN}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    MCSymMatrix matrix = Packed(row.q);
    Query query;
    SVMMultiProbLearn learner(&query, matrix.GetNRows(), matrix);
    for (const int time : {1, 2}) {
      EXPECT_TRUE(learner.MultiLearning().IsOK());
      EXPECT_EQ(query.asked, time * (row.sweeps + 1));
      const double first = learner.GetProbabilities()[0];
      if (std::isnan(row.first)) {
        EXPECT_TRUE(std::isnan(first));
      } else if (row.first > 0) {
        EXPECT_DOUBLE_EQ(first, row.first);
      }
    }
  }
}

TEST(CancelInfo, OnceSetItIsNotAskedAgain) {
  Query query(1);
  MCSVM_700::SVMCancelInfo info(nullptr);
  EXPECT_FALSE(info.IsCancel());
  info.SetCancel();
  info.SetCancelPtr(&query);
  EXPECT_TRUE(info.IsCancel());
  EXPECT_EQ(query.asked, 0);
}

// Line breaks within the matrix's part.
struct TooShort : std::streambuf {
  TooShort() { setp(room, room + sizeof room); }
  char room[100];
};

TEST(Learner, DisplayGivesTheStreamBack) {
  MCSymMatrix matrix = Packed({{0.25, -0.25}, {-0.25, 0.25}});
  SVMMultiProbLearn learner(nullptr, 2, matrix);
  const std::string head =
      "\tSVMMultiProbLearn Content display begin:\nMulti-class nubmer = 2"
      "\nMCSymMatrix display start\nThe number of rows = 2\nThe number of blocks = 1"
      "\nThe block size = 2\nLower triangular (number of elements = 3, number of rows = 2)"
      "\nrow 0: 0.25\nrow 1: -0.25 0.25\nMCSymMatrix display end\n";
  const std::string tail = "\tSVMMultiProbLearn Content display end.\n";
  std::ostream* before = &MCDisplay_850::GetOutStream();
  std::ostringstream os;
  learner.Display(os);
  learner.MultiLearning();
  learner.Display(os);
  EXPECT_EQ(os.str(), head + tail + head +
                          "Class Index = 0,\tProbabitity = 0.5\n"
                          "Class Index = 1,\tProbabitity = 0.5\n" +
                          tail);
  TooShort too_short;
  std::ostream broken(&too_short);
  broken.exceptions(std::ios::badbit);
  EXPECT_THROW(learner.Display(broken), std::ios_base::failure);
  EXPECT_EQ(&MCDisplay_850::GetOutStream(), before);
}

}  // namespace
