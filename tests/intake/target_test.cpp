// Targets, their categories, and models that have none.
#include <gtest/gtest.h>

#include "tests/intake/document_parts.h"

namespace svmscore_test {
namespace {

// 2 * (0.25 x - 1.5 y) - 3 * 0.1 y + 0.5: above 0 for x = 4, below for x = -4.
const Case kAbove = At("4", "0");
const Case kBelow = At("-4", "0");

TEST(Labels, AreComparedInTheTargetsType) {
  Parts parts;
  parts.Classify({"1", "2"}, "integer");
  parts.machines = Parts::Machine("1.0", "02");
  EXPECT_EQ(Read(parts.Text()).Steps(), "category-spelling 2");
  EXPECT_EQ(Score(parts.Text(), kAbove), "2");
  EXPECT_EQ(Score(parts.Text(), kBelow), "1");
  parts.Classify({"1", "2"});
  EXPECT_EQ(Read(parts.Text()).Steps(), "unknown-category 2") << "texts are compared as they are";
}

TEST(Labels, TheOtherOfTwoIsUnderstood) {
  Parts parts;
  parts.Classify();
  for (const auto& [named, other] : {std::pair("yes", "no"), std::pair("no", "yes")}) {
    parts.machines = Parts::Machine("targetCategory='" + std::string(named) + '\'');
    EXPECT_EQ(Read(parts.Text()).Steps(), "second-category");
    EXPECT_EQ(Score(parts.Text(), kAbove), other);
    EXPECT_EQ(Score(parts.Text(), kBelow), named);
  }
  parts.machines = Parts::Machine("targetCategory='maybe'");
  EXPECT_EQ(Read(parts.Text()).Steps(), "unknown-category");
  EXPECT_EQ(Refusal(parts.Text(), svmscore::IntakeMode::kStrict), "260153 SupportVectorMachine:7");
}

TEST(Categories, ComeFromTheMachinesWhereTheTargetListsNone) {
  Parts parts;
  parts.Classify();
  parts.target = Field("t", "continuous", "double", "<Value value='-9' property='missing'/>");
  parts.machines = Parts::Machine("1", "0.0");
  const Reading reading = Read(parts.Text());
  EXPECT_EQ(reading.Steps(), "target-categorical, target-categories");
  EXPECT_EQ(reading.Show("DataField", 3),
            "<DataField dataType='double' name='t' optype='categorical'>"
            "<Value property='missing' value='-9'></Value><Value value='1'></Value>"
            "<Value value='0.0'></Value></DataField>");
  EXPECT_EQ(Score(parts.Text(), kAbove), "0.0");

  // Those of equal value are one.
  parts.Classify({}, "integer");
  parts.model += " classificationMethod='OneAgainstOne'";
  parts.machines =
      Parts::Machine("1", "2") + Parts::Machine("1.0", "3") + Parts::Machine("2.0", "3.0");
  const Reading equal = Read(parts.Text());
  EXPECT_EQ(equal.Steps(), "target-categories, category-spelling 3");
  EXPECT_EQ(equal.Show("DataField", 3),
            "<DataField dataType='integer' name='t' optype='categorical'><Value value='1'></Value>"
            "<Value value='2'></Value><Value value='3'></Value></DataField>");
  EXPECT_EQ(Score(parts.Text(), kAbove), "3");

  // The Target element may list them.
  parts.Classify();
  parts.target = Field("t", "categorical", "string");
  parts.local =
      "<Targets><Target field='t'><TargetValue value='no'/><TargetValue value='yes'/>"
      "</Target></Targets>";
  EXPECT_EQ(Read(parts.Text()).Steps(), "");
  EXPECT_EQ(Score(parts.Text(), kAbove), "no");
}

TEST(Target, IsAddedToARegressionThatNamesNone) {
  Parts parts;
  const std::string expected = Score(parts.Text(), kAbove);
  parts.target = Field("prediction");
  parts.schema = "<MiningField name='x'/><MiningField name='y'/>";
  const Reading reading = Read(parts.Text());
  EXPECT_EQ(reading.Steps(), "target-added");
  EXPECT_EQ(reading.Show("MiningField", 2),
            "<MiningField name='prediction (2)' usageType='target'></MiningField>");
  EXPECT_EQ(Score(parts.Text(), kAbove), expected);
}

// The document with something put before its model, and something behind it.
std::string Around(const Parts& parts, const std::string& before, const std::string& behind) {
  return Replaced(
      Replaced(parts.Text(), "<SupportVectorMachineModel", before + "<SupportVectorMachineModel"),
      "</PMML>", behind + "</PMML>");
}

std::string Anomaly(const Parts& parts, const std::string& type, const std::string& content) {
  return Around(
      parts,
      "<AnomalyDetectionModel functionName='regression' algorithmType='" + type + "'>" + content,
      "</AnomalyDetectionModel>");
}

TEST(AnomalyDetection, IsLiftedWithWhatSurroundsIt) {
  Parts parts;
  parts.schema = "<MiningField name='x' invalidValueTreatment='asIs'/><MiningField name='y'/>";
  const std::string derived =
      "<LocalTransformations><DerivedField name='inner' optype='continuous' dataType='double'>"
      "<FieldRef field='x'/></DerivedField></LocalTransformations>";
  parts.local = "<Output><OutputField name='raw'/><OutputField name='score'/></Output>" + derived +
                "<ModelVerification recordCount='1'/>";
  const std::string text = Anomaly(
      parts, "ocsvm",
      Replaced(derived, "inner", "outer") +
          "<ModelVerification recordCount='2'/>"
          "<MiningSchema><MiningField name='y' missingValueReplacement='2'/>"
          "<MiningField name='x'/><MiningField name='colour'/></MiningSchema>"
          "<Output><OutputField name='score' feature='predictedValue'/></Output><Targets/>");
  const Reading reading = Read(text);
  EXPECT_EQ(reading.Steps(), "anomaly-detection-lifted, target-added");
  EXPECT_EQ(reading.Show("AnomalyDetectionModel"), "");
  EXPECT_EQ(reading.Show("Output"),
            "<Output><OutputField name='raw'></OutputField>"
            "<OutputField feature='predictedValue' name='score'></OutputField></Output>");
  EXPECT_EQ(reading.Show("ModelVerification"),
            "<ModelVerification recordCount='2'></ModelVerification>");
  EXPECT_EQ(reading.Show("ModelVerification", 1), "");
  EXPECT_EQ(reading.Show("Targets"), "<Targets></Targets>");
  const std::string both = reading.Show("LocalTransformations");
  EXPECT_LT(both.find("'inner'"), both.find("'outer'"));
  EXPECT_EQ(reading.Show("MiningSchema"),
            "<MiningSchema><MiningField invalidValueTreatment='asIs' name='x'></MiningField>"
            "<MiningField missingValueReplacement='2' name='y'></MiningField>"
            "<MiningField name='colour'></MiningField>"
            "<MiningField name='prediction' usageType='target'></MiningField></MiningSchema>");
  EXPECT_EQ(Score(text, {{"x", "1"}}), Score(Parts().Text(), At("1", "2")));
}

TEST(Model, InsideOneOfAnotherMeaningIsRefused) {
  EXPECT_EQ(Refusal(Anomaly({}, "iforest", "")), "260304 AnomalyDetectionModel:3");
  Parts treated;
  treated.schema = "<MiningField name='x' missingValueReplacement='1'/>";
  EXPECT_EQ(Refusal(Anomaly(treated, "ocsvm",
                            "<MiningSchema><MiningField name='x' missingValueReplacement='2'/>"
                            "</MiningSchema>")),
            "260304 AnomalyDetectionModel:3");
  treated.local = "<Targets/>";
  EXPECT_EQ(Refusal(Anomaly(treated, "ocsvm", "<Targets/>")), "260304 AnomalyDetectionModel:3");
}

TEST(Model, TheFirstOfSeveralIsScored) {
  const std::string text = Around({}, "<TreeModel/>", "<SupportVectorMachineModel/>");
  const Reading reading = Read(text);
  EXPECT_EQ(reading.Steps(), "other-model 2");
  EXPECT_EQ(Score(text, kAbove), Score(Parts().Text(), kAbove));
}

}  // namespace
}  // namespace svmscore_test
