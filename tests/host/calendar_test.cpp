#include "host/calendar.h"

#include <gtest/gtest.h>

#include "host/field_text.h"

namespace svmscore {
namespace {

TEST(Calendar, RefusesDatesThatDoNotExist) {
  for (const char* bad : {"2023-02-29", "2024-13-01", "2024-00-10", "24-01-01", "2024-1-01",
                          "2024-01-01x", "", "2024-01-01T00:00:00"}) {
    EXPECT_FALSE(calendar::ParseDate(bad)) << bad;
  }
  EXPECT_FALSE(calendar::ParseTime("24:00:00"));
  EXPECT_FALSE(calendar::ParseTime("12:60:00"));
  EXPECT_EQ(calendar::ParseDateTime("1970-01-02T00:00:01+05:00"), 86401.0);
}

TEST(Calendar, WritesWhatItReads) {
  for (const char* text : {"2024-02-29", "1959-12-30", "0000-01-01", "-0001-12-31", "9999-12-31"}) {
    EXPECT_EQ(calendar::FormatDate(*calendar::ParseDate(text)), text);
  }
  EXPECT_EQ(calendar::FormatDateTime(*calendar::ParseDateTime("1979-12-31T23:59:01.5")),
            "1979-12-31T23:59:01.5");
  EXPECT_EQ(calendar::FormatDate(1e300), "1e+300");
}

TEST(FieldText, ReadsEachTypeAsItsNumber) {
  const struct {
    const char* type;
    const char* text;
    std::optional<double> number;
  } cases[] = {
      {"dateDaysSince[0]", "1960-01-01", 715875.0},
      {"dateDaysSince[1960]", "2003-04-01", 15796.0},
      {"dateDaysSince[1960]", "15796", 15796.0},
      {"dateDaysSince[1980]", "1979-12-31", -1.0},
      {"dateTimeSecondsSince[1960]", "1960-01-01T00:01:00", 60.0},
      {"timeSeconds", "05:23:30", 19410.0},
      {"timeSeconds", "90000", 90000.0},
      {"timeSeconds", "-1", std::nullopt},
      {"boolean", "true", 1.0},
      {"boolean", "yes", std::nullopt},
      {"float", "0.1", static_cast<double>(0.1F)},
      {"integer", "3.0", 3.0},
      {"integer", "3.5", std::nullopt},
  };
  for (const auto& [type, text, number] : cases) {
    EXPECT_EQ(NumberFromFieldText(text, *ParseDataType(type)), number) << type << ' ' << text;
  }
  for (const char* type : {"dateDaysSince[1961]", "dateDaysSince", "double[1960]"}) {
    EXPECT_FALSE(ParseDataType(type)) << type;
  }
}

}  // namespace
}  // namespace svmscore
