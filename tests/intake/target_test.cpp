// Targets, their categories, and models that have none.
#include <gtest/gtest.h>

#include "host/message_codes.h"
#include "tests/intake/reading.h"

namespace svmscore_test {
namespace {

namespace code = svmscore::code;

// 2 * (0.25 x - 1.5 y) - 3 * 0.1 y + 0.5: above 0 for x = 4, below for x = -4.
const Case kAbove = {{"x", "4"}, {"y", "0"}};
const Case kBelow = {{"x", "-4"}, {"y", "0"}};

TEST(Labels, AreComparedInTheTargetsType) {
  Parts parts;
  parts.Classify();
  parts.target = R"(<DataField name="t" optype="categorical" dataType="integer">)"
                 R"(<Value value="1"/><Value value="2"/></DataField>)";
  parts.machines = Parts::Machine(R"(targetCategory="1.0" alternateTargetCategory="02")");
  EXPECT_EQ(Read(parts.Text()).Steps(), "category-spelling 2");
  EXPECT_EQ(Score(parts.Text(), kAbove), "2");
  EXPECT_EQ(Score(parts.Text(), kBelow), "1");
  // Texts are compared as they are.
  parts.target = R"(<DataField name="t" optype="categorical" dataType="string">)"
                 R"(<Value value="1"/><Value value="2"/></DataField>)";
  EXPECT_EQ(Read(parts.Text()).Steps(), "");
}

TEST(Labels, TheOtherOfTwoIsUnderstood) {
  Parts parts;
  parts.Classify();
  parts.machines = Parts::Machine(R"(targetCategory="no")");
  EXPECT_EQ(Read(parts.Text()).Steps(), "second-category 1");
  EXPECT_EQ(Score(parts.Text(), kAbove), "yes");
  EXPECT_EQ(Score(parts.Text(), kBelow), "no");
  parts.machines = Parts::Machine(R"(targetCategory="maybe")");
  EXPECT_EQ(Read(parts.Text()).Steps(), "");
}

TEST(Categories, ComeFromTheMachinesWhereTheTargetListsNone) {
  Parts parts;
  parts.Classify();
  parts.target = R"(<DataField name="t" optype="continuous" dataType="double">)"
                 R"(<Value value="-9" property="missing"/></DataField>)";
  parts.machines = Parts::Machine(R"(targetCategory="1" alternateTargetCategory="0.0")");
  const Reading reading = Read(parts.Text());
  EXPECT_EQ(reading.Steps(), "target-categorical 1, target-categories 1");
  EXPECT_EQ(reading.Show("DataField", 3),
            R"(<DataField dataType="double" name="t" optype="categorical">)"
            R"(<Value property="missing" value="-9"></Value><Value value="1"></Value>)"
            R"(<Value value="0.0"></Value></DataField>)");
  EXPECT_EQ(Score(parts.Text(), kAbove), "0.0");
}

TEST(Categories, OfEqualValueAreOne) {
  Parts parts;
  parts.Classify();
  parts.target = R"(<DataField name="t" optype="categorical" dataType="integer"/>)";
  parts.model += R"( classificationMethod="OneAgainstOne")";
  parts.machines = Parts::Machine(R"(targetCategory="1" alternateTargetCategory="2")") +
                   Parts::Machine(R"(targetCategory="1.0" alternateTargetCategory="3")") +
                   Parts::Machine(R"(targetCategory="2.0" alternateTargetCategory="3.0")");
  EXPECT_EQ(Read(parts.Text()).Steps(), "target-categories 1, category-spelling 3");
  EXPECT_EQ(Score(parts.Text(), kAbove), "3");
}

TEST(Categories, OfTheTargetElementCount) {
  Parts parts;
  parts.Classify();
  parts.target = R"(<DataField name="t" optype="categorical" dataType="string"/>)";
  parts.local = R"(<Targets><Target field="t"><TargetValue value="no"/>)"
                R"(<TargetValue value="yes"/></Target></Targets>)";
  EXPECT_EQ(Read(parts.Text()).Steps(), "");
  EXPECT_EQ(Score(parts.Text(), kAbove), "no");
}

TEST(Target, IsAddedToARegressionThatNamesNone) {
  Parts parts;
  const std::string expected = Score(parts.Text(), kAbove);
  parts.target = R"(<DataField name="prediction" optype="continuous" dataType="double"/>)";
  parts.schema = R"(<MiningField name="x"/><MiningField name="y"/>)";
  const Reading reading = Read(parts.Text());
  EXPECT_EQ(reading.Steps(), "target-added 1");
  EXPECT_EQ(reading.Show("MiningField", 2),
            R"x(<MiningField name="prediction (2)" usageType="target"></MiningField>)x");
  EXPECT_EQ(Score(parts.Text(), kAbove), expected);
}

// Wraps the model of a document in an AnomalyDetectionModel.
std::string Wrapped(const Parts& parts, const std::string& attributes, const std::string& content) {
  std::string text = parts.Text();
  text.insert(text.find("<SupportVectorMachineModel"),
              "<AnomalyDetectionModel functionName=\"regression\" " + attributes + '>' + content);
  text.insert(text.find("</PMML>"), "</AnomalyDetectionModel>");
  return text;
}

TEST(AnomalyDetection, IsLiftedWithWhatSurroundsIt) {
  Parts parts;
  parts.schema = R"(<MiningField name="x" invalidValueTreatment="asIs"/><MiningField name="y"/>)";
  parts.local = R"(<Output><OutputField name="raw"/><OutputField name="score"/></Output>)";
  const std::string text =
      Wrapped(parts, R"(algorithmType="ocsvm")",
              R"(<MiningSchema><MiningField name="y" missingValueReplacement="2"/>)"
              R"(<MiningField name="x"/><MiningField name="colour"/></MiningSchema>)"
              R"(<Output><OutputField name="score" feature="predictedValue"/></Output>)");
  const Reading reading = Read(text);
  EXPECT_EQ(reading.Steps(), "anomaly-detection-lifted 1, target-added 1");
  EXPECT_EQ(reading.Show("AnomalyDetectionModel"), "");
  EXPECT_EQ(reading.Show("Output"),
            R"(<Output><OutputField name="raw"></OutputField>)"
            R"(<OutputField feature="predictedValue" name="score"></OutputField></Output>)");
  EXPECT_EQ(reading.Show("MiningSchema"),
            R"(<MiningSchema><MiningField invalidValueTreatment="asIs" name="x"></MiningField>)"
            R"(<MiningField missingValueReplacement="2" name="y"></MiningField>)"
            R"(<MiningField name="colour"></MiningField>)"
            R"(<MiningField name="prediction" usageType="target"></MiningField></MiningSchema>)");
  EXPECT_EQ(Score(text, {{"x", "1"}}), Score(Parts().Text(), {{"x", "1"}, {"y", "2"}}));
}

TEST(AnomalyDetection, OfAnotherMeaningIsRefused) {
  const Parts parts;
  EXPECT_EQ(Refusal(Wrapped(parts, R"(algorithmType="iforest")", "")).GetErrorCode(),
            code::kUnsupported);
  Parts treated;
  treated.schema = R"(<MiningField name="x" missingValueReplacement="1"/>)";
  EXPECT_EQ(Refusal(Wrapped(treated, R"(algorithmType="ocsvm")",
                            R"(<MiningSchema><MiningField name="x" missingValueReplacement="2"/>)"
                            R"(</MiningSchema>)"))
                .GetErrorCode(),
            code::kUnsupported);
  std::string nested = parts.Text();
  nested.insert(nested.find("<SupportVectorMachineModel"), "<MiningModel><Segmentation><Segment>");
  nested.insert(nested.find("</PMML>"), "</Segment></Segmentation></MiningModel>");
  const auto error = Refusal(nested);
  EXPECT_EQ(error.GetErrorCode(), code::kUnsupported);
  EXPECT_EQ(error.GetPlace(), "element MiningModel, line 3");
}

TEST(Model, TheFirstOfSeveralIsScored) {
  Parts parts;
  std::string text = parts.Text();
  text.insert(text.find("<SupportVectorMachineModel"), "<TreeModel/>");
  text.insert(text.find("</PMML>"), "<SupportVectorMachineModel/>");
  const Reading reading = Read(text);
  EXPECT_EQ(reading.Steps(), "several-models 2");
  EXPECT_FALSE(reading.steps[0].changes);
  EXPECT_EQ(Score(text, kAbove), Score(parts.Text(), kAbove));
}

}  // namespace
}  // namespace svmscore_test
