// What a translator silently ignores, and the strict reading.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/intake/document_parts.h"

namespace svmscore_test {
namespace {

using svmscore::IntakeMode;

// The document is not changed, and the strict reading refuses it with the first finding.
void ExpectRemarks(const std::string& text, const std::string& steps, const std::string& refusal) {
  const Reading reading = Read(text);
  EXPECT_EQ(reading.Steps(), steps);
  EXPECT_EQ(reading.Show("PMML"), Unread(text).Show("PMML"));
  try {
    Read(text, IntakeMode::kStrict);
  } catch (const MCZandor_850::SSException& error) {
    EXPECT_EQ(reading.findings.front().detail, error.what());
  }
  EXPECT_EQ(Refusal(text, IntakeMode::kStrict), refusal);
}

// The prediction for (1, 2) is that of the document read in the translator's way.
TEST(Remarks, TellWhatIsLostAndScoreTheRest) {
  const std::string kernel = "<LinearKernelType/>";
  const std::string y = "<MiningField name='y'";
  const std::string colour = "<MiningField name='colour'";
  const struct {
    std::string pattern;
    std::string replacement;
    std::string steps;
    std::string refusal;  // in the strict mode
    double prediction = -5.6;
  } cases[] = {
      {"vectorId='b'", "vectorId='c'", "unknown-vector", "260313 SupportVector:7", -5.0},
      {"<SupportVector vectorId='b'/>", "", "surplus-coefficients", "260251 Coefficients:7", -5.0},
      {"<SupportVector vectorId='b'/>",
       "<SupportVector vectorId='b'/><SupportVector vectorId='c'/>", "surplus-vectors",
       "260251 Coefficients:7"},
      {"<Coefficient value='2'/>", "", "surplus-vectors", "260251 Coefficients:7", 8.75},
      {"id='b'", "id='a'", "vector-dropped, unknown-vector", "260313 VectorInstance:6", -5.0},
      {"id='b'", "id=''", "vector-dropped, unknown-vector", "260313 VectorInstance:6", -5.0},
      {"value='2'", "value='2x'", "bad-coefficient", "260153 Coefficient:7", -0.1},
      {"value='2'", "value=''", "bad-coefficient", "260153 Coefficient:7", -0.1},
      {"<SupportVectorMachine ", "<SupportVectorMachine threshold='low' ", "bad-threshold",
       "260153 SupportVectorMachine:7"},
      {kernel, kernel + "<BesselKernelType/>", "unknown-kernel", "260304 BesselKernelType:4"},
      {y, y + " missingValueReplacment='3'", "attribute-ignored", "260304 MiningField:4"},
      {"</SupportVectors>", "</SupportVectors><SupportVectors/>", "second-list",
       "260313 SupportVectors:7"},
      {kernel, "<Targets><Target field='u'/></Targets>" + kernel, "target-unknown",
       "260311 Target:4"},
      {kernel, "<Targets><Target field='t'/><Target field='t'/></Targets>" + kernel,
       "target-declared-twice", "260310 Target:4"},
      {"functionName", "svmRepresentation='Vectors' functionName", "attribute-value-ignored",
       "260153 SupportVectorMachineModel:3"},
      {"'string'>", "'string'><Interval closure='openOpen' leftMargin='1'/>", "interval-ignored",
       "260313 Interval:2"},
      {colour, colour + " outliers='asExtremeValues' lowValue='1'", "outliers-ignored",
       "260153 MiningField:4"},
      {"<FieldRef field='y'/>", "<Field name='z'/><FieldRef field='y'/>", "unknown-vector-field",
       "260304 Field:5"},
      {colour, "<MiningField name='hue'/>" + colour, "unknown-mining-field",
       "260311 MiningField:4"},
      {y, y + "/>" + y, "mining-field-repeated", "260310 MiningField:4"},
      {colour, colour + " usageType='none'", "unknown-usage", "260153 MiningField:4"},
      {y, y + " missingValueTreatment='mean'", "missing-treatment-ignored", "260153 MiningField:4"},
      {kernel, "<SigmoidKernelType/>" + kernel, "second-kernel", "260313 SigmoidKernelType:4"},
      {kernel, "<PolynomialKernelType gamma='1' coef0='0' degree='-1'/>", "degree-minus-one",
       "260304 PolynomialKernelType:4"},
  };
  for (const auto& [pattern, replacement, steps, refusal, prediction] : cases) {
    SCOPED_TRACE(replacement);
    const std::string text = Replaced(Parts().Text(), pattern, replacement);
    ExpectRemarks(text, steps, refusal);
    EXPECT_NEAR(Predict(text, At("1", "2")), prediction, 1e-12);
  }
  const std::string no_value = Replaced(Parts().Text(), "value='-3'", "");
  EXPECT_EQ(Read(no_value).Steps(), "no-coefficient-value");
  EXPECT_EQ(Predict(no_value, At("1", "2")),
            Predict(Replaced(Parts().Text(), "value='-3'", "value='0'"), At("1", "2")));
  EXPECT_NE(Predict(no_value, At("1", "2")), Predict(Parts().Text(), At("1", "2")));
}

TEST(Remarks, TellOfNumbersThatAreNoneToComputeWith) {
  const std::string kernel = "<LinearKernelType/>";
  const std::string machine = "<SupportVectorMachine ";
  const std::string support = "<SupportVectors>";
  const auto extended = [&support](const std::string& content) {
    return "<Extension extender='svmscore'>" + content + "</Extension>" + support;
  };
  const std::string finite = "number-not-finite";
  const struct {
    std::string pattern;
    std::string replacement;
    std::string steps;
    std::string refusal;
  } cases[] = {
      {"value='2'", "value='-INF'", finite, "260313 Coefficient:7"},
      {"absoluteValue='0.5'", "absoluteValue=' 1e999 '", finite, "260313 Coefficients:7"},
      {machine, machine + "threshold='NaN' ", finite, "260313 SupportVectorMachine:7"},
      {kernel, "<RadialBasisKernelType gamma='NaN'/>", finite, "260313 RadialBasisKernelType:4"},
      {kernel, "<Targets><Target field='t' rescaleFactor='INF'/></Targets>" + kernel, finite,
       "260313 Target:4"},
      {">0.1<", ">1e0400<", finite, "260313 REAL-Entries:6"},
      {">0.1<", ">" + std::string(400, '9') + "<", finite, "260313 REAL-Entries:6"},
      {"<REAL-Entries>0.25 -1.5", "<REAL-Entries>0x1 NaN", finite + ", bad-number",
       "260313 REAL-Entries:6"},
      {">0.1<", ">0.<b>1</b><", "element-in-text", "260313 b:6"},
      {support, extended("<StandardDeviation>-2</StandardDeviation>"), "deviation-negative",
       "260313 StandardDeviation:7"},
      {support, extended("<StandardDeviation>INF</StandardDeviation>"), finite,
       "260313 StandardDeviation:7"},
      {support, extended(""), "extension-incomplete", "260114 Extension:7"},
  };
  for (const auto& [pattern, replacement, steps, refusal] : cases) {
    SCOPED_TRACE(replacement);
    ExpectRemarks(Replaced(Parts().Text(), pattern, replacement), steps, refusal);
  }
  Parts parts;
  parts.Classify();
  const auto with = [&](const std::string& a) {
    return Replaced(parts.Text(), support,
                    extended("<ResponseCategory response='yes' nonResponse='no'/>"
                             "<ProbabilityParameters A='" +
                             a + "' B='0'/>"));
  };
  ExpectRemarks(with("NaN"), finite, "260313 ProbabilityParameters:7");
  ExpectRemarks(with("x"), "extension-incomplete", "260114 Extension:7");
  EXPECT_EQ(Read(with("-2")).Steps(), "");
}

TEST(Remarks, TellOfFractionsInPlaceOfMissingIntegers) {
  const auto with = [](const std::string& replacement) {
    Parts parts;
    parts.fields = Replaced(parts.fields, Field("x"), Field("x", "continuous", "integer"));
    parts.schema = Replaced(parts.schema, "name='x'",
                            "name='x' missingValueReplacement='" + replacement + '\'');
    return parts.Text();
  };
  const std::string refusal = "260153 MiningField:4";
  EXPECT_EQ(Read(with("1.0")).Steps(), "");
  ExpectRemarks(with("9007199254740993"), "rounded-replacement", refusal);
  ExpectRemarks(with("2.7"), "fractional-replacement", refusal);
  EXPECT_NEAR(Predict(with("2.7"), {{"y", "2"}}), -4.75, 1e-12);
}

// Local derived fields come before inputs, and inputs before those of the whole document.
TEST(Remarks, TellOfNamesThatAreUsedTwice) {
  const std::string ten =
      "<DerivedField name='x' optype='continuous' dataType='double'>"
      "<Constant>10</Constant></DerivedField>";
  const std::string ln =
      "<DefineFunction name='ln' optype='continuous'><ParameterField name='p'/>"
      "<FieldRef field='p'/></DefineFunction>";
  const struct {
    std::string global;
    std::string local;
    std::string steps;
    double prediction;  // for (1, 2); with 10 for x it is -1.1
  } cases[] = {
      {ten, "", "derived-field-under-input", -5.6},
      {"", ten, "derived-field-over-input, derived-field-reached", -1.1},
      {ln, ten,
       "derived-field-over-input, function-name-taken, transformations-merged, "
       "derived-field-reached",
       -1.1},
  };
  for (const auto& [global, local, steps, prediction] : cases) {
    Parts parts;
    const auto wrapped = [](const std::string& name, const std::string& content) {
      return content.empty() ? "" : '<' + name + '>' + content + "</" + name + '>';
    };
    parts.global = wrapped("TransformationDictionary", global);
    parts.local = wrapped("LocalTransformations", local);
    EXPECT_EQ(Read(parts.Text()).Steps(), steps);
    EXPECT_NEAR(Predict(parts.Text(), At("1", "2")), prediction, 1e-12);
    EXPECT_THAT(Refusal(parts.Text(), IntakeMode::kStrict), testing::StartsWith("260310 D"));
  }
}

TEST(Remarks, TellOfVectorsWithoutFields) {
  Parts parts;
  parts.positions = "<Extension/>";
  parts.vectors = "<VectorInstance id='a'><REAL-SparseArray n='0'/></VectorInstance>";
  ExpectRemarks(parts.Text(), "no-vector-fields, unknown-vector 2, empty-machine",
                "260114 VectorFields:5");
}

TEST(Remarks, TellOfDecisionRulesThatAreNotKnown) {
  Parts parts;
  parts.Classify();
  const std::string model = parts.model;
  const std::string expected = Score(parts.Text(), At("1", "2"));
  for (const auto& [attribute, steps] :
       {std::pair(" maxWins='maybe'", "bad-max-wins"),
        std::pair(" classificationMethod='OneVsAll'", "unknown-method"),
        std::pair(" threshold='none'", "bad-threshold")}) {
    parts.model = model + attribute;
    ExpectRemarks(parts.Text(), steps, "260153 SupportVectorMachineModel:3");
    EXPECT_EQ(Score(parts.Text(), At("1", "2")), expected) << attribute;
  }
}

TEST(Strict, RefusesWhatIsGuessedAndNotWhatIsOnlyRewritten) {
  Parts parts;
  parts.root = "version='4.3' xmlns='http://www.dmg.org/PMML-4_4'";
  const std::string sparse =
      "<REAL-SparseArray n='2'><Indices>1 2</Indices><REAL-Entries>0.25 -1.5</REAL-Entries>"
      "</REAL-SparseArray>";
  parts.vectors = Replaced(parts.vectors, sparse, "<Array>0.25 -1.5</Array>");
  EXPECT_EQ(Read(parts.Text(), IntakeMode::kStrict).Steps(), "version-disagreement, dense-array");
  parts.root = "xmlns='http://www.dmg.org/PMML-4_4'";
  EXPECT_EQ(Refusal(parts.Text(), IntakeMode::kStrict), "260307 version-from-namespace PMML:1");
}

TEST(Refusals, AreNotForDocumentsWithoutAModel) {
  for (const char* content :
       {"", "<SupportVectorMachineModel/>",
        "<SupportVectorMachineModel functionName='classification'><VectorDictionary><VectorFields>"
        "<FieldRef/></VectorFields></VectorDictionary><SupportVectorMachine/>"
        "</SupportVectorMachineModel>"}) {
    const std::string text = "<PMML version='4.4' xmlns='http://www.dmg.org/PMML-4_4'>";
    EXPECT_EQ(Read(text + content + "</PMML>").Steps(), "") << content;
  }
}

// Findings beyond the first few of a kind are only counted; what is suggested for them is too.
TEST(Remarks, SuggestNamesInTheFindingsOfTheNames) {
  Parts parts;
  for (const char* name : {"a", "b", "c", "d", "e", "f"}) {
    parts.fields += Field(name);
    parts.schema += std::string("<MiningField name='") + name +
                    "' usageType='actve' missingValueTreatment='q'/>";
  }
  for (const svmscore::Finding& finding : Read(parts.Text()).findings) {
    EXPECT_EQ(finding.detail.find("did you mean") != std::string::npos,
              finding.Name() == "unknown-usage")
        << finding.detail;
  }
}

}  // namespace
}  // namespace svmscore_test
