// The built-in functions, by tables of calls and what they come to.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "host/number_text.h"
#include "tests/transform/call_text.h"
#include "tests/transform/fixture.h"

namespace svmscore::transform {
namespace {

const char* const kFields =
    "<DataField name=\"m\" optype=\"continuous\" dataType=\"double\"/>"
    "<DataField name=\"bad\" optype=\"continuous\" dataType=\"double\"/>"
    "<DataField name=\"level\" optype=\"ordinal\" dataType=\"string\">"
    "<Value value=\"low\"/><Value value=\"mid\"/><Value value=\"high\"/></DataField>";

// The field `bad` is invalid and all others are missing, unless `values` says more.
std::string Evaluate(const std::string& call, Case values = {}) {
  values.emplace("bad", "no number");
  return Loaded(Document(kFields, DerivedField("d", "string", CallToXml(call))))
      .Derive("d", values);
}

struct Golden {
  std::string call;
  std::string expected;
};

// Numbers agree within 1e-12 relative, all else exactly.
void Check(const Golden& golden) {
  const std::string result = Evaluate(golden.call);
  const auto expected = ParseNumber(golden.expected);
  const auto number = ParseNumber(result);
  if (expected && number && *expected != 0.0) {
    EXPECT_NEAR(*number / *expected, 1.0, 1e-12) << golden.call << " is " << result;
  } else {
    EXPECT_EQ(result, golden.expected) << golden.call;
  }
}

TEST(Functions, GiveTheirGoldenValues) {
  for (const Golden& golden : std::vector<Golden>{
           {"log10(250)", "2.3979400086720375"},
           {"ln(7.5)", "2.0149030205422647"},
           {"exp(-1.5)", "0.22313016014842982"},
           {"pow(9, -0.5)", "0.3333333333333333"},
           {"pow(0, 0)", "1"},
           {"expm1(0.00001)", "1.0000050000166668E-5"},
           {"ln1p(0.00001)", "9.999950000333332E-6"},
           {"hypot(5, 12)", "13"},
           {"sin(0.5)", "0.479425538604203"},
           {"cos(0.5)", "0.8775825618903728"},
           {"tan(0.5)", "0.5463024898437905"},
           {"asin(0.5)", "0.5235987755982989"},
           {"acos(0.5)", "1.0471975511965979"},
           {"atan(0.5)", "0.4636476090008061"},
           {"sinh(0.5)", "0.5210953054937474"},
           {"cosh(0.5)", "1.1276259652063807"},
           {"tanh(0.5)", "0.46211715726000974"},
           {"sqrt(2.25)", "1.5"},
           {"normalCDF(3, 1, 4)", "0.6914624612740131"},
           {"normalPDF(3, 1, 4)", "0.08801633169107488"},
           {"normalIDF(0.9, 1, 4)", "6.126206262178403"},
           {"stdNormalCDF(-1.25)", "0.1056497736668553"},
           {"stdNormalPDF(1.25)", "0.18264908538902191"},
           {"stdNormalIDF(0.975)", "1.959963984540054"},
           {"erf(0.3)", "0.3286267594591274"},
           {"modulo(14, 5)", "4"},
           {"modulo(14, -5)", "-1"},
           {"modulo(-7.5, 2)", "0.5"},
           {"modulo(-14, 5)", "1"},
           {"modulo(-14, -5)", "-4"},
           {"floor(-0.5)", "-1"},
           {"ceil(-0.5)", "0"},
           {"rint(2.5)", "2"},
           {"rint(3.5)", "4"},
           {"round(2.5)", "3"},
           {"round(-2.5)", "-2"},
           {"round(-2.51)", "-3"},
           {"threshold(3, 3)", "0"},
           {"threshold(4, 3)", "1"},
           {"avg(2, missing, 4)", "3"},
           {"median(7, 1, 4, 10)", "5.5"},
           {"sum(missing, missing)", "missing"},
           {"+(7, missing)", "missing"},
           {"if(false, 1)", "missing"},
           {"substring('lantern', 3, 4)", "nter"},
           {"stringLength('')", "0"},
           {"matches('lantern', 'nt')", "true"},
           {"matches('lantern', '^nt')", "false"},
           {"replace('banana', 'an', 'oo')", "booooa"},
           {"dateDaysSinceYear(date'2024-02-29', 1960)", "23435"},
           {"dateDaysSinceYear(date'1959-12-30', 1960)", "-2"},
           {"dateDaysSinceYear(date'2003-04-01', 1960)", "15796"},
           {"dateSecondsSinceYear(dateTime'1981-03-02T10:20:30', 1980)", "36843630"},
           {"dateSecondsSinceYear(dateTime'1979-12-31T23:59:00', 1980)", "-60"},
           {"dateSecondsSinceYear(dateTime'1960-01-03T03:30:03', 1960)", "185403"},
           {"dateSecondsSinceMidnight(time'18:45:12')", "67512"},
           {"dateSecondsSinceMidnight(time'05:23:30')", "19410"},
           {"formatDatetime(dateTime'2024-02-29T07:05:09', '%Y-%j %H')", "2024-060 07"},
           {"formatDatetime(date'2004-08-20', '%m/%d/%y')", "08/20/04"},
           {"formatNumber(42, '%5d')", "   42"},
           {"formatNumber(-3.14159, '%08.3f')", "-003.142"},
       }) {
    Check(golden);
  }
}

TEST(Functions, KeepIntegersWhileTheyFit) {
  for (const Golden& golden : std::vector<Golden>{
           {"/(1, 3)", "0.3333333333333333"},  // no integer division
           {"concat('', +(9007199254740993, 2))", "9007199254740995"},
           {"concat('', *(3037000500, 3037000500))", "9223372037000249344"},  // a double
           {"concat('', pow(3, 39))", "4052555153018976267"},
           {"concat('', sum(1, 2.5))", "3.5"},
           {"concat('', -(2, 0.5))", "1.5"},
           {"concat('', abs(-9223372036854775807))", "9223372036854775807"},
           {"concat('', max(2, 10, missing))", "10"},
           {"concat('', product(3, missing, 4))", "12"},
           {"concat('', round(4503599627370497.0))", "4503599627370497"},
           {"round(0.49999999999999994)", "0"},
       }) {
    EXPECT_EQ(Evaluate(golden.call), golden.expected) << golden.call;
  }
}

TEST(Functions, AreInvalidOutsideTheirDomain) {
  for (const char* call : {"/(1, 0)",
                           "/(0, 0)",
                           "modulo(3, 0)",
                           "modulo(3.5, 0)",
                           "log10(0)",
                           "ln(-1)",
                           "ln1p(-1)",
                           "sqrt(-0.5)",
                           "exp(1000)",
                           "expm1(1000)",
                           "pow(-8, 0.5)",
                           "pow(0, -1)",
                           "asin(1.5)",
                           "acos(-2)",
                           "sinh(1000)",
                           "normalCDF(1, 0, 0)",
                           "normalPDF(1, 0, -1)",
                           "normalIDF(1, 0, 1)",
                           "stdNormalIDF(0)",
                           "substring('abc', 0, 2)",
                           "substring('abc', 1, -1)",
                           "not('perhaps')",
                           "and(true, 7)",
                           "lessThan('a', 1)",
                           "formatNumber(2.5, '%d')",
                           "dateDaysSinceYear(time'10:00:00', 1960)",
                           "dateDaysSinceYear(concat('2024-02-', '30'), 1960)",
                           "formatDatetime(time'10:00:00', '%Y')",
                           "+(date'2024-01-01', 1)",
                           "+('two', 1)",
                           "+(bad, 1)",
                           "avg(bad, 1)",
                           "and(false, bad)",
                           "min(date'2024-01-01', 4)",
                           "dateSecondsSinceMidnight(date'2024-01-01')",
                           "matches('aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaab', '(a+)+$')"}) {
    EXPECT_EQ(Evaluate(call), "invalid") << call;
  }
}

TEST(Functions, TellMissingInvalidAndValidApart) {
  for (const Golden& golden : std::vector<Golden>{
           {"isMissing(m)", "true"},
           {"isMissing(bad)", "invalid"},
           {"isMissing(/(1, 0))", "invalid"},
           {"if(isValid(/(1, 0)), 1, 6)", "invalid"},
           {"isMissing(1)", "false"},
           {"isNotMissing(m)", "false"},
           {"isNotMissing(bad)", "invalid"},
           {"isValid(m)", "false"},
           {"isValid(bad)", "invalid"},
           {"isValid('')", "true"},
           {"isNotValid(m)", "false"},
           {"isNotValid(bad)", "invalid"},
           {"isNotValid(1)", "false"},
           {"isMissing('')", "false"},
       }) {
    EXPECT_EQ(Evaluate(golden.call), golden.expected) << golden.call;
  }
}

TEST(Functions, FollowThreeValuedLogic) {
  const std::string values[] = {"true", "false", "missing"};
  const char* const both[] = {"true",  "false",   "missing", "false",  "false",
                              "false", "missing", "false",   "missing"};
  const char* const either[] = {"true",    "true", "true",    "true",   "false",
                                "missing", "true", "missing", "missing"};
  for (std::size_t i = 0; i < 9; ++i) {
    const std::string pair = "(" + values[i / 3] + ", " + values[i % 3] + ")";
    EXPECT_EQ(Evaluate("and" + pair), both[i]) << pair;
    EXPECT_EQ(Evaluate("or" + pair), either[i]) << pair;
  }
  EXPECT_EQ(Evaluate("not(missing)"), "missing");
  EXPECT_EQ(Evaluate("and(true, 1, 'TRUE')"), "true");
  EXPECT_EQ(Evaluate("or(false, missing, 0, true)"), "true");
  EXPECT_EQ(Evaluate("and(true)"), "true");
}

TEST(Functions, CompareAcrossTypes) {
  for (const Golden& golden : std::vector<Golden>{
           {"equal(1, 1.0)", "true"},
           {"equal('1', 1.0)", "true"},
           {"equal('1.0', 1)", "true"},
           {"equal('1.0', '1')", "false"},
           {"equal('x', 1)", "false"},
           {"notEqual('x', 1)", "true"},
           {"equal(9007199254740993, 9007199254740992)", "false"},
           {"equal(+(0.1, 0.2), 0.3)", "false"},
           {"equal(float'0.1', '0.1')", "true"},
           {"equal(float'0.1', 0.1)", "false"},
           {"lessThan(9, 10)", "true"},
           {"lessThan('9', '10')", "false"},  // texts by their characters
           {"lessOrEqual(2, 2.0)", "true"},
           {"greaterThan(true, false)", "true"},
           {"greaterOrEqual('b', 'a')", "true"},
           {"equal(true, 'True')", "true"},
           {"equal(missing, missing)", "missing"},
           {"lessThan(date'2024-02-28', date'2024-02-29')", "true"},
           {"equal(date'2024-02-29', '2024-02-29')", "true"},
           {"greaterThan(dateTime'2024-02-29T00:00:01', date'2024-02-29')", "true"},
           {"equal(date'1960-01-02', dateDaysSince[1960]'1')", "true"},
           {"equal(dateDaysSince[1970]'-3652', dateDaysSince[1960]'1')", "true"},
           {"isIn(3, 1, '3', 5)", "true"},
           {"isIn(3, 1, missing)", "false"},
           {"isIn(missing, 1, missing)", "missing"},
           {"isNotIn('a', 'b', missing, 'a')", "false"},
       }) {
    EXPECT_EQ(Evaluate(golden.call), golden.expected) << golden.call;
  }
}

TEST(Functions, CompareOrdinalFieldsByTheirOrder) {
  const Case high = {{"level", "high"}};
  EXPECT_EQ(Evaluate("lessThan(level, 'mid')", high), "false");
  EXPECT_EQ(Evaluate("greaterThan(level, 'mid')", high), "true");
  EXPECT_EQ(Evaluate("lessThan('low', level)", high), "true");
  EXPECT_EQ(Evaluate("greaterThan(level, 'none')", high), "missing");
  EXPECT_EQ(Evaluate("equal(level, 'high')", high), "true");
}

TEST(Functions, ChooseLazily) {
  EXPECT_EQ(Evaluate("if(true, 1, /(1, 0))"), "1");
  EXPECT_EQ(Evaluate("if(false, /(1, 0), 'other')"), "other");
  EXPECT_EQ(Evaluate("if(missing, 1, 2)"), "missing");
  EXPECT_EQ(Evaluate("if(bad, 1, 2)"), "invalid");
  EXPECT_EQ(Evaluate("if(true, /(1, 0), 2)"), "invalid");
}

TEST(Functions, TreatTextsByCharacters) {
  for (const Golden& golden : std::vector<Golden>{
           {"uppercase('straße ÿ ǆ λ')", "STRAßE Ÿ Ǆ Λ"},  // one character stays one
           {"lowercase('ÄÖ İ')", "äö i"},
           {"stringLength('ñ€😀')", "3"},
           {"substring('ñ€😀x', 2, 2)", "€😀"},
           {"substring('abc', 4, 1)", ""},
           {"substring('abc', 2, 99)", "bc"},
           {"trimBlanks(' \t a b\r\n ')", "a b"},
           {"trimBlanks('  ')", ""},
           {"concat('a', 1, 2.50, true, date'2024-01-02')", "a12.5true2024-01-02"},
           {"concat(100000.0, '/', 1e21)", "100000/1e+21"},
           {"concat('a', missing)", "missing"},
           {"replace('a1b22', '([0-9]+)', '<$1$$>')", "a<1$>b<22$>"},
           {"replace('aaa', 'b*', '-')", "-a-a-a-"},
           {"matches('Äpfel', '(?i)^ä')", "true"},
           {"matches(concat('x', '+'), concat('\\', '+'))", "true"},  // made for the call
           {"matches('x', concat('(', 'x'))", "invalid"},
       }) {
    EXPECT_EQ(Evaluate(golden.call), golden.expected) << golden.call;
  }
}

TEST(Functions, FormatNumbersAndDates) {
  for (const Golden& golden : std::vector<Golden>{
           {"formatNumber(2, '%3d')", "  2"},
           {"formatNumber(5.0, '<%-4i>%%')", "<5   >%"},
           {"formatNumber(1234.5, '%+.2e')", "+1.23e+03"},
           {"formatNumber(0.0001, '%G')", "0.0001"},
           {"formatNumber(1234567.0, '%.3g')", "1.23e+06"},
           {"formatNumber('7', '%03d')", "007"},
           {"formatDatetime(dateTime'2024-02-04T00:05:09', '%A %a %e. %B %b %I:%M:%S %p %%')",
            "Sunday Sun  4. February Feb 12:05:09 AM %"},
           {"formatDatetime(time'15:04:05', '%H%M%S')", "150405"},
           {"formatDatetime(dateDaysSince[1960]'15796', '%Y-%m-%d %H')", "2003-04-01 00"},
           {"formatDatetime(date'1969-12-31', '%j %a %y')", "365 Wed 69"},
           {"dateSecondsSinceYear(dateTime'1979-12-31T23:59:00.75', 1980)", "-60"},
           {"dateSecondsSinceMidnight(dateTime'1979-12-31T00:00:01.5')", "1"},
           {"dateDaysSinceYear(dateTimeSecondsSince[1980]'-1', 1980)", "-1"},
           {"dateDaysSinceYear('2024-02-29T01:00:00', 2024)", "59"},
           {"dateDaysSinceYear(dateDaysSince[0]'715875', 1960)", "0"},
       }) {
    EXPECT_EQ(Evaluate(golden.call), golden.expected) << golden.call;
  }
}

TEST(Functions, AreKnownByTheirEarlierNames) {
  EXPECT_EQ(Evaluate("x-modulo(-14, 5)"), "1");
}

// Both tails, from the largest double below 1 to the smallest normal numbers.
TEST(Functions, InvertTheNormalDistribution) {
  for (const double p :
       {1e-290, 1e-100, 1e-16, 1e-5, 0.02, 0.0243, 0.3, 0.5, 0.7, 0.99, 0.999999}) {
    const double z = *ParseNumber(Evaluate("stdNormalIDF(" + FormatNumber(p) + ")"));
    // The density says how far z may be off for its probability to be right to the last places.
    const double back = 0.5 * std::erfc(-z / std::sqrt(2.0));
    EXPECT_NEAR(back / p, 1.0, 4e-16 * (1.0 + z * z)) << p;
  }
  EXPECT_EQ(Evaluate("stdNormalIDF(0.5)"), "0");
}

}  // namespace
}  // namespace svmscore::transform
