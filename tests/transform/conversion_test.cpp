// The types of derived fields: what a value becomes in each of them.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/transform/call_text.h"
#include "tests/transform/fixture.h"

namespace svmscore::transform {
namespace {

std::string As(const std::string& data_type, const std::string& call) {
  // Through a field of type string where the result is a date, whose number would say little.
  const bool readable = data_type.starts_with("date") || data_type == "time" ||
                        data_type == "timeSeconds" || data_type == "boolean";
  // A constant by itself would be converted, or refused, at load.
  std::string fields = DerivedField("typed", data_type, CallToXml("if(true, " + call + ")"));
  fields += DerivedField("text", "string", "<FieldRef field=\"typed\"/>");
  return Loaded(Document("", fields)).Derive(readable ? "text" : "typed", {});
}

struct Conversion {
  std::string call;
  std::string type;
  std::string expected;
};

void CheckAll(const std::vector<Conversion>& conversions) {
  for (const Conversion& conversion : conversions) {
    EXPECT_EQ(As(conversion.type, conversion.call), conversion.expected)
        << conversion.call << " as " << conversion.type;
  }
}

TEST(Conversion, ReadsTexts) {
  CheckAll({{"'3.0'", "integer", "3"},
            {"'3e0'", "integer", "3"},
            {"' 12 '", "integer", "12"},
            {"'3.5'", "integer", "invalid"},
            {"'true'", "integer", "1"},
            {"'1,5'", "double", "invalid"},
            {"'0x10'", "double", "invalid"},
            {"'+1.5E1'", "double", "15"},
            {"'0.1'", "float", "0.10000000149011612"},
            {"'TRUE'", "boolean", "true"},
            {"'0'", "boolean", "false"},
            {"'yes'", "boolean", "invalid"},
            {"'2023-02-29'", "date", "invalid"},
            {"'2024-02-29'", "date", "2024-02-29"},
            {"'2003-04-01'", "dateDaysSince[1960]", "15796"},
            {"'17'", "dateDaysSince[1960]", "17"},
            {"'1960-01-01T00:01:00'", "dateTimeSecondsSince[1960]", "60"},
            {"'00:01:00'", "timeSeconds", "60"}});
}

TEST(Conversion, ReadsNumbers) {
  CheckAll({{"2.5", "integer", "3"},
            {"-2.5", "integer", "-2"},
            {"1e19", "integer", "invalid"},
            {"2.0", "string", "2"},
            {"0.1", "string", "0.1"},
            {"float'0.1'", "string", "0.1"},
            {"1e300", "string", "1e+300"},
            {"1", "boolean", "true"},
            {"2", "boolean", "invalid"},
            {"true", "double", "1"},
            {"false", "string", "false"},
            {"5", "date", "invalid"},
            {"5", "dateDaysSince[1980]", "5"},
            {"true", "dateDaysSince[1980]", "invalid"}});
}

TEST(Conversion, MovesBetweenDates) {
  CheckAll({{"date'2024-02-29'", "double", "invalid"},
            {"date'2024-02-29'", "string", "2024-02-29"},
            {"date'1960-01-02'", "dateDaysSince[1960]", "1"},
            {"date'1960-01-02'", "dateTimeSecondsSince[1960]", "86400"},
            {"date'1960-01-02'", "dateTime", "1960-01-02T00:00:00"},
            {"date'1960-01-02'", "time", "invalid"},
            {"dateTime'1969-12-31T23:00:01'", "date", "1969-12-31"},
            {"dateTime'1969-12-31T23:00:01'", "time", "23:00:01"},
            {"dateTime'1969-12-31T23:00:01'", "timeSeconds", "82801"},
            {"dateTime'1969-12-31T23:00:01'", "dateDaysSince[1970]", "-1"},
            {"time'01:00:00'", "timeSeconds", "3600"},
            {"time'01:00:00'", "date", "invalid"},
            {"dateDaysSince[1970]'0'", "date", "1970-01-01"},
            {"dateDaysSince[1970]'0'", "dateDaysSince[1960]", "3653"},
            {"dateDaysSince[0]'0'", "date", "0000-01-01"},
            {"dateDaysSince[1970]'3'", "double", "3"},
            {"dateDaysSince[1970]'1'", "boolean", "invalid"},
            {"timeSeconds'60'", "time", "00:01:00"}});
}

TEST(Conversion, LeavesMissingAndEmptyAlone) {
  CheckAll({{"missing", "integer", "missing"},
            {"double''", "string", "missing"},  // an empty constant of a number type
            {"string''", "string", ""},
            {"''", "double", "invalid"}});
}

TEST(Conversion, InfersTheTypesOfConstants) {
  const auto constant = [](const std::string& text, const std::string& type) {
    const std::string field = DerivedField("d", type, "<Constant>" + text + "</Constant>");
    return Loaded(Document("", field)).Derive("d", {});
  };
  EXPECT_EQ(constant("007", "string"), "7");
  EXPECT_EQ(constant("1E5", "string"), "100000");
  EXPECT_EQ(constant("1.50", "string"), "1.5");
  EXPECT_EQ(constant(" true ", "string"), " true ");
  EXPECT_EQ(constant("", "string"), "");
  EXPECT_EQ(constant("NaN", "string"), "NaN");
  EXPECT_EQ(constant("-INF", "string"), "-INF");
}

}  // namespace
}  // namespace svmscore::transform
