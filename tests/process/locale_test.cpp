// Shows that a run of the tests that is meant to have a decimal comma has one.
#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <sstream>
#include <string>

namespace {

TEST(DecimalPoint, IsTheOneThatTheRunIsMeantToHave) {
  const char* meant = std::getenv("SVMSCORE_TEST_DECIMAL_POINT");
  const std::string point = meant == nullptr ? "." : meant;
  EXPECT_EQ(std::localeconv()->decimal_point, point);
  std::ostringstream half;
  half << 0.5;
  EXPECT_EQ(half.str(), "0" + point + "5");
}

}  // namespace
