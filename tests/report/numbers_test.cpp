// The numbers behind the pictures of a report.
#include <cmath>
#include <limits>
#include <set>

#include <gmock/gmock.h>

#include "app/report/axes.h"
#include "app/report/reliability_picture.h"
#include "tools/report/case_draw.h"
#include "tools/report/confusion.h"
#include "tools/report/figure_sum.h"
#include "tools/report/histogram.h"
#include "tools/report/regression_figures.h"

namespace svmscore::tools {
namespace {

using testing::ElementsAre;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(ReportNumbers, TicksAreMultiplesOfOneTwoOrFive) {
  EXPECT_EQ(NiceStep(0.3), 0.5);
  EXPECT_EQ(NiceStep(20.0), 20.0);
  EXPECT_EQ(NiceStep(51.0), 100.0);
  EXPECT_EQ(NiceStep(1e-310), NiceStep(1e-310));
  EXPECT_THAT(NiceTicks(-1.3, 1.4, 6), ElementsAre(-1.0, -0.5, 0.0, 0.5, 1.0));
  EXPECT_THAT(app::TickTexts(NiceTicks(-1.3, 1.4, 6)),
              ElementsAre("\u22121.0", "\u22120.5", "0", "0.5", "1.0"));
  EXPECT_THAT(app::TickTexts(NiceTicks(0, 30, 3)), ElementsAre("0", "10", "20", "30"));
}

TEST(ReportNumbers, TicksAreFewWhateverTheRange) {
  const double numbers[] = {0.0,      1.0,      -1.0,      1e-320,    1e300,      -1e300,      1e15,
                            1e15 + 1, 1.79e308, -1.79e308, kInfinity, -kInfinity, std::nan("")};
  for (const double low : numbers) {
    for (const double high : numbers) {
      const std::vector<double> ticks = NiceTicks(low, high, 5);
      EXPECT_GE(ticks.size(), 1U) << low << " " << high;
      EXPECT_LE(ticks.size(), 12U) << low << " " << high;
      EXPECT_EQ(app::TickTexts(ticks).size(), ticks.size());
      EXPECT_TRUE(std::isfinite(app::Scale(low, high, 0, 100).Within(0.5)) || !(low < high));
    }
  }
}

TEST(ReportNumbers, HistogramsCountEveryFiniteNumberOnce) {
  const std::vector<std::vector<double>> sets = {{1, 2, 3, 4, 5},
                                                 {7, 7, 7},
                                                 {-1e300, 1e300},
                                                 {1e15, 1e15 + 2},
                                                 {-1.7e308, 1.7e308},
                                                 {0.1, 0.2, 1e-320},
                                                 {kInfinity, 2, std::nan("")},
                                                 {1e-310, 2e-310, 3e-310}};
  for (const auto& numbers : sets) {
    for (const double edge : {0.0, 3.0, std::nan("")}) {
      const Histogram histogram = HistogramOf(numbers, {}, 1, edge, 24);
      std::size_t counted = 0;
      for (const std::size_t count : histogram.counts.at(0)) counted += count;
      std::size_t finite = 0;
      for (const double number : numbers) finite += std::isfinite(number) ? 1 : 0;
      EXPECT_EQ(counted, finite);
      EXPECT_LE(histogram.Bins(), 96U);
    }
  }
  EXPECT_EQ(HistogramOf({}, {}, 1, 0.0, 24).Bins(), 0U);
}

// A bar that held cases of both sides of a threshold would tell nothing of either.
TEST(ReportNumbers, TheThresholdIsAnEdge) {
  const Histogram histogram = HistogramOf({-0.9, -0.1, 0.33, 0.2, 1.7}, {}, 1, 0.25, 24);
  const double edges = (0.25 - histogram.low) / histogram.width;
  EXPECT_NEAR(edges, std::round(edges), 1e-9);
}

std::vector<std::uint64_t> Drawn(std::uint64_t seed, std::size_t rows, std::size_t most,
                                 std::size_t bytes) {
  CaseDraw draw(seed, most, bytes);
  for (std::size_t i = 0; i < rows; ++i) {
    const std::string cell = std::to_string(i);
    draw.Add({cell, "x", ""});
  }
  EXPECT_EQ(draw.Rows(), rows);
  std::vector<std::uint64_t> numbers;
  for (const DrawnRow& row : draw.Take()) {
    EXPECT_EQ(row.Cell(0), std::to_string(row.number - 1));
    EXPECT_EQ(row.Cell(1), "x");
    EXPECT_EQ(row.Cell(2), "");
    numbers.push_back(row.number);
  }
  return numbers;
}

TEST(ReportNumbers, DrawsAreBoundedOrderedAndRepeatable) {
  const auto some = Drawn(1, 10000, 100, 1U << 20U);
  EXPECT_EQ(some.size(), 100U);
  EXPECT_TRUE(std::is_sorted(some.begin(), some.end()));
  EXPECT_EQ(some, Drawn(1, 10000, 100, 1U << 20U));
  EXPECT_NE(some, Drawn(2, 10000, 100, 1U << 20U));
  EXPECT_EQ(Drawn(1, 50, 100, 1U << 20U).size(), 50U);
  EXPECT_LE(Drawn(1, 10000, 100, 2000).size(), 40U);
  EXPECT_EQ(Drawn(1, 10, 5, 0).size(), 1U);
  // Every tenth of the table gives about a tenth of the draw.
  std::array<int, 10> tenths{};
  for (const std::uint64_t number : Drawn(1, 10000, 2000, 1U << 20U)) ++tenths[(number - 1) / 1000];
  for (const int count : tenths) EXPECT_NEAR(count, 200, 60);
}

TEST(ReportNumbers, ConfusionIsBoundedAndLosesNoCase) {
  std::vector<int> actual;
  std::vector<int> predicted;
  for (int c = 0; c < 1000; ++c) {
    actual.push_back(c % 40 == 0 ? -1 : c % 37);
    predicted.push_back(c % 36);
  }
  const Confusion confusion = ConfusionOf(predicted, actual, 12);
  EXPECT_EQ(confusion.categories.size(), 11U);
  EXPECT_EQ(confusion.others, 26U);
  std::size_t sum = 0;
  for (const std::size_t cell : confusion.cells) sum += cell;
  EXPECT_EQ(sum, 975U);
  const Confusion small = ConfusionOf({0, 1, 1}, {0, 0, 1}, 12);
  EXPECT_EQ(small.others, 0U);
  EXPECT_THAT(small.cells, ElementsAre(1, 1, 0, 1));
}

// The figures of all cases at once are those that calibrate tells.
TEST(ReportNumbers, FiguresOfBatchesAreThoseOfAll) {
  std::vector<int> actual;
  std::vector<int> predicted;
  std::vector<double> percents;
  FigureSum sum(3);
  for (int c = 0; c < 300; ++c) {
    const double p = (c % 11) / 20.0;
    const std::vector<double> of = {p, 0.5, 0.5 - p};
    actual.push_back(c % 3);
    predicted.push_back(c % 7 == 0 ? 1 : c % 3);
    percents.insert(percents.end(), of.begin(), of.end());
    sum.Add(actual.back(), predicted.back(), of);
    if (c % 64 == 0) sum.AddBatch();
  }
  sum.AddBatch();
  const ClassFigures all = FiguresOf(actual, predicted, percents, 3);
  const ClassFigures total = sum.Total();
  EXPECT_EQ(total.cases, all.cases);
  EXPECT_NEAR(total.accuracy, all.accuracy, 1e-12);
  EXPECT_NEAR(total.probabilities->brier, all.probabilities->brier, 1e-12);
  EXPECT_NEAR(total.probabilities->log_loss, all.probabilities->log_loss, 1e-12);
  EXPECT_NEAR(total.probabilities->ece, all.probabilities->ece, 1e-12);
  for (std::size_t t = 0; t < 10; ++t) {
    EXPECT_EQ(total.probabilities->tenths[t].cases, all.probabilities->tenths[t].cases);
  }
}

TEST(ReportNumbers, RegressionFiguresLeaveOutUnknownLabels) {
  ScoredCases cases;
  cases.classification = false;
  cases.numbers = {1, 2, 3, 4};
  cases.values = {1, 2, 3, 100};
  cases.observed = {2, 2, 5, std::nan("")};
  cases.intervals = {{0, 2}, {1, 3}, {0, 4}, {0, 1}};
  const RegressionFigures figures = FiguresOf(cases);
  EXPECT_EQ(figures.cases, 3U);
  EXPECT_DOUBLE_EQ(figures.mean_absolute, 1.0);
  EXPECT_DOUBLE_EQ(figures.root_mean_square, std::sqrt(5.0 / 3.0));
  EXPECT_DOUBLE_EQ(*figures.r_squared, 1.0 - 5.0 / 6.0);
  EXPECT_DOUBLE_EQ(figures.intervals->coverage, 2.0 / 3.0);
}

// Against the published example of 15 in 50: 0.191 to 0.438.
TEST(ReportNumbers, LikelySharesAreWilsons) {
  const app::ShareRange range = app::LikelyShares(0.3, 50);
  EXPECT_NEAR(range.low, 0.191, 5e-4);
  EXPECT_NEAR(range.high, 0.438, 5e-4);
  EXPECT_EQ(app::LikelyShares(1.0, 3).high, 1.0);
  EXPECT_LT(app::LikelyShares(1.0, 3).low, 0.5);
}

}  // namespace
}  // namespace svmscore::tools
