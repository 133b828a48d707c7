// The rules by which machines decide, from the oldest version on.
#include <gtest/gtest.h>

#include "host/message_codes.h"
#include "host/number_text.h"
#include "tests/intake/reading.h"

namespace svmscore_test {
namespace {

namespace code = svmscore::code;

// A machine whose decision value is x itself.
std::string Identity(const std::string& attributes) {
  return "<SupportVectorMachine " + attributes +
         R"(><SupportVectors><SupportVector vectorId="a"/></SupportVectors>)"
         R"(<Coefficients><Coefficient value="1"/></Coefficients></SupportVectorMachine>)";
}

Parts TwoClasses(const std::string& version, const std::string& model, const std::string& machine) {
  Parts parts;
  parts.Classify();
  parts.root = "version=\"" + version + '"';
  parts.model += ' ' + model;
  parts.vectors = R"(<VectorInstance id="a"><Array type="real">1 0</Array></VectorInstance>)";
  parts.machines = Identity(machine);
  return parts;
}

std::string Decide(const Parts& parts, const std::string& value) {
  return Score(parts.Text(), {{"x", value}, {"y", "0"}});
}

TEST(OldTwoClassForm, ALargerSideFromOneHalfOnIsTheTarget) {
  const Parts parts =
      TwoClasses("3.2", R"(alternateBinaryTargetCategory="no")", R"(targetCategory="yes")");
  EXPECT_EQ(Decide(parts, "0.5"), "yes");
  EXPECT_EQ(Decide(parts, "0.49999999999999994"), "no");
  EXPECT_EQ(Decide(parts, "1"), "yes");
  EXPECT_EQ(Decide(parts, "-3"), "no");
  EXPECT_EQ(Read(parts.Text()).Steps(), "dense-array 1, two-class-rounding 1");
}

TEST(OldTwoClassForm, TakesTheNewerRuleWithItsAttributes) {
  for (const char* model : {R"(alternateBinaryTargetCategory="no" threshold="0.25")",
                            R"(alternateBinaryTargetCategory="no" maxWins="false")"}) {
    const Parts parts = TwoClasses("3.1", model, R"(targetCategory="yes" threshold="0.25")");
    EXPECT_EQ(Decide(parts, "0.2"), "yes") << model;
    EXPECT_EQ(Decide(parts, "0.25"), "no") << model;
  }
  // The machine's own second category counts.
  const Parts parts = TwoClasses("3.2", R"(alternateBinaryTargetCategory="maybe")",
                                 R"(targetCategory="yes" alternateTargetCategory="no")");
  EXPECT_EQ(Decide(parts, "-1"), "yes");
  EXPECT_EQ(Decide(parts, "1"), "no");
}

TEST(OldTwoClassForm, IsAFallbackInNewerVersions) {
  const Parts parts =
      TwoClasses("4.2", R"(alternateBinaryTargetCategory="no")", R"(targetCategory="yes")");
  EXPECT_EQ(Decide(parts, "0"), "no");
  EXPECT_EQ(Decide(parts, "-0.1"), "yes");
  EXPECT_EQ(Read(parts.Text()).Steps(), "dense-array 1, alternate-on-model 1");
}

TEST(OldTwoClassForm, OfSeveralMachinesIsRefused) {
  Parts parts =
      TwoClasses("3.2", R"(alternateBinaryTargetCategory="no")", R"(targetCategory="yes")");
  parts.machines += parts.machines;
  EXPECT_EQ(Refusal(parts.Text()).GetErrorCode(), code::kUnsupported);
}

// Three classes, one machine a pair: f(a,b) = x, f(b,c) = x, f(c,a) = x.
Parts ThreeClasses(const std::string& third) {
  Parts parts = TwoClasses("4.1", "", "");
  parts.target = R"(<DataField name="t" optype="categorical" dataType="string">)"
                 R"(<Value value="a"/><Value value="b"/><Value value="c"/></DataField>)";
  parts.machines = Identity(R"(targetCategory="a" alternateTargetCategory="b")") +
                   Identity(R"(targetCategory="b" alternateTargetCategory="c")") + Identity(third);
  return parts;
}

TEST(Method, IsInferredWhereEveryPairHasItsMachine) {
  const Parts parts = ThreeClasses(R"(targetCategory="a" alternateTargetCategory="c")");
  EXPECT_EQ(Read(parts.Text()).Steps(), "dense-array 1, method-inferred 1");
  // Not below 0: b, c and c have the votes.
  EXPECT_EQ(Decide(parts, "1"), "c");
  EXPECT_EQ(Decide(parts, "-1"), "a");
}

TEST(Method, StaysWhereThePairsDoNotShowIt) {
  for (const char* third :
       {R"(targetCategory="b" alternateTargetCategory="a")", R"(targetCategory="c")",
        R"(targetCategory="c" alternateTargetCategory="d")"}) {
    EXPECT_EQ(Read(ThreeClasses(third).Text()).Steps(), "dense-array 1") << third;
  }
  Parts parts = ThreeClasses(R"(targetCategory="a" alternateTargetCategory="c")");
  parts.model += R"(classificationMethod="OneAgainstAll")";
  EXPECT_EQ(Read(parts.Text()).Steps(), "dense-array 1");
}

// Coefficients by field, and as the support vectors that they sum up.
TEST(CoefficientForm, ScoresTheSumOfItsCoefficients) {
  Parts parts;
  parts.model += R"( svmRepresentation="Coefficients")";
  parts.vectors = R"(<VectorInstance id="machine 1"><Array>9 9</Array></VectorInstance>)";
  parts.machines = R"(<SupportVectorMachine><Coefficients absoluteValue="0.9">)"
                   R"(<Coefficient value="0.1"/><Coefficient/></Coefficients>)"
                   R"(</SupportVectorMachine>)";
  const Reading reading = Read(parts.Text());
  EXPECT_EQ(reading.Steps(), "dense-array 1, coefficient-form 1");
  EXPECT_EQ(reading.Show("SupportVectorMachine"),
            R"(<SupportVectorMachine><SupportVectors><SupportVector vectorId="machine 2">)"
            R"(</SupportVector></SupportVectors><Coefficients absoluteValue="0.9">)"
            R"(<Coefficient value="1"></Coefficient></Coefficients></SupportVectorMachine>)");
  double sum = 0.1 * 0.7;
  sum += 0 * 3.0;
  EXPECT_EQ(*svmscore::ParseNumber(Score(parts.Text(), {{"x", "0.7"}, {"y", "3"}})), sum + 0.9);
}

TEST(CoefficientForm, IsRefusedWhereItSaysLessThanTheScore) {
  Parts parts;
  parts.model += R"( svmRepresentation="Coefficients")";
  EXPECT_EQ(Refusal(parts.Text()).GetErrorCode(), code::kBadContent);
  parts.machines = R"(<SupportVectorMachine><Coefficients>)"
                   R"(<Coefficient value="1"/></Coefficients></SupportVectorMachine>)";
  EXPECT_EQ(Refusal(parts.Text()).GetErrorCode(), code::kLengthsDiffer);
  parts.kernel = "<RadialBasisKernelType/>";
  EXPECT_EQ(Refusal(parts.Text()).GetErrorCode(), code::kUnsupported);
  // A translator says that there is no kernel.
  parts.kernel = "";
  parts.positions = R"(<FieldRef field="x"/>)";
  parts.vectors = R"(<VectorInstance id="a"><Array>1</Array></VectorInstance>)";
  EXPECT_EQ(Read(parts.Text()).Steps(), "dense-array 1, coefficient-form 1");
}

TEST(Kernel, ParametersOfMinusOneAreNotTakenForAbsent) {
  Parts parts;
  parts.kernel = R"(<PolynomialKernelType gamma="-1.0" coef0="-1" degree="2"/>)";
  EXPECT_EQ(Read(parts.Text()).Steps(), "kernel-minus-one 2");
  const double to_a = 0.25 * 2;
  const double expected = 2 * (-to_a - 1) * (-to_a - 1) - 3 + 0.5;
  EXPECT_NEAR(*svmscore::ParseNumber(Score(parts.Text(), {{"x", "2"}, {"y", "0"}})), expected,
              1e-14);
  parts.kernel = R"(<RadialBasisKernelType gamma="2" coef0="-1" degree="-1"/>)";
  EXPECT_EQ(Read(parts.Text()).Steps(), "attribute-ignored 2");
}

}  // namespace
}  // namespace svmscore_test
