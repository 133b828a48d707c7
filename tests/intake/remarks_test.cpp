// What a translator passes over in silence, and the strict reading.
#include <gtest/gtest.h>

#include "host/message_codes.h"
#include "host/number_text.h"
#include "tests/intake/reading.h"

namespace svmscore_test {
namespace {

namespace code = svmscore::code;
using svmscore::IntakeMode;

// The prediction for (1, 2) is that of the document read in the translator's way; -5.6 were nothing
// amiss.
TEST(Remarks, TellWhatIsLostAndScoreTheRest) {
  const struct {
    std::string pattern;
    std::string replacement;
    std::string steps;
    double prediction;
    int code;  // in the strict mode, as is the place
    std::string place;
  } cases[] = {
      {R"(vectorId="b")", R"(vectorId="c")", "unknown-vector-id 1", -5.0, code::kBadContent,
       "element SupportVector, line 7"},
      {R"(<SupportVector vectorId="b"/>)", "", "unpaired-terms 1", -5.0, code::kLengthsDiffer,
       "element Coefficients, line 7"},
      {R"(<Coefficient value="2"/>)", "", "unpaired-terms 1", 8.75, code::kLengthsDiffer,
       "element Coefficients, line 7"},
      {R"(id="b")", R"(id="a")", "duplicate-id 1, unknown-vector-id 1", -5.0, code::kDuplicateName,
       "element VectorInstance, line 6"},
      {R"(id="b")", R"(id="")", "empty-id 1, unknown-vector-id 1", -5.0, code::kBadValue,
       "element VectorInstance, line 6"},
      {R"(value="2")", R"(value="2x")", "unreadable-attribute 1", -0.1, code::kBadValue,
       "element Coefficient, line 7"},
      {R"(value="2")", R"(value="")", "unreadable-attribute 1", -0.1, code::kBadValue,
       "element Coefficient, line 7"},
      {R"(absoluteValue="0.5")", R"(absoluteValue="0,5")", "unreadable-attribute 1", -6.1,
       code::kBadValue, "element Coefficients, line 7"},
      {"<SupportVectorMachine ", R"(<SupportVectorMachine threshold="low" )",
       "unreadable-attribute 1", -5.6, code::kBadValue, "element SupportVectorMachine, line 7"},
      {"<LinearKernelType/>", "<LinearKernelType/><BesselKernelType/>", "element-ignored 1", -5.6,
       code::kUnsupported, "element BesselKernelType, line 4"},
      {R"(name="y"/><M)", R"(name="y" missingValueReplacment="3"/><M)", "attribute-ignored 1", -5.6,
       code::kUnsupported, "element MiningField, line 4"},
      {"</SupportVectors>", R"(</SupportVectors><SupportVectors/>)", "element-repeated 1", -5.6,
       code::kBadContent, "element SupportVectors, line 7"},
      {"<LinearKernelType/>", R"(<Targets><Target field="u"/></Targets><LinearKernelType/>)",
       "target-unknown 1", -5.6, code::kUnknownField, "element Target, line 4"},
      {"<LinearKernelType/>",
       R"(<Targets><Target field="t"/><Target field="t"/></Targets>)"
       "<LinearKernelType/>",
       "target-declared-twice 1", -5.6, code::kDuplicateName, "element Target, line 4"},
      {R"(functionName)", R"(svmRepresentation="Vectors" functionName)",
       "attribute-value-ignored 1", -5.6, code::kBadValue,
       "element SupportVectorMachineModel, line 3"},
      {R"(dataType="string"/>)",
       R"(dataType="string"><Interval closure="openOpen" leftMargin="1"/></DataField>)",
       "interval-ignored 1", -5.6, code::kBadContent, "element Interval, line 2"},
      {R"(name="colour"/>)", R"(name="colour" outliers="asExtremeValues" lowValue="1"/>)",
       "outliers-ignored 1", -5.6, code::kBadValue, "element MiningField, line 4"},
      {R"(<FieldRef field="y"/>)", R"(<Field name="z"/><FieldRef field="y"/>)",
       "vector-field-ignored 1", -5.6, code::kUnsupported, "element Field, line 5"},
      {R"(name="colour"/>)", R"(name="colour"/><MiningField name="hue"/>)",
       "mining-field-ignored 1", -5.6, code::kUnknownField, "element MiningField, line 4"},
      {R"(<MiningField name="y"/>)", R"(<MiningField name="y"/><MiningField name="y"/>)",
       "mining-field-repeated 1", -5.6, code::kDuplicateName, "element MiningField, line 4"},
      {R"(<MiningField name="colour"/>)", R"(<MiningField name="colour" usageType="none"/>)",
       "usage-ignored 1", -5.6, code::kBadValue, "element MiningField, line 4"},
      {R"(<MiningField name="y"/>)", R"(<MiningField name="y" missingValueTreatment="mean"/>)",
       "missing-treatment-ignored 1", -5.6, code::kBadValue, "element MiningField, line 4"},
      {"<LinearKernelType/>", "<SigmoidKernelType/><LinearKernelType/>", "several-kernels 1", -5.6,
       code::kBadContent, "element SigmoidKernelType, line 4"},
      {"<LinearKernelType/>", R"(<PolynomialKernelType coef0="0" degree="-1"/>)",
       "degree-minus-one 1", -5.6, code::kUnsupported, "element PolynomialKernelType, line 4"},
  };
  for (const auto& [pattern, replacement, steps, prediction, code, place] : cases) {
    const std::string text = Replaced(Parts().Text(), pattern, replacement);
    const Reading reading = Read(text);
    EXPECT_EQ(reading.Steps(), steps) << pattern;
    for (const auto& step : reading.steps) EXPECT_FALSE(step.changes) << step.name;
    EXPECT_EQ(Read(text, IntakeMode::kTolerate).Steps(), steps) << pattern;
    EXPECT_NEAR(*svmscore::ParseNumber(Score(text, {{"x", "1"}, {"y", "2"}})), prediction, 1e-12)
        << pattern;
    const auto error = Refusal(text, IntakeMode::kStrict);
    EXPECT_EQ(error.GetErrorCode(), code) << pattern << ": " << error.what();
    EXPECT_EQ(error.GetPlace(), place) << pattern;
  }
}

TEST(Remarks, TellOfFractionsInPlaceOfMissingIntegers) {
  Parts parts;
  parts.fields = Replaced(parts.fields, R"(name="x" optype="continuous" dataType="double")",
                          R"(name="x" optype="continuous" dataType="integer")");
  const std::string schema = parts.schema;
  const auto read = [&](const std::string& replacement) {
    parts.schema = Replaced(schema, R"(name="x")",
                            R"(name="x" missingValueReplacement=")" + replacement + '"');
    return Read(parts.Text()).Steps();
  };
  EXPECT_EQ(read("1.0"), "");
  EXPECT_EQ(read("9007199254740993"), "rounded-replacement 1");
  EXPECT_EQ(read("2.7"), "fractional-replacement 1");
  EXPECT_NEAR(*svmscore::ParseNumber(Score(parts.Text(), {{"y", "2"}})), -4.75, 1e-12);
  EXPECT_EQ(Refusal(parts.Text(), IntakeMode::kStrict).GetErrorCode(), code::kBadValue);
}

// Local derived fields come before inputs, and inputs before those of the whole document.
TEST(Remarks, TellOfNamesThatAreUsedTwice) {
  const std::string ten =
      R"(<DerivedField name="x" optype="continuous" dataType="double"><Constant>10</Constant>)"
      "</DerivedField>";
  const std::string ln =
      R"(<DefineFunction name="ln" optype="continuous"><ParameterField name="p"/>)"
      R"(<FieldRef field="p"/></DefineFunction>)";
  const auto global = [](const std::string& content) {
    return "<TransformationDictionary>" + content + "</TransformationDictionary>";
  };
  const std::string local = "<LocalTransformations>" + ten + "</LocalTransformations>";
  const std::string reached = "derived-field-over-input 1, derived-field-reached 1";
  const struct {
    std::string global;
    std::string local;
    std::string steps;
    double prediction;  // for (1, 2); with 10 for x it is -1.1
  } cases[] = {
      {global(ten), "", "derived-field-under-input 1", -5.6},
      {"", local, reached, -1.1},
      {global(ln), local,
       "derived-field-over-input 1, function-name-taken 1, "
       "transformations-merged 1, derived-field-reached 1",
       -1.1},
  };
  for (const auto& [global_part, local_part, steps, prediction] : cases) {
    Parts parts;
    parts.global = global_part;
    parts.local = local_part;
    EXPECT_EQ(Read(parts.Text()).Steps(), steps);
    EXPECT_NEAR(*svmscore::ParseNumber(Score(parts.Text(), {{"x", "1"}, {"y", "2"}})), prediction,
                1e-12);
    EXPECT_EQ(Refusal(parts.Text(), IntakeMode::kStrict).GetErrorCode(), code::kDuplicateName);
  }
}

TEST(Remarks, TellOfVectorsWithoutFields) {
  Parts parts;
  parts.positions = "<Extension/>";
  parts.vectors = R"(<VectorInstance id="a"><REAL-SparseArray n="0"/></VectorInstance>)"
                  R"(<VectorInstance id="b"><REAL-SparseArray n="0"/></VectorInstance>)";
  const Reading reading = Read(parts.Text());
  ASSERT_FALSE(reading.steps.empty());
  EXPECT_EQ(reading.steps[0].name, "no-vector-fields");
  EXPECT_FALSE(reading.steps[0].changes);
  const auto error = Refusal(parts.Text(), IntakeMode::kStrict);
  EXPECT_EQ(error.GetErrorCode(), code::kLacksChildren);
  EXPECT_EQ(error.GetPlace(), "element VectorFields, line 5");
}

TEST(Remarks, TellOfDecisionRulesThatAreNotKnown) {
  Parts parts;
  parts.Classify();
  const std::string model = parts.model;
  const std::string expected = Score(parts.Text(), {{"x", "1"}, {"y", "2"}});
  for (const auto& [attribute, step] :
       {std::pair(R"( maxWins="maybe")", "max-wins-assumed 1"),
        std::pair(R"( classificationMethod="OneVsAll")", "method-assumed 1"),
        std::pair(R"( threshold="none")", "unreadable-attribute 1")}) {
    parts.model = model + attribute;
    EXPECT_EQ(Read(parts.Text()).Steps(), step);
    EXPECT_EQ(Score(parts.Text(), {{"x", "1"}, {"y", "2"}}), expected) << step;
    EXPECT_EQ(Refusal(parts.Text(), IntakeMode::kStrict).GetErrorCode(), code::kBadValue);
  }
}

TEST(Remarks, AnAbsentCoefficientIsZeroWithoutAny) {
  const std::string text = Replaced(Parts().Text(), R"(value="-3")", "");
  EXPECT_EQ(Read(text).Steps(), "");
}

TEST(Strict, RefusesEveryChangeAndNoRemark) {
  Parts parts;
  parts.root = R"(version="4.3" xmlns="http://www.dmg.org/PMML-4_4")";
  EXPECT_EQ(Read(parts.Text(), IntakeMode::kStrict).Steps(), "version-disagreement 1");
  parts.vectors = R"(<VectorInstance id="a"><Array>1 2</Array></VectorInstance>)"
                  R"(<VectorInstance id="b"><Array>1 2</Array></VectorInstance>)";
  const auto error = Refusal(parts.Text(), IntakeMode::kStrict);
  EXPECT_EQ(error.GetErrorCode(), code::kNeedsIntake);
  EXPECT_EQ(error.GetPlace(), "element Array, line 6");
  EXPECT_NE(std::string(error.what()).find("dense-array"), std::string::npos);
}

TEST(Refusals, CoverRootsOfOtherLanguages) {
  const std::string text = Replaced(Parts().Text(), "PMML", "XMML");
  const auto error = Refusal(text);
  EXPECT_EQ(error.GetErrorCode(), code::kBadContent);
  EXPECT_EQ(error.GetPlace(), "element XMML, line 1");
}

TEST(Refusals, DocumentsWithoutAModelAreTheTranslators) {
  for (const char* content :
       {"", "<SupportVectorMachineModel/>",
        "<SupportVectorMachineModel functionName='classification'><VectorDictionary><VectorFields>"
        "<FieldRef/></VectorFields></VectorDictionary><SupportVectorMachine/>"
        "</SupportVectorMachineModel>"}) {
    const std::string text = "<PMML version='4.4' xmlns='http://www.dmg.org/PMML-4_4'>";
    EXPECT_EQ(Read(text + content + "</PMML>").Steps(), "") << content;
  }
}

}  // namespace
}  // namespace svmscore_test
