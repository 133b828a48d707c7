#include "host/number_text.h"

#include <bit>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>

#include <gtest/gtest.h>

namespace svmscore {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(ParseNumber, TakesTheXmlGrammarAndNothingElse) {
  EXPECT_EQ(ParseNumber(" 2.5e-1\n"), 0.25);
  EXPECT_EQ(ParseNumber("+7."), 7.0);
  EXPECT_EQ(ParseNumber("-.5"), -0.5);
  EXPECT_EQ(ParseNumber("INF"), kInfinity);
  EXPECT_EQ(ParseNumber("-INF"), -kInfinity);
  EXPECT_TRUE(std::isnan(ParseNumber("NaN").value()));
  EXPECT_EQ(ParseNumber("1e999"), kInfinity);
  for (const char* bad : {"", " ", "1,5", "0x10", "inf", "nan", "infinity", "1 2", "12abc", "+-3",
                          "+", "-", ".", "1e", "--1"}) {
    EXPECT_FALSE(ParseNumber(bad)) << bad;
  }
}

TEST(ParseInteger, TakesWholeNumbersOfSixtyFourBits) {
  EXPECT_EQ(ParseInteger("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(ParseInteger("9007199254740993"), 9007199254740993);
  EXPECT_EQ(ParseInteger("3e0"), 3);
  EXPECT_EQ(ParseInteger("+03.0"), 3);
  for (const char* bad : {"2.5", "1e30", "9223372036854775808", "+-3", "x", ""}) {
    EXPECT_FALSE(ParseInteger(bad)) << bad;
  }
}

TEST(NumberPrefix, FollowsStrtod) {
  EXPECT_EQ(NumberPrefix("12abc"), 12.0);
  EXPECT_EQ(NumberPrefix("abc"), 0.0);
  EXPECT_EQ(NumberPrefix(""), 0.0);
  EXPECT_EQ(NumberPrefix("0x1A"), 26.0);
  EXPECT_EQ(NumberPrefix("  +1.5"), 1.5);
  EXPECT_EQ(NumberPrefix("1e999"), kInfinity);
  EXPECT_EQ(NumberPrefix("1,5"), 1.0);
  EXPECT_TRUE(std::signbit(NumberPrefix("-0")));
}

TEST(TruncateToInt, CutsTowardZeroAndSaturates) {
  EXPECT_EQ(TruncateToInt(2.9), 2);
  EXPECT_EQ(TruncateToInt(-1.5), -1);
  EXPECT_EQ(TruncateToInt(1e300), std::numeric_limits<int>::max());
  EXPECT_EQ(TruncateToInt(-kInfinity), std::numeric_limits<int>::min());
  EXPECT_EQ(TruncateToInt(std::nan("")), 0);
}

TEST(FormatNumber, ReadsBackToTheSameBits) {
  EXPECT_EQ(FormatNumber(3.0), "3");
  EXPECT_EQ(FormatNumber(0.1), "0.1");
  EXPECT_EQ(FormatNumber(-kInfinity), "-INF");
  std::mt19937_64 random(7);
  for (int i = 0; i < 20000; ++i) {
    const double value = std::bit_cast<double>(random());
    if (!std::isfinite(value)) continue;
    const std::string text = FormatNumber(value);
    EXPECT_EQ(ParseNumber(text), value) << text;
    EXPECT_EQ(NumberPrefix(text.c_str()), value) << text;
  }
}

// The embedding program's locale must not reach any number. The locale is made for the test, so
// that it is there on every machine.
TEST(Locale, ADecimalCommaChangesNothing) {
  const std::string folder = testing::TempDir() + "svmscore_locales";
  const std::string make = "mkdir -p " + folder + " && localedef -i de_DE -f UTF-8 --no-archive " +
                           folder + "/de_DE.UTF-8 > /dev/null 2>&1";
  ASSERT_EQ(std::system(make.c_str()), 0) << "localedef and the package locales are needed";
  ASSERT_EQ(setenv("LOCPATH", folder.c_str(), 1), 0);
  const std::string before = std::setlocale(LC_ALL, nullptr);
  ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
  ASSERT_STREQ(std::localeconv()->decimal_point, ",");
  EXPECT_EQ(NumberPrefix(" 1.5"), 1.5);
  EXPECT_EQ(NumberPrefix(" 1,5"), 1.0);
  EXPECT_EQ(ParseNumber("1.5"), 1.5);
  EXPECT_EQ(FormatNumber(1.5), "1.5");
  std::setlocale(LC_ALL, before.c_str());
}

}  // namespace
}  // namespace svmscore
