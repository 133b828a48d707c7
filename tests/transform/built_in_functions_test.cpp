// The built-in functions, by tables of calls and their results.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "host/text/number_text.h"
#include "tests/transform/call_text.h"
#include "tests/transform/fixture.h"

namespace svmscore::transform {
namespace {

const char* const kFields =
    "<DataField name='m' optype='continuous' dataType='double'/>"
    "<DataField name='bad' optype='continuous' dataType='double'/>"
    "<DataField name='level' optype='ordinal' dataType='string'>"
    "<Value value='low'/><Value value='mid'/><Value value='high'/></DataField>"
    "<DataField name='stage' optype='ordinal' dataType='double'>"
    "<Value value='3'/><Value value='0.5'/><Value value='1'/></DataField>";

// The field `bad` is invalid, `level` is high, `stage` is 0.5 and `m` missing.
std::string Evaluate(const std::string& call) {
  return Loaded(Document(kFields, DerivedField("d", "string", CallToXml(call))))
      .Derive("d", {{"bad", "no number"}, {"level", "high"}, {"stage", "0.5"}});
}

// Each row reads "CALL = RESULT". Results are compared as texts, or as numbers within `error`,
// which is relative.
void Check(const std::vector<std::string>& rows, double error = 0.0) {
  for (const std::string& row : rows) {
    const std::size_t sign = row.rfind(" = ");
    const std::string result = Evaluate(row.substr(0, sign));
    const std::string expected = row.substr(sign + 3);
    const auto number = error > 0.0 ? ParseNumber(result) : std::nullopt;
    if (number) {
      EXPECT_NEAR(*number / *ParseNumber(expected), 1.0, error) << row;
    } else {
      EXPECT_EQ(result, expected) << row;
    }
  }
}

TEST(Functions, GiveTheirGoldenValues) {
  Check({"log10(250) = 2.3979400086720375", "ln(7.5) = 2.0149030205422647",
         "exp(-1.5) = 0.22313016014842982", "pow(9, -0.5) = 0.3333333333333333",
         "expm1(0.00001) = 1.0000050000166668E-5", "ln1p(0.00001) = 9.999950000333332E-6",
         "hypot(5, 12) = 13", "sqrt(2.25) = 1.5"},
        1e-12);
  Check({"sin(0.5) = 0.479425538604203", "cos(0.5) = 0.8775825618903728",
         "tan(0.5) = 0.5463024898437905", "asin(0.5) = 0.5235987755982989",
         "acos(0.5) = 1.0471975511965979", "atan(0.5) = 0.4636476090008061",
         "sinh(0.5) = 0.5210953054937474", "cosh(0.5) = 1.1276259652063807",
         "tanh(0.5) = 0.46211715726000974", "erf(0.3) = 0.3286267594591274",
         "normalCDF(3, 1, 4) = 0.6914624612740131", "stdNormalCDF(-1.25) = 0.1056497736668553",
         "normalPDF(3, 1, 4) = 0.08801633169107488", "stdNormalPDF(1.25) = 0.18264908538902191",
         "normalIDF(0.9, 1, 4) = 6.126206262178403", "stdNormalIDF(0.975) = 1.959963984540054"},
        1e-12);
}

TEST(Functions, RoundAndAggregateExactly) {
  Check({"modulo(14, -5) = -1", "modulo(-7.5, 2) = 0.5", "modulo(-14, -5) = -4",
         "x-modulo(-14, 5) = 1", "floor(-0.5) = -1", "ceil(-0.5) = 0", "rint(2.5) = 2",
         "rint(3.5) = 4", "round(-2.5) = -2", "round(0.49999999999999994) = 0",
         "threshold(3, 3) = 0", "threshold(4, 3) = 1"});
  Check({"pow(0, 0) = 1", "avg(2, missing, 4) = 3", "median(7, 1, 4, 10) = 5.5",
         "median(7, missing, 1, 4) = 4", "sum(missing, missing) = missing",
         "min(7, 1, missing, 4) = 1", "min('10', '9') = 9", "max('9', 8, '10') = 10",
         "+(7, missing) = missing", "if(false, 1) = missing"});
}

TEST(Functions, KeepIntegersWhileTheyFit) {
  Check({"/(1, 3) = 0.3333333333333333",  // no integer division
         "concat('', +(9007199254740993, 2)) = 9007199254740995",
         "concat('', *(3037000500, 3037000500)) = 9223372037000249344",  // a double
         "concat('', pow(3, 39)) = 4052555153018976267", "concat('', sum(1, 2.5)) = 3.5",
         "concat('', -(2, 0.5)) = 1.5",
         "concat('', abs(-9223372036854775807)) = 9223372036854775807",
         "concat('', max(2, 10, missing)) = 10", "concat('', product(3, missing, 4)) = 12",
         "concat('', round(4503599627370497.0)) = 4503599627370497"});
}

TEST(Functions, AreInvalidOutsideTheirDomain) {
  for (const char* call :
       {"/(1, 0)", "modulo(3, 0)", "modulo(3.5, 0)", "log10(0)", "sqrt(-0.5)", "pow(-8, 0.5)",
        "exp(1000)", "normalCDF(1, 0, 0)", "normalPDF(1, 0, -1)", "normalIDF(1, 0, 1)",
        "stdNormalIDF(0)", "substring('abc', 0, 2)", "substring('abc', 1, -1)", "not('perhaps')",
        "and(true, 7)", "lessThan('a', 1)", "formatNumber(2.5, '%d')",
        "formatDatetime(time'10:00:00', '%Y')"}) {
    EXPECT_EQ(Evaluate(call), "invalid") << call;
  }
  for (const char* call :
       {"dateDaysSinceYear(time'10:00:00', 1960)",
        "dateDaysSinceYear(concat('2024-02-', '30'), 1960)",
        "dateSecondsSinceMidnight(date'2024-01-01')", "+(date'2024-01-01', 1)",
        "min(date'2024-01-01', 4)", "+('two', 1)", "min(1, 'two')", "+(bad, 1)", "avg(bad, 1)",
        "and(false, bad)", "matches('aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaab', '(a+)+$')",
        "matches('x', concat('(', 'x'))"}) {
    EXPECT_EQ(Evaluate(call), "invalid") << call;
  }
}

TEST(Functions, TellMissingInvalidAndValidApart) {
  Check({"isMissing(m) = true", "isMissing(bad) = invalid", "isMissing(/(1, 0)) = invalid",
         "isMissing('') = false", "isNotMissing(m) = false", "isNotMissing(1) = true",
         "isNotMissing(bad) = invalid", "isValid(m) = false", "isValid('') = true",
         "isValid(bad) = invalid", "isNotValid(m) = false", "isNotValid(1) = false",
         "isNotValid(bad) = invalid"});
}

TEST(Functions, FollowThreeValuedLogic) {
  const std::string values[] = {"true", "false", "missing"};
  const char* const both[] = {"true",  "false",   "missing", "false",  "false",
                              "false", "missing", "false",   "missing"};
  const char* const either[] = {"true",    "true", "true",    "true",   "false",
                                "missing", "true", "missing", "missing"};
  for (std::size_t i = 0; i < 9; ++i) {
    const std::string pair = "(" + values[i / 3] + ", " + values[i % 3] + ") = ";
    Check({"and" + pair + both[i], "or" + pair + either[i]});
  }
  Check({"not(missing) = missing", "and(true, 1, 'TRUE') = true",
         "or(false, missing, 0, true) = true", "and(true) = true"});
}

TEST(Functions, CompareAcrossTypes) {
  Check({"equal(1, 1.0) = true", "equal('1', 1.0) = true", "equal('1.0', 1) = true",
         "equal('1.0', '1') = false", "notEqual('x', 1) = true", "equal(true, 'True') = true",
         "equal(missing, missing) = missing", "equal(+(0.1, 0.2), 0.3) = false",
         "equal(9007199254740993, 9007199254740992) = false", "equal(float'0.1', '0.1') = true",
         "equal(float'0.1', 0.1) = false", "lessThan(9, 10) = true",
         "lessThan('9', '10') = false",  // texts by their characters
         "lessOrEqual(2, 2.0) = true", "greaterThan(true, false) = true",
         "greaterOrEqual('b', 'a') = true"});
  Check({"lessThan(date'2024-02-28', date'2024-02-29') = true",
         "equal(date'2024-02-29', '2024-02-29') = true",
         "greaterThan(dateTime'2024-02-29T00:00:01', date'2024-02-29') = true",
         "equal(date'1960-01-02', dateDaysSince[1960]'1') = true",
         "equal(dateDaysSince[1970]'-3652', dateDaysSince[1960]'1') = true",
         "isIn(3, 1, '3', 5) = true", "isIn(3, 1, missing) = false",
         "isIn(missing, 1, missing) = missing", "isNotIn('a', 'b', missing, 'a') = false"});
}

TEST(Functions, CompareOrdinalFieldsByTheirOrder) {
  Check({"lessThan(level, 'mid') = false", "greaterThan(level, 'mid') = true",
         "lessThan('low', level) = true", "greaterThan(level, 'none') = missing",
         "equal(level, 'high') = true", "greaterThan(level, 2) = missing"});
  // The values of a field of numbers, 3 before 0.5 before 1, also given as texts.
  Check({"lessThan(stage, 1) = true", "lessThan(3, stage) = true",
         "greaterThan(stage, '3.0') = true", "lessOrEqual(stage, '5e-1') = true",
         "lessThan(stage, '1') = true", "lessThan(stage, '2') = missing",
         "lessThan(stage, 'low') = missing"});
}

TEST(Functions, ChooseLazily) {
  Check({"if(true, 1, /(1, 0)) = 1", "if(false, /(1, 0), 'other') = other",
         "if(missing, 1, 2) = missing", "if(bad, 1, 2) = invalid",
         "if(true, /(1, 0), 2) = invalid"});
}

TEST(Functions, TreatTextsByCharacters) {
  Check(
      {"uppercase('straße ÿ ǆ λ') = STRAßE Ÿ Ǆ Λ",  // one character stays one
       "lowercase('ÄÖ İ') = äö i", "stringLength('ñ€😀') = 3", "stringLength('') = 0",
       "substring('ñ€😀x', 2, 2) = €😀", "substring('abc', 4, 1) = ", "substring('abc', 2, 99) = bc",
       "trimBlanks(' \t a b\r\n ') = a b", "trimBlanks('  ') = ", "concat('a', missing) = missing",
       "concat('a', 1, 2.50, true, date'2024-01-02') = a12.5true2024-01-02",
       "concat(100000.0, '/', 1e21) = 100000/1e+21"});
}

TEST(Functions, MatchAndReplaceByExpressions) {
  Check({"matches('lantern', 'nt') = true", "matches('lantern', '^nt') = false",
         "matches('Äpfel', '(?i)^ä') = true",
         "matches(concat('x', '+'), concat('\\', '+')) = true",  // made for the call
         "replace('a1b22', '([0-9]+)', '<$1$$>') = a<1$>b<22$>",
         "replace('aaa', 'b*', '-') = -a-a-a-"});
}

// A character class counts by the length of its text, so that few steps spend the work.
TEST(Functions, GiveUpOnSearchesThatTakeTooMuchWork) {
  const auto run = [](const std::string& call, const std::string& text) {
    return Loaded(Document(DataField("t", "string"), DerivedField("d", "string", CallToXml(call))))
        .Derive("d", {{"t", text}});
  };
  const std::string letters(50000, 'a');
  const std::string few = letters.substr(0, 5000);
  const std::string wide = "[" + letters.substr(0, 2000) + "]";
  EXPECT_EQ(run("matches(t, '[a-z]*[0-9]')", letters), "invalid") << "a step over many characters";
  EXPECT_EQ(run("matches(t, '" + wide + "{4000,}[0-9]')", few), "invalid") << "a step that fails";
  EXPECT_EQ(run("matches(t, '(a*)\\1[0-9]')", few), "invalid") << "back references";
  EXPECT_EQ(run("replace(t, 'a(?=" + wide + "*+)', 'b')", few), "invalid") << "many matches";
  // A long text alone does not take too much work.
  EXPECT_EQ(run("matches(t, '[a-z]+[0-9]')", few + "1"), "true");
  std::string words;
  for (int i = 0; i < 20000; ++i) words += "some word ";
  EXPECT_EQ(run("stringLength(replace(t, '[a-z]*e +', ''))", words), "100000");
}

// Too long to be compiled with a meter: lists of words are accepted, the rest is refused.
TEST(Functions, SearchForLongLists) {
  std::string list = "x1";
  for (int i = 0; i < 3000; ++i) list += "|w" + std::to_string(i);
  EXPECT_EQ(Evaluate("matches('w2999', '^(?:" + list + ")$')"), "true");
  const std::string searched(1000000, 'w');
  EXPECT_EQ(Loaded(Document(DataField("t", "string"),
                            DerivedField("d", "string", CallToXml("matches(t, '" + list + "')"))))
                .Derive("d", {{"t", searched}}),
            "invalid");
  EXPECT_EQ(Refusal(Document("", DerivedField("d", "string",
                                              CallToXml("matches('', '" + list + "|a*')"))))
                .substr(0, 6),
            "260313");
}

TEST(Functions, CountDaysAndSeconds) {
  Check({"dateDaysSinceYear(date'2024-02-29', 1960) = 23435",
         "dateDaysSinceYear(date'1959-12-30', 1960) = -2",
         "dateDaysSinceYear('2024-02-29T01:00:00', 2024) = 59",
         "dateDaysSinceYear(dateTimeSecondsSince[1980]'-1', 1980) = -1",
         "dateDaysSinceYear(dateDaysSince[0]'715875', 1960) = 0",
         "dateSecondsSinceYear(dateTime'1981-03-02T10:20:30', 1980) = 36843630",
         "dateSecondsSinceYear(dateTime'1979-12-31T23:59:00.75', 1980) = -60",
         "dateSecondsSinceMidnight(time'18:45:12') = 67512",
         "dateSecondsSinceMidnight(dateTime'1979-12-31T00:00:01.5') = 1"});
}

TEST(Functions, FormatNumbersAndDates) {
  Check({"formatNumber(42, '%5d') =    42", "formatNumber(-3.14159, '%08.3f') = -003.142",
         "formatNumber(5.0, '<%-4i>%%') = <5   >%", "formatNumber(1234.5, '%+.2e') = +1.23e+03",
         "formatNumber(0.0001, '%G') = 0.0001", "formatNumber(1234567.0, '%.3g') = 1.23e+06",
         "formatNumber('7', '%03d') = 007",
         "formatDatetime(dateTime'2024-02-04T00:05:09', '%A %a %e. %B') = Sunday Sun  4. February",
         "formatDatetime(dateTime'2024-02-04T00:05:09', '%b %I:%M:%S %p %%') = Feb 12:05:09 AM %",
         "formatDatetime(date'2004-08-20', '%m/%d/%y') = 08/20/04",
         "formatDatetime(dateTime'2024-01-04T15:04:05', '%C %h %D %F %I %R %T') = 20 Jan 01/04/24 "
         "2024-01-04 03 15:04 15:04:05",
         "formatDatetime(time'15:04:05', '%H%M%S') = 150405",
         "formatDatetime(dateDaysSince[1960]'15796', '%Y-%m-%d %j %H') = 2003-04-01 091 00",
         "formatDatetime(date'1969-12-31', '%j %a %y') = 365 Wed 69"});
}

// Both tails, from the largest double below 1 to the smallest normal numbers.
TEST(Functions, InvertTheNormalDistribution) {
  for (const double p :
       {1e-290, 1e-100, 1e-16, 1e-5, 0.02, 0.0243, 0.3, 0.5, 0.7, 0.99, 0.999999}) {
    const double z = *ParseNumber(Evaluate("stdNormalIDF(" + FormatNumber(p) + ")"));
    // The density gives the error of z that keeps its probability correct to the last places.
    const double back = 0.5 * std::erfc(-z / std::sqrt(2.0));
    EXPECT_NEAR(back / p, 1.0, 4e-16 * (1.0 + z * z)) << p;
  }
  EXPECT_EQ(Evaluate("stdNormalIDF(0.5)"), "0");
}

}  // namespace
}  // namespace svmscore::transform
