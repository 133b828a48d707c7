#include "common/display.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <sstream>

#include "common/missing_value.h"

namespace {

using namespace MCDisplay_850;  // NOLINT: what is tested

const double kMiss = MCCommon_850::MCMV::Missing();

// What `write` writes to the diagnostic stream.
std::string Shown(const std::function<void()>& write) {
  std::ostringstream os;
  const ScopedOutStream redirected(os);
  write();
  return os.str();
}

TEST(MissingValue, IsTheLowestFiniteDoubleAndNotNaN) {
  using MCCommon_850::MCMV;
  EXPECT_TRUE(MCMV::IsMissing(MCMV::Missing()));
  EXPECT_TRUE(MCMV::IsMissing(-1.7976931348623157e+308));
  EXPECT_FALSE(MCMV::IsMissing(1.7976931348623157e+308));
  EXPECT_FALSE(MCMV::IsMissing(std::numeric_limits<double>::quiet_NaN()));
}

TEST(Display, TextAfterSoManyLineEnds) {
  EXPECT_EQ(Shown([] { DisplayText(0, "x"); }), "x");
  EXPECT_EQ(Shown([] { DisplayText(-1, std::string("x")); }), "x");
  EXPECT_EQ(Shown([] { DisplayText(2, "x"); }), "\n\nx");
  EXPECT_EQ(Shown([] { DisplayText(2, static_cast<const char*>(nullptr)); }), "");
}

TEST(Display, SingleValues) {
  EXPECT_EQ(Shown([] { DisplayI("a", -5); }), "\na = -5");
  EXPECT_EQ(Shown([] { DisplayL("a", 5000000000); }), "\na = 5000000000");
  EXPECT_EQ(Shown([] { DisplayD("a", 0.1234567); }), "\na = 0.123457");
  EXPECT_EQ(Shown([] { DisplayD("a", 1e-7); }), "\na = 1e-07");
  EXPECT_EQ(Shown([] { DisplayD("a", kMiss); }), "\na = miss");
  EXPECT_EQ(Shown([] { DisplayDF("a", 0.1); }), "\na = 0.10000000000000001");
  EXPECT_EQ(Shown([] { DisplayDF("a", kMiss); }), "\na = miss");
  EXPECT_EQ(Shown([] { DisplayB("a ", true); }), "\na true");
  EXPECT_EQ(Shown([] { DisplayB("a ", false); }), "\na false");
  EXPECT_EQ(Shown([] { DisplayS("a ", "text"); }), "\na text");
  EXPECT_THAT(Shown([] { DisplayTimeStamp("t"); }),
              testing::MatchesRegex("\nt: [0-9]{4}(-[0-9][0-9]){5}"));
}

TEST(Display, ListsBreakTheirLines) {
  const std::string ones = " 1 1 1 1 1 1 1 1 1 1";
  const std::string twenty_five = ones + ones + " 1 1 1 1 1";
  EXPECT_EQ(Shown([] { DisplayIV("v", std::vector<int>(26, 1)); }),
            "\nv (size = 26)\n" + twenty_five + "\n 1");
  EXPECT_EQ(Shown([] { DisplayUV("v", std::vector<unsigned>(25, 1)); }),
            "\nv (size = 25)\n" + twenty_five);
  EXPECT_EQ(Shown([] { DisplayIV("v", {}); }), "\nv (size = 0)");
  EXPECT_EQ(Shown([] { DisplayBV("v", {true, false}); }), "\nv (size = 2)\n 1 0");
  EXPECT_EQ(Shown([] { DisplaySV("v", {"a b", "c"}); }), "\nv (size = 2)\n a b\n c");
  std::vector<double> numbers(11, 1);
  numbers[10] = kMiss;
  EXPECT_EQ(Shown([&] { DisplayDV("v", numbers, false); }), "\nv (size = 11)\n" + ones + "\n miss");
  EXPECT_EQ(Shown([] {
              DisplayDV("v", {0.1, kMiss}, true);
            }),
            "\nv (size = 2)\n = 0.10000000000000001\nmiss");
  EXPECT_EQ(Shown([&] { DisplayDA("v", numbers.data(), 2, false); }), "\nv (size = 2)\n 1 1");
  EXPECT_EQ(Shown([] { DisplayDA("v", nullptr, 2, true); }), "\nv (size = 0)");
  EXPECT_EQ(Shown([&] { DisplayDAS(numbers.data(), 2); }), "\n 1 1");
}

TEST(Display, PairsTrianglesAndNestedLists) {
  EXPECT_EQ(Shown([] { DisplayVPII("p", {{1, 2}, {3, 4}}); }), "\np (size = 2)\n(1,2) (3,4) ");
  EXPECT_EQ(Shown([] { DisplayVPDI("p", {{0.5, 2}}); }), "\np (size = 1)\n(0.5,2) ");
  EXPECT_EQ(Shown([] { DisplayVPD("p", {{0.5, kMiss}}); }), "\np (size = 1)\n(0.5,miss) ");
  EXPECT_EQ(Shown([] {
              DisplayDVTR("t", {1, 2, 3}, 2);
            }),
            "\nt (number of elements = 3, number of rows = 2)\nrow 0: 1\nrow 1: 2 3");
  EXPECT_EQ(Shown([] { DisplayDVTRS({1, 2, 3}, 2); }), "\n 1\n 2 3");
  // More rows claimed than elements there.
  EXPECT_EQ(Shown([] { DisplayDVTRS({1, 2}, 5); }), "\n 1\n 2");
  EXPECT_EQ(Shown([] {
              DisplayDVV("n", {{1, 2}, {}});
            }),
            "\nn (size = 2)\nvec[0] 1 2\nvec[1] <none>");
  EXPECT_EQ(Shown([] { DisplaySVV("n", {{"a"}, {}}); }), "\nn (size = 2)\nvec[0] a\nvec[1] <none>");
  EXPECT_EQ(Shown([] {
              DisplayBVV("b", {{true, false}, {false, false}});
            }),
            "\nb ( number of rows = 2, number of columns = 2)\n 1 0\n 0 0");
}

TEST(Display, Maps) {
  EXPECT_EQ(Shown([] { DisplayIIM("m", {{1, 2}, {3, 4}}); }), "\nm (map size = 2)\n(1,2) (3,4) ");
  EXPECT_EQ(Shown([] { DisplayIIM("m", {}); }), "\nm (map size = 0) <empty>");
  EXPECT_EQ(Shown([] { DisplayDDM("m", {{0.5, 2}}); }), "\nm (map size = 1)\n(0.5,2) ");
  EXPECT_EQ(Shown([] { DisplayVIM("m", {{1, 2}}); }), "\nm\n(1,2) ");
  EXPECT_EQ(Shown([] { DisplayVIM("m", {}); }), "\nm <empty>");
  EXPECT_EQ(Shown([] {
              DisplayIntVecIntMap("m", {{{1, 2}, 3}});
            }),
            "\nm (map size = 1)\nMap key (size = 2)\n 1 2\nMap value = 3");
  EXPECT_EQ(Shown([] {
              DisplayIntVecDVecMap("m", {{{1}, {0.5}}});
            }),
            "\nm (map size = 1)\nMap key (size = 1)\n 1\nMap value (size = 1)\n 0.5");
  EXPECT_EQ(Shown([] {
              DisplaySLDM("m", {{{"a", "b"}, 1.5}});
            }),
            "\nm (map size = 1)\nMap's StringList: a b\nMap's double = 1.5");
}

TEST(Display, TheStreamComesBackWhenAWriteThrows) {
  std::ostream& before = GetOutStream();
  std::ostream broken(nullptr);
  EXPECT_THROW(
      {
        const ScopedOutStream redirected(broken);
        broken.exceptions(std::ios::badbit);
        DisplayI("a", 1);
      },
      std::ios_base::failure);
  EXPECT_EQ(&GetOutStream(), &before);
}

}  // namespace
