#include "common/display.h"

#include <gtest/gtest.h>

#include <ctime>
#include <functional>
#include <limits>
#include <sstream>

#include "common/missing_value.h"

namespace {

using namespace MCDisplay_850;  // NOLINT: what is tested

const double kMiss = MCCommon_850::MCMV::Missing();

// The text that `write` writes to the diagnostic stream.
std::string Shown(const std::function<void()>& write) {
  std::ostringstream os;
  const ScopedOutStream redirected(os);
  write();
  return os.str();
}

TEST(MissingValue, IsTheLowestFiniteDoubleAndNotNaN) {
  using MCCommon_850::MCMV;
  EXPECT_TRUE(MCMV::IsMissing(-1.7976931348623157e+308));
  EXPECT_FALSE(MCMV::IsMissing(std::numeric_limits<double>::quiet_NaN()));
}

std::string Today() {
  const std::time_t now = std::time(nullptr);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%d-%H-", std::localtime(&now));
  return text;
}

TEST(Display, TimeStampIsTheLocalTime) {
  const std::string before = Today();
  const std::string shown = Shown([] { DisplayTimeStamp("t"); });
  EXPECT_EQ(shown.size(), std::string("\nt: 2024-01-05-09-03-07").size());
  EXPECT_TRUE(shown.starts_with("\nt: " + before) || shown.starts_with("\nt: " + Today())) << shown;
}

// One of each layout; all others are combinations of these.
TEST(Display, LinesOfEachKind) {
  std::vector<double> numbers(11, 1);
  numbers[10] = kMiss;
  const struct {
    std::function<void()> write;
    const char* expected;
  } rows[] = {
      {[] { DisplayText(2, "x"); }, "\n\nx"},
      {[] { DisplayText(-1, std::string("x")); }, "x"},
      {[] { DisplayText(2, static_cast<const char*>(nullptr)); }, ""},
      {[] { DisplayL("a", 5000000000); }, "\na = 5000000000"},
      {[] { DisplayD("a", 1e-7); }, "\na = 1e-07"},
      {[] { DisplayD("a", kMiss); }, "\na = miss"},
      {[] { DisplayDF("a", 0.1); }, "\na = 0.10000000000000001"},
      {[] { DisplayIV("v", std::vector<int>(26, 1)); },
       "\nv (size = 26)\n 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1\n 1"},
      {[&] { DisplayDV("v", numbers, false); }, "\nv (size = 11)\n 1 1 1 1 1 1 1 1 1 1\n miss"},
      {[] {
         DisplayDV("v", {0.1, kMiss}, true);
       },
       "\nv (size = 2)\n = 0.10000000000000001\nmiss"},
      {[] { DisplayDA("v", nullptr, 2, true); }, "\nv (size = 0)"},
      {[] {
         DisplayVPD("p", {{0.5, kMiss}});
       },
       "\np (size = 1)\n(0.5,miss) "},
      // More rows than there are elements for.
      {[] {
         DisplayDVTRS({1, 2}, 5);
       },
       "\n 1\n 2"},
      {[] {
         DisplaySVV("n", {{"a"}, {}});
       },
       "\nn (size = 2)\nvec[0] a\nvec[1] <none>"},
      {[] { DisplayIIM("m", {}); }, "\nm (map size = 0) <empty>"},
      {[] {
         DisplaySLDM("m", {{{"a", "b"}, 1.5}});
       },
       "\nm (map size = 1)\nMap's StringList: a b\nMap's double = 1.5"},
  };
  for (const auto& [write, expected] : rows) EXPECT_EQ(Shown(write), expected);
}

}  // namespace
