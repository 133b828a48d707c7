// Apply: its treatments of missing and invalid values, and functions that documents define.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/transform/call_text.h"
#include "tests/transform/fixture.h"

namespace svmscore::transform {
namespace {

using ::testing::ElementsAre;

const char* const kX = "<FieldRef field=\"x\"/>";

std::string Apply(const std::string& function, const std::string& attributes,
                  const std::string& arguments) {
  return "<Apply function=\"" + function + "\" " + attributes + ">" + arguments + "</Apply>";
}

// The expression over a field x: 4, 0, missing, invalid.
std::vector<std::string> Compute(const std::string& expression, const std::string& functions = "") {
  const Loaded loaded(
      Document(DataField("x", "double"), functions + DerivedField("d", "string", expression)));
  return loaded.DeriveAll("d", {{{"x", "4"}}, {{"x", "0"}}, {}, {{"x", "?"}}});
}

TEST(Apply, TreatsMissingAndInvalidResults) {
  const std::string one_over_x = "<Constant>1</Constant>" + std::string(kX);
  const auto run = [&](const std::string& attributes) {
    return Compute(Apply("/", attributes, one_over_x));
  };
  EXPECT_THAT(run(""), ElementsAre("0.25", "invalid", "missing", "invalid"));
  EXPECT_THAT(run("mapMissingTo=\"7\""), ElementsAre("0.25", "invalid", "7", "invalid"));
  EXPECT_THAT(run("defaultValue=\"8\""), ElementsAre("0.25", "invalid", "8", "invalid"));
  EXPECT_THAT(run("mapMissingTo=\"7\" defaultValue=\"8\""),
              ElementsAre("0.25", "invalid", "7", "invalid"));
  EXPECT_THAT(run("invalidValueTreatment=\"asIs\""), ElementsAre("0.25", "INF", "missing", "NaN"));
  EXPECT_THAT(run("invalidValueTreatment=\"asMissing\""),
              ElementsAre("0.25", "missing", "missing", "missing"));
  EXPECT_THAT(run("invalidValueTreatment=\"asMissing\" defaultValue=\"8\" mapMissingTo=\"7\""),
              ElementsAre("0.25", "8", "7", "8"));
}

TEST(Apply, PassesUntreatedInfinitiesOn) {
  const std::string infinite =
      Apply("/", "invalidValueTreatment=\"asIs\"", "<Constant>1</Constant>" + std::string(kX));
  EXPECT_THAT(Compute(Apply("isValid", "", infinite)),
              ElementsAre("true", "false", "false", "false"));
  EXPECT_THAT(Compute(Apply("isNotValid", "", infinite)),
              ElementsAre("false", "true", "false", "true"));
  EXPECT_THAT(Compute(Apply("greaterThan", "", infinite + "<Constant>1</Constant>")),
              ElementsAre("false", "true", "missing", "invalid"));
}

TEST(Apply, LooksAtMapMissingToBeforeTheFunction) {
  EXPECT_THAT(Compute(Apply("isMissing", "mapMissingTo=\"maybe\"", kX)),
              ElementsAre("false", "false", "maybe", "invalid"));
  EXPECT_THAT(Compute(Apply("isMissing", "mapMissingTo=\"1\"", kX)),
              ElementsAre("false", "false", "true", "invalid"));
  EXPECT_THAT(
      Compute(Apply("avg", "mapMissingTo=\"9\"", std::string(kX) + "<Constant>2</Constant>")),
      ElementsAre("3", "1", "9", "invalid"));
  // Every level has its own: the inner result is a missing argument of the outer call.
  EXPECT_THAT(Compute(Apply("+", "mapMissingTo=\"5.0\"",
                            Apply("*", "", std::string(kX) + kX) + "<Constant>1</Constant>")),
              ElementsAre("17", "1", "5", "invalid"));
}

TEST(Apply, ChoosesWithTreatments) {
  const std::string positive = Apply("greaterThan", "", std::string(kX) + "<Constant>0</Constant>");
  const std::string missing = "<Constant missing=\"true\"/>";
  EXPECT_THAT(Compute(Apply("if", "mapMissingTo=\"m\" defaultValue=\"d\"",
                            positive + missing + "<Constant>n</Constant>")),
              ElementsAre("m", "n", "m", "invalid"));
  EXPECT_THAT(Compute(Apply("if", "mapMissingTo=\"m\" defaultValue=\"d\"",
                            positive + "<Constant>y</Constant>")),
              ElementsAre("y", "d", "m", "invalid"));
  EXPECT_THAT(Compute(Apply("if", "", "<FieldRef field=\"x\"/><Constant>y</Constant>")),
              ElementsAre("invalid", "missing", "missing", "invalid"));
}

TEST(DefineFunction, ConvertsArgumentsAndResult) {
  const std::string functions =
      "<DefineFunction name=\"half\" optype=\"continuous\" dataType=\"integer\">"
      "<ParameterField name=\"x\" dataType=\"double\"/>" +
      CallToXml("/(x, 2)") +
      "</DefineFunction>"
      "<DefineFunction name=\"tag\" optype=\"categorical\" dataType=\"string\">"
      "<ParameterField name=\"a\"/><ParameterField name=\"b\" dataType=\"string\"/>" +
      CallToXml("if(isMissing(a), concat('none:', b), concat(half(a), ':', b))") +
      "</DefineFunction>";
  // The untyped constant 007 is a text for the parameter that is one.
  EXPECT_THAT(Compute(CallToXml("tag(x, 007)"), functions),
              ElementsAre("2:007", "0:007", "none:007", "invalid"));
  EXPECT_THAT(Compute(CallToXml("half('5')"), functions), ElementsAre("3", "3", "3", "3"));
  EXPECT_THAT(Compute(CallToXml("half('?')"), functions),
              ElementsAre("invalid", "invalid", "invalid", "invalid"));
  EXPECT_THAT(Compute(Apply("half", "mapMissingTo=\"17\" invalidValueTreatment=\"asMissing\"", kX),
                      functions),
              ElementsAre("2", "0", "17", "missing"));
}

TEST(DefineFunction, HasEveryKindOfBody) {
  const std::string parameter = "<ParameterField name=\"p\"/>";
  const auto run = [&](const std::string& body) {
    return Compute(CallToXml("f(x)"), "<DefineFunction name=\"f\" optype=\"continuous\">" +
                                          parameter + body + "</DefineFunction>");
  };
  EXPECT_THAT(run("<NormDiscrete field=\"p\" value=\"4.0\"/>"),
              ElementsAre("1", "0", "missing", "invalid"));
  EXPECT_THAT(
      run("<MapValues outputColumn=\"o\" defaultValue=\"else\"><FieldColumnPair field=\"p\" "
          "column=\"i\"/><InlineTable><row><i>4.00</i><o>four</o></row></InlineTable>"
          "</MapValues>"),
      ElementsAre("four", "else", "missing", "invalid"));
  EXPECT_THAT(run("<Discretize field=\"p\" defaultValue=\"no\"><DiscretizeBin binValue=\"yes\">"
                  "<Interval closure=\"openOpen\" leftMargin=\"1\"/></DiscretizeBin></Discretize>"),
              ElementsAre("yes", "no", "missing", "invalid"));
  EXPECT_THAT(run("<FieldRef field=\"p\" mapMissingTo=\"6\"/>"),
              ElementsAre("4", "0", "6", "invalid"));
}

TEST(DefineFunction, SeesItsParametersOnly) {
  const auto refusal = [](const std::string& functions, const std::string& call) {
    return Refusal(Document(DataField("x", "double"),
                            functions + DerivedField("d", "double", CallToXml(call))));
  };
  const auto define = [](const std::string& name, const std::string& call) {
    return "<DefineFunction name=\"" + name +
           "\" optype=\"continuous\"><ParameterField name=\"p\"/>" + CallToXml(call) +
           "</DefineFunction>\n";
  };
  EXPECT_THAT(refusal(define("f", "+(p, x)"), "1"),
              ::testing::StartsWith("260311 at element FieldRef, line 5"));
  EXPECT_THAT(refusal(define("f", "f(p)"), "1"), ::testing::HasSubstr("function f calls itself"));
  EXPECT_THAT(refusal(define("f", "g(p)") + define("g", "+(1, f(p))"), "f(x)"),
              ::testing::HasSubstr("calls itself"));
  EXPECT_THAT(refusal(define("f", "g(p)") + define("g", "p"), "f(x)"), "");
  EXPECT_THAT(refusal(define("f", "p") + define("f", "p"), "1"),
              ::testing::StartsWith("260310 at element DefineFunction, line 6"));
  EXPECT_EQ(refusal(define("f", "p"), "f(1, 2)").substr(0, 6), "260315");
  // A built-in function comes before one that a document defines under its name.
  EXPECT_THAT(Compute(CallToXml("abs(-3)"), define("abs", "'mine'")),
              ElementsAre("3", "3", "3", "3"));
}

}  // namespace
}  // namespace svmscore::transform
