// Apply: its treatments of missing and invalid values, and functions that documents define.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/transform/call_text.h"
#include "tests/transform/fixture.h"

namespace svmscore::transform {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

const std::string kX = "<FieldRef field='x'/>";
const std::string kOne = "<Constant>1</Constant>";

std::string Apply(const std::string& function, const std::string& attributes,
                  const std::string& arguments) {
  return "<Apply function='" + function + "' " + attributes + ">" + arguments + "</Apply>";
}

// The expression over a field x: 4, 0, missing, invalid.
std::string Compute(const std::string& expression, const std::string& functions = "") {
  return Loaded(Document(DataField("x", "double"),
                         functions + DerivedField("d", "string", expression)))
      .DeriveEach("4 0 - ?");
}

std::string Define(const std::string& name, const std::string& body) {
  return "<DefineFunction name='" + name + "' optype='continuous'><ParameterField name='p'/>" +
         body + "</DefineFunction>\n";
}

TEST(Apply, TreatsMissingAndInvalidResults) {
  const auto run = [&](const std::string& attributes) {
    return Compute(Apply("/", attributes, kOne + kX));
  };
  EXPECT_EQ(run(""), "0.25 invalid missing invalid");
  EXPECT_EQ(run("defaultValue='8'"), "0.25 invalid 8 invalid");
  EXPECT_EQ(run("mapMissingTo='7' defaultValue='8'"), "0.25 invalid 7 invalid");
  EXPECT_EQ(run("invalidValueTreatment='asIs'"), "0.25 INF missing NaN");
  EXPECT_EQ(run("invalidValueTreatment='asMissing'"), "0.25 missing missing missing");
  EXPECT_EQ(run("invalidValueTreatment='asMissing' defaultValue='8' mapMissingTo='7'"),
            "0.25 8 7 8");
}

TEST(Apply, PassesUntreatedInfinitiesOn) {
  const std::string infinite = Apply("/", "invalidValueTreatment='asIs'", kOne + kX);
  EXPECT_EQ(Compute(Apply("isValid", "", infinite)), "true false false false");
  EXPECT_EQ(Compute(Apply("isNotValid", "", infinite)), "false true false true");
  EXPECT_EQ(Compute(Apply("greaterThan", "", infinite + kOne)), "false true missing invalid");
}

TEST(Apply, LooksAtMapMissingToBeforeTheFunction) {
  EXPECT_EQ(Compute(Apply("isMissing", "mapMissingTo='maybe'", kX)), "false false maybe invalid");
  EXPECT_EQ(Compute(Apply("isMissing", "mapMissingTo='1'", kX)), "false false true invalid");
  EXPECT_EQ(Compute(Apply("avg", "mapMissingTo='9'", kX + "<Constant>2</Constant>")),
            "3 1 9 invalid");
  // Every level has its own treatment: the inner result is a missing argument of the outer call.
  EXPECT_EQ(Compute(Apply("+", "mapMissingTo='5.0'", Apply("*", "", kX + kX) + kOne)),
            "17 1 5 invalid");
}

TEST(Apply, ChoosesWithTreatments) {
  const std::string positive = CallToXml("greaterThan(x, 0)");
  const std::string both = "mapMissingTo='m' defaultValue='d'";
  EXPECT_EQ(Compute(Apply("if", both, positive + CallToXml("missing") + CallToXml("'n'"))),
            "m n m invalid");
  EXPECT_EQ(Compute(Apply("if", both, positive + CallToXml("'y'"))), "y d m invalid");
  EXPECT_EQ(Compute(CallToXml("if(x, 'y')")), "invalid missing missing invalid");
}

TEST(DefineFunction, ConvertsArgumentsAndResult) {
  const std::string functions =
      "<DefineFunction name='half' optype='continuous' dataType='integer'>"
      "<ParameterField name='x' dataType='double'/>" +
      CallToXml("/(x, 2)") +
      "</DefineFunction><DefineFunction name='tag' optype='categorical' dataType='string'>"
      "<ParameterField name='a'/><ParameterField name='b' dataType='string'/>" +
      CallToXml("if(isMissing(a), concat('none:', b), concat(half(a), ':', b))") +
      "</DefineFunction>";
  // The untyped constant 007 is a text where the parameter is a text.
  EXPECT_EQ(Compute(CallToXml("tag(x, 007)"), functions), "2:007 0:007 none:007 invalid");
  EXPECT_EQ(Compute(CallToXml("half('5')"), functions), "3 3 3 3");
  EXPECT_EQ(Compute(CallToXml("half('?')"), functions), "invalid invalid invalid invalid");
  EXPECT_EQ(
      Compute(Apply("half", "mapMissingTo='17' invalidValueTreatment='asMissing'", kX), functions),
      "2 0 17 missing");
}

TEST(DefineFunction, HasEveryKindOfBody) {
  const auto run = [&](const std::string& body) {
    return Compute(CallToXml("f(x)"), Define("f", body));
  };
  EXPECT_EQ(run("<NormDiscrete field='p' value='4.0'/>"), "1 0 missing invalid");
  EXPECT_EQ(run("<MapValues outputColumn='o' defaultValue='else'><FieldColumnPair field='p' "
                "column='i'/>" +
                Table("i;o", {"4.00;four"}) + "</MapValues>"),
            "four else missing invalid");
  EXPECT_EQ(run("<Discretize field='p' defaultValue='no'><DiscretizeBin binValue='yes'>"
                "<Interval closure='openOpen' leftMargin='1'/></DiscretizeBin></Discretize>"),
            "yes no missing invalid");
  EXPECT_EQ(run("<FieldRef field='p' mapMissingTo='6'/>"), "4 0 6 invalid");
}

TEST(DefineFunction, SeesItsParametersOnly) {
  const auto define = [](const std::string& name, const std::string& call) {
    return Define(name, CallToXml(call));
  };
  const auto refusal = [](const std::string& functions, const std::string& call) {
    return Refusal(Document(DataField("x", "double"),
                            functions + DerivedField("d", "double", CallToXml(call))));
  };
  EXPECT_THAT(refusal(define("f", "+(p, x)"), "1"),
              StartsWith("260311 at element FieldRef, line 5"));
  EXPECT_THAT(refusal(define("f", "f(p)"), "1"), HasSubstr("function f calls itself"));
  EXPECT_THAT(refusal(define("f", "g(p)") + define("g", "+(1, f(p))"), "f(x)"),
              HasSubstr("calls itself"));
  EXPECT_EQ(refusal(define("f", "g(p)") + define("g", "p"), "f(x)"), "");
  EXPECT_THAT(refusal(define("f", "p") + define("f", "p"), "1"),
              StartsWith("260310 at element DefineFunction, line 6"));
  EXPECT_THAT(refusal(define("f", "p"), "f(1, 2)"), StartsWith("260315"));
  // A built-in function takes precedence over one that a document defines under its name.
  EXPECT_EQ(Compute(CallToXml("abs(-3)"), define("abs", "'mine'")), "3 3 3 3");
}

}  // namespace
}  // namespace svmscore::transform
