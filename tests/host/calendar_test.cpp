#include "host/text/calendar.h"

#include <gtest/gtest.h>

#include "host/text/field_text.h"

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
  const FieldType since_midnight = *ParseDataType("timeSeconds");
  EXPECT_EQ(NumberFromFieldText("90000", since_midnight), 90000.0);
  EXPECT_FALSE(NumberFromFieldText("-1", since_midnight));
  for (const char* type : {"dateDaysSince[1961]", "dateDaysSince", "double[1960]"}) {
    EXPECT_FALSE(ParseDataType(type)) << type;
  }
}

TEST(Calendar, WritesWhatItReads) {
  for (const char* text : {"2024-02-29", "1959-12-30", "0000-01-01", "-0001-12-31", "9999-12-31"}) {
    EXPECT_EQ(calendar::FormatDate(*calendar::ParseDate(text)), text);
  }
  EXPECT_EQ(calendar::FormatDateTime(*calendar::ParseDateTime("1979-12-31T23:59:01.5")),
            "1979-12-31T23:59:01.5");
  for (const char* text : {"00:00:00.00001", "12:00:00", "00:00:00.0000015"}) {
    EXPECT_EQ(calendar::FormatTime(*calendar::ParseTime(text)), text);
  }
  EXPECT_EQ(calendar::FormatDate(1e300), "1e+300");
}

}  // namespace
}  // namespace svmscore
