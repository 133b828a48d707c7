// The types of derived fields, and what a value becomes as each of them.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/transform/call_text.h"
#include "tests/transform/fixture.h"

namespace svmscore::transform {
namespace {

std::string As(const std::string& data_type, const std::string& call) {
  // By way of a string field where the result is a date, whose number would be hard to read.
  const bool readable = data_type.starts_with("date") || data_type == "time" ||
                        data_type == "timeSeconds" || data_type == "boolean";
  // A constant by itself would be converted, or refused, at load.
  std::string fields = DerivedField("typed", data_type, CallToXml("if(true, " + call + ")"));
  fields += DerivedField("text", "string", "<FieldRef field='typed'/>");
  return Loaded(Document("", fields)).Derive(readable ? "text" : "typed", {});
}

// Each row reads "CALL as TYPE = RESULT".
void CheckConversions(const std::vector<std::string>& rows) {
  for (const std::string& row : rows) {
    const std::size_t as = row.find(" as ");
    const std::size_t sign = row.find(" = ");
    EXPECT_EQ(As(row.substr(as + 4, sign - as - 4), row.substr(0, as)), row.substr(sign + 3))
        << row;
  }
}

TEST(Conversion, ReadsTexts) {
  CheckConversions(
      {"'3e0' as integer = 3", "' 12 ' as integer = 12", "'3.5' as integer = invalid",
       "'true' as integer = 1", "'1,5' as double = invalid", "'0x10' as double = invalid",
       "'+1.5E1' as double = 15", "'' as double = invalid", "'0.1' as float = 0.10000000149011612",
       "'TRUE' as boolean = true", "'0' as boolean = false", "'yes' as boolean = invalid",
       "'2023-02-29' as date = invalid", "'2024-02-29' as date = 2024-02-29",
       "'2003-04-01' as dateDaysSince[1960] = 15796", "'17' as dateDaysSince[1960] = 17",
       "'1960-01-01T00:01:00' as dateTimeSecondsSince[1960] = 60",
       "'00:01:00' as timeSeconds = 60"});
}

TEST(Conversion, ReadsNumbers) {
  CheckConversions({"2.5 as integer = 3", "-2.5 as integer = -2", "1e19 as integer = invalid",
                    "2.0 as string = 2", "float'0.1' as string = 0.1", "1e300 as string = 1e+300",
                    "1 as boolean = true", "2 as boolean = invalid", "true as double = 1",
                    "false as string = false", "5 as date = invalid",
                    "5 as dateDaysSince[1980] = 5", "true as dateDaysSince[1980] = invalid"});
}

TEST(Conversion, MovesBetweenDates) {
  CheckConversions(
      {"date'2024-02-29' as double = invalid", "date'2024-02-29' as string = 2024-02-29",
       "date'1960-01-02' as dateDaysSince[1960] = 1",
       "date'1960-01-02' as dateTimeSecondsSince[1960] = 86400",
       "date'1960-01-02' as dateTime = 1960-01-02T00:00:00", "date'1960-01-02' as time = invalid",
       "dateTime'1969-12-31T23:00:01' as date = 1969-12-31",
       "dateTime'1969-12-31T23:00:01' as time = 23:00:01",
       "dateTime'1969-12-31T23:00:01' as dateDaysSince[1970] = -1",
       "time'01:00:00' as timeSeconds = 3600", "time'01:00:00' as date = invalid",
       "dateDaysSince[1970]'0' as dateDaysSince[1960] = 3653",
       "dateDaysSince[0]'0' as date = 0000-01-01", "dateDaysSince[1970]'3' as double = 3",
       "dateDaysSince[1970]'1' as boolean = invalid", "timeSeconds'60' as time = 00:01:00"});
}

TEST(Conversion, LeavesMissingAndEmptyAlone) {
  CheckConversions({"missing as integer = missing", "string'' as string = ",
                    "double'' as string = missing"});  // an empty constant of a number type
}

TEST(Conversion, InfersTheTypesOfConstants) {
  for (const auto& [text, expected] : std::vector<std::pair<std::string, std::string>>{
           {"007", "7"}, {"1E5", "100000"}, {" true ", " true "}, {"", ""}, {"-INF", "-INF"}}) {
    const std::string field = DerivedField("d", "string", "<Constant>" + text + "</Constant>");
    EXPECT_EQ(Loaded(Document("", field)).Derive("d", {}), expected);
  }
}

}  // namespace
}  // namespace svmscore::transform
