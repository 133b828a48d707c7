// What targets do to a model's number, and what they predict where inputs are missing.
#include <limits>

#include <gtest/gtest.h>

#include "tests/output/document_scoring.h"

namespace svmscore_test {
namespace {

using svmscore::output::Outcome;

// y = x, and the machine's extension gives a standard deviation of 0.5.
std::string Line(const std::string& targets, const std::string& target_type = "double") {
  return R"(<PMML version="4.4"><Header/><DataDictionary>
    <DataField name="x" optype="continuous" dataType="double"/>
    <DataField name="other" optype="continuous" dataType="double"/>
    <DataField name="y" optype="continuous" dataType=")" +
         target_type + R"("/></DataDictionary>
    <SupportVectorMachineModel functionName="regression">
    <MiningSchema><MiningField name="x"/><MiningField name="y" usageType="target"/></MiningSchema>)" +
         targets + R"(<LinearKernelType/><VectorDictionary><VectorFields><FieldRef field="x"/>
    </VectorFields><VectorInstance id="v"><REAL-SparseArray n="1"><Indices>1</Indices>
    <REAL-Entries>1</REAL-Entries></REAL-SparseArray></VectorInstance></VectorDictionary>
    <SupportVectorMachine><Extension extender="svmscore"><StandardDeviation>0.5</StandardDeviation>
    </Extension><SupportVectors><SupportVector vectorId="v"/></SupportVectors>
    <Coefficients><Coefficient value="1"/></Coefficients></SupportVectorMachine>
    </SupportVectorMachineModel></PMML>)";
}

double Predict(const std::string& document, const std::string& x) {
  Scoring scoring(document);
  const Outcome& outcome = scoring.Score({{"x", x}});
  EXPECT_EQ(outcome.status, 0);
  return outcome.prediction.GetNumber();
}

std::string OnlyTarget(const std::string& attributes) {
  return "<Targets><Target field=\"y\" " + attributes + "/></Targets>";
}

TEST(Targets, ThePredictionHasTheTargetsType) {
  EXPECT_EQ(Predict(Line(""), "0.1"), 0.1);
  EXPECT_EQ(Predict(Line("", "float"), "0.1"), static_cast<double>(0.1F));
  EXPECT_EQ(Predict(Line("", "integer"), "2.5"), 3.0);
  EXPECT_EQ(Predict(Line("", "integer"), "-2.5"), -2.0);
  EXPECT_EQ(Predict(Line(OnlyTarget("castInteger=\"floor\""), "integer"), "2.9"), 2.0);
  Scoring whole(Line("", "integer"));
  EXPECT_EQ(whole.Plan().Notes().size(), 1U);
  EXPECT_EQ(whole.Score({{"x", "1e300"}}).status, 90027);
}

TEST(Targets, TheOneForTheModelsTargetIsChosen) {
  const std::string other = R"(<Target field="other" rescaleConstant="1"/>)";
  const std::string nameless = R"(<Target rescaleConstant="10"/>)";
  const std::string unknown = R"(<Target field="Y" rescaleConstant="100"/>)";
  const std::string named = R"(<Target field="y" rescaleConstant="1000"/>)";
  const auto with = [](const std::string& targets) {
    return Predict(Line("<Targets>" + targets + "</Targets>"), "0");
  };
  EXPECT_EQ(with(other + nameless + named), 1000.0);
  EXPECT_EQ(with(other + nameless), 10.0);
  EXPECT_EQ(with(unknown), 100.0);
  EXPECT_EQ(with(other), 0.0);
  EXPECT_EQ(with(other + unknown), 0.0);
}

TEST(Targets, ANegativeFactorTurnsTheIntervalRound) {
  Scoring plain(Line(""));
  Scoring scaled(Line(R"(<Output><OutputField name="s" feature="standardDeviation"/>
    <OutputField name="l" feature="confidenceIntervalLower"/>
    <OutputField name="u" feature="confidenceIntervalUpper"/></Output><Targets>
    <Target max="1" rescaleFactor="-2" rescaleConstant="3"><TargetValue defaultValue="7.5"/>
    </Target></Targets>)"));
  const Outcome raw = plain.Score({{"x", "4"}});
  const Outcome outcome = scaled.Score({{"x", "4"}});
  EXPECT_EQ(outcome.prediction.GetNumber(), 1.0);
  EXPECT_EQ(raw.std_dev, 0.5);
  EXPECT_EQ(outcome.std_dev, 1.0);
  ASSERT_TRUE(outcome.has_interval);
  EXPECT_EQ(outcome.lower, raw.upper * -2 + 3);
  EXPECT_EQ(outcome.upper, raw.lower * -2 + 3);
  const std::pair<const char*, double> cells[] = {
      {"s", outcome.std_dev}, {"l", outcome.lower}, {"u", outcome.upper}};
  for (const auto& [field, number] : cells) EXPECT_EQ(scaled.Number(field), number) << field;
  EXPECT_EQ(scaled.Score({}).ending, Ending::kPredictedByDefault);
  for (const auto& [field, number] : cells) EXPECT_FALSE(scaled.Number(field)) << field;
}

// A factor that takes the value beyond the range, and a deviation that takes the interval there.
TEST(Targets, AResultThatIsNotFiniteFailsTheCase) {
  const std::string far = Line(OnlyTarget("rescaleFactor=\"1e308\""));
  const std::string wide = Edit(Line(""), ">0.5<", ">1e308<");
  EXPECT_EQ(Scoring(far).Score({{"x", "1"}}).prediction.GetNumber(), 1e308);
  const Outcome failed = Scoring(far).Score({{"x", "-2"}});
  EXPECT_EQ(failed.status, 90027);
  EXPECT_FALSE(failed.prediction.IsPresent());
  const Outcome letter = Scoring(far, svmscore::LoadChecks::kAsIs).Score({{"x", "-2"}});
  EXPECT_EQ(letter.status, 0);
  EXPECT_EQ(letter.prediction.GetNumber(), -std::numeric_limits<double>::infinity());
  const Outcome without = Scoring(wide).Score({{"x", "2"}});
  EXPECT_EQ(without.prediction.GetNumber(), 2.0);
  EXPECT_FALSE(without.has_interval);
  EXPECT_TRUE(Scoring(wide, svmscore::LoadChecks::kAsIs).Score({{"x", "2"}}).has_interval);
}

TEST(Targets, ADefaultValueIsPredictedAsItStands) {
  Scoring scoring(Line(R"(<Targets><Target field="y" max="5" rescaleFactor="2">
    <TargetValue defaultValue="7.5"/></Target></Targets>)"));
  const Outcome& outcome = scoring.Score({});
  EXPECT_EQ(outcome.ending, Ending::kPredictedByDefault);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.prediction.GetNumber(), 7.5);
  EXPECT_FALSE(outcome.has_interval);
  EXPECT_EQ(scoring.Score({{"x", "abc"}}).status, 90027);
  scoring.Loaded().model->SetMissingValuePolicy(MCZandor_850::ScoreModel::kFailOnMissing);
  EXPECT_EQ(scoring.Score({}).status, 90029);
  EXPECT_EQ(scoring.Score({}).ending, Ending::kFailed);
}

TEST(Targets, TheLargestPriorIsPredictedWhereInputsAreMissing) {
  const std::string targets = R"(<Targets><Target field="state" rescaleFactor="2">
    <TargetValue value="alarm" displayValue="Run" priorProbability="0.2"/>
    <TargetValue value="ok" priorProbability="0.3"/></Target></Targets>)";
  std::string document =
      Edit(Document("alarm.pmml"), "<LocalTransformations>", targets + "<LocalTransformations>");
  document = Edit(document, "</Output>",
                  R"(<OutputField name="p" dataType="double" feature="probability"/></Output>)");
  Scoring scoring(document);
  const Outcome& outcome = scoring.Score({{"temp", "30"}});
  EXPECT_EQ(outcome.ending, Ending::kPredictedByDefault);
  EXPECT_EQ(scoring.Text("label"), "ok");
  EXPECT_EQ(scoring.Text("text"), "Normal");
  EXPECT_DOUBLE_EQ(scoring.Number("p").value(), 0.6);
  EXPECT_EQ(scoring.Score({{"temp", "30"}, {"load", "abc"}}).status, 90027);
  // The model's own answer has no probabilities, and the target's text replaces the dictionary's.
  scoring.Score({{"temp", "30"}, {"load", "85"}});
  EXPECT_EQ(scoring.Text("text"), "Run");
  EXPECT_FALSE(scoring.Number("p"));
}

// Neither the first nor the last; among equal ones the first.
TEST(Targets, TheLargestOfThreePriorsIsFound) {
  const std::string grades = Edit(Document("grades.pmml"), " missingValueReplacement=.2.5.", "");
  Scoring scoring(Edit(grades, "<LocalTransformations>", R"(<Targets><Target>
    <TargetValue value="low" priorProbability="0.2"/>
    <TargetValue value="mid" priorProbability="0.4"/>
    <TargetValue value="high" priorProbability="0.4"/></Target></Targets>$&)"));
  EXPECT_EQ(scoring.Score({{"colour", "red"}, {"grade", "A"}}).prediction.GetText(), "mid");
}

// The case is scored without them.
TEST(Targets, ValuesThatMeanNothingAreToldAndRefusedWhenStrict) {
  const std::string alarm =
      Edit(Document("alarm.pmml"), "<LocalTransformations>",
           R"(<Targets><Target><TargetValue value="ok" priorProbability="2"/></Target></Targets>
              <LocalTransformations>)");
  for (const auto& [document, what] : std::vector<std::pair<std::string, std::string>>{
           {Line(OnlyTarget(R"(min="2" max="1")")), "greater than max"},
           {Line(OnlyTarget("castInteger=\"up\"")), "\"up\""},
           {Line(OnlyTarget("rescaleFactor=\"two\"")), "\"two\""},
           {alarm, "\"2\""}}) {
    EXPECT_EQ(Refusal(document), "");
    const std::string refusal = Refusal(document, svmscore::LoadChecks::kStrict);
    EXPECT_NE(refusal.find(what), std::string::npos) << refusal;
    EXPECT_NE(refusal.find("line "), std::string::npos) << refusal;
  }
}

// A plug-in may return a model that predicts no field.
TEST(Targets, AModelWithoutOneIsRefused) {
  svmscore::LoadedModel loaded =
      svmscore::LoadModel(svmscore::Plugin(SVMSCORE_PLUGIN_FILE),
                          svmscore::PmmlDocument::FromText(Line(""), "test.pmml"));
  loaded.model->SetVarRole("y", MCZandor_850::ScoreModel::kOtherRole);
  try {
    const svmscore::output::OutputPlan plan(*loaded.model, loaded.document.Dom());
    FAIL() << "a plan without a target";
  } catch (const MCZandor_850::SSException& error) {
    EXPECT_EQ(error.GetErrorCode(), 260306);
  }
}

}  // namespace
}  // namespace svmscore_test
