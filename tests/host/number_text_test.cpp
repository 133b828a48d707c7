#include "host/text/number_text.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace svmscore {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// That the locale has no influence is tested by running this in one with a decimal comma.
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

// With an exponent the library reads all of it.
TEST(ParseNumber, GivesPlainDecimalsOfAnyLengthTheirNearestDouble) {
  std::mt19937 random(3);
  for (int i = 0; i < 40000; ++i) {
    std::string text(1 + random() % 24, '0');
    for (char& c : text) c = static_cast<char>('0' + random() % 10);
    if (random() % 4 != 0) text[random() % text.size()] = '.';
    if (text == ".") continue;
    if (random() % 2 == 0) text.insert(0, "-");
    const auto bits = [](std::string_view number) {
      return std::bit_cast<std::uint64_t>(ParseNumber(number).value());
    };
    EXPECT_EQ(bits(text), bits(text + "e0")) << text;
    text[random() % text.size()] = "/:,;-.\xFF"[random() % 7];
    EXPECT_EQ(ParseNumber(text), ParseNumber(text + "e0")) << text;
  }
  EXPECT_TRUE(std::signbit(*ParseNumber("-0.00")));
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

TEST(NumberPrefix, FollowsStrtodAndIsCutTowardZero) {
  for (const auto& [text, number] :
       {std::pair("12abc", 12.0), std::pair("abc", 0.0), std::pair("", 0.0),
        std::pair("0x1A", 26.0), std::pair("  +1.5", 1.5), std::pair("1e999", kInfinity),
        std::pair("1,5", 1.0)}) {
    EXPECT_EQ(NumberPrefix(text), number) << text;
  }
  EXPECT_TRUE(std::signbit(NumberPrefix("-0")));
  EXPECT_EQ(TruncateToInt(2.9), 2);
  EXPECT_EQ(TruncateToInt(-1.5), -1);
  EXPECT_EQ(TruncateToInt(1e300), std::numeric_limits<int>::max());
  EXPECT_EQ(TruncateToInt(-kInfinity), std::numeric_limits<int>::min());
  EXPECT_EQ(TruncateToInt(std::nan("")), 0);
}

TEST(ReadDecimal, HasTheBitsOfTheStandardLibraryWhateverFollows) {
  std::mt19937_64 random(11);
  const auto digits = [&random](std::string& text, std::size_t most) {
    for (std::size_t left = random() % (most + 1); left > 0; --left) {
      text += static_cast<char>('0' + random() % 10);
    }
  };
  for (int i = 0; i < 100000; ++i) {
    std::string number = random() % 2 == 0 ? "-" : "";
    digits(number, random() % 4 == 0 ? 20 : 2);
    if (random() % 4 != 0) digits(number += '.', random() % 4 == 0 ? 20 : 8);
    if (random() % 8 == 0) number += "e-" + std::to_string(random() % 30);
    const std::string text = number + (random() % 2 == 0 ? " 0.123456789012345" : "/:;x");
    const char* const begin = text.data();
    double expected = 0.0;
    const auto known = std::from_chars(begin, begin + text.size(), expected);
    double value = 0.0;
    const char* end = ReadDecimal(begin, begin + text.size(), value);
    EXPECT_EQ(end, known.ec == std::errc() ? known.ptr : nullptr) << text;
    EXPECT_EQ(std::bit_cast<std::uint64_t>(value), std::bit_cast<std::uint64_t>(expected)) << text;
  }
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

}  // namespace
}  // namespace svmscore
