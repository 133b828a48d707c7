// Draws from a background.
#include "tools/explain/background.h"

#include <algorithm>
#include <set>

#include <gmock/gmock.h>

namespace svmscore::tools {
namespace {

using testing::ElementsAre;

// Rows (r, -r) of which some are kept; the numbers r of these.
std::vector<double> Drawn(std::size_t rows, std::size_t most, std::uint64_t seed) {
  BackgroundRows background(2, most, seed);
  for (std::size_t r = 0; r < rows; ++r) {
    const double number = static_cast<double>(r);
    const double row[] = {number, 99.0, -number};
    background.Add(row, 2);
  }
  const Background taken = background.Take();
  EXPECT_EQ(taken.rows_seen, rows);
  EXPECT_EQ(taken.entries.size(), 2 * taken.count);
  for (std::size_t r = 0; r < taken.count; ++r) {
    EXPECT_EQ(taken.entries[taken.count + r], -taken.entries[r]);
  }
  return {taken.entries.begin(), taken.entries.begin() + static_cast<long>(taken.count)};
}

TEST(Background, KeepsAllRowsOrDrawsTheSameEverywhere) {
  EXPECT_THAT(Drawn(3, 0, 1), ElementsAre(0, 1, 2));
  EXPECT_THAT(Drawn(3, 3, 1), ElementsAre(0, 1, 2));
  EXPECT_THAT(Drawn(3, 9, 1), ElementsAre(0, 1, 2));
  EXPECT_THAT(Drawn(1000, 5, 1), ElementsAre(15, 120, 163, 665, 953));
  EXPECT_NE(Drawn(1000, 5, 1), Drawn(1000, 5, 2));
}

// Each row as often as another, and none twice.
TEST(Background, DrawsRowsEvenlyAndWithoutReplacement) {
  constexpr std::size_t kRows = 20;
  constexpr std::size_t kDraws = 4000;
  std::vector<int> often(kRows);
  for (std::size_t seed = 0; seed < kDraws; ++seed) {
    const std::vector<double> drawn = Drawn(kRows, 5, seed);
    EXPECT_EQ(std::set<double>(drawn.begin(), drawn.end()).size(), 5U);
    EXPECT_TRUE(std::is_sorted(drawn.begin(), drawn.end()));
    for (const double number : drawn) ++often[static_cast<std::size_t>(number)];
  }
  // A quarter of 4000, within five standard deviations.
  for (const int times : often) EXPECT_NEAR(times, 1000, 137);
}

}  // namespace
}  // namespace svmscore::tools
