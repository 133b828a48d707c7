// What a report says of inputs.
#include <cmath>
#include <limits>

#include <gmock/gmock.h>

#include "app/report/surface_picture.h"
#include "host/load/loader.h"
#include "tools/describe/model_summary.h"
#include "tools/report/chosen_cases.h"
#include "tools/report/explanation.h"

namespace svmscore::tools {
namespace {

using testing::ElementsAre;
using testing::Pair;
using testing::UnorderedElementsAre;

LoadedModel ExampleModel(const std::string& name) {
  const Plugin plugin(SVMSCORE_PLUGIN_FILE);
  return LoadModel(plugin, PmmlDocument::FromFile(EXAMPLES "/" + name + "/model.pmml"));
}

Explanation ExplainExample(const std::string& name) {
  const LoadedModel loaded = ExampleModel(name);
  const ModelSummary summary = Summarise(loaded);
  const CellRules rules;
  return ExplainForReport({loaded, summary, nullptr, nullptr, nullptr, rules});
}

// The bars of a case are what its decision value has beyond the background's mean.
TEST(ReportExplanation, SharesOfACaseAddUp) {
  for (const char* name : {"iris", "tumour", "diabetes", "digits"}) {
    const Explanation of = ExplainExample(name);
    EXPECT_EQ(of.why_not, "") << name;
    EXPECT_GE(of.chosen.size(), 2U) << name;
    for (const ExplainedCase& shown : of.chosen) {
      double sum = shown.rest;
      for (const InputShare& share : shown.shares) sum += share.value;
      EXPECT_NEAR(sum, shown.decision - of.base, 1e-9 * (1.0 + std::fabs(shown.decision))) << name;
    }
    EXPECT_LE(of.strongest.size(), kSharesShown);
    EXPECT_TRUE(std::is_sorted(of.strongest.begin(), of.strongest.end(),
                               [](const auto& a, const auto& b) { return a.value > b.value; }));
  }
}

// Of a model of one input the mean over a background is the decision value itself.
TEST(ReportExplanation, TheCurveOfALoneInputIsTheDecisionValue) {
  const std::string document = R"(<PMML xmlns="http://www.dmg.org/PMML-4_4" version="4.4"><Header/>
    <DataDictionary><DataField name="x" optype="continuous" dataType="double"/>
    <DataField name="y" optype="continuous" dataType="double"/></DataDictionary>
    <SupportVectorMachineModel functionName="regression"><MiningSchema><MiningField name="x"/>
    <MiningField name="y" usageType="target"/></MiningSchema><RadialBasisKernelType gamma="0.5"/>
    <VectorDictionary><VectorFields><FieldRef field="x"/></VectorFields>
    <VectorInstance id="a"><Array type="real">0</Array></VectorInstance>
    <VectorInstance id="b"><Array type="real">2</Array></VectorInstance></VectorDictionary>
    <SupportVectorMachine><SupportVectors><SupportVector vectorId="a"/><SupportVector vectorId="b"/>
    </SupportVectors><Coefficients absoluteValue="1"><Coefficient value="1"/><Coefficient value="3"/>
    </Coefficients></SupportVectorMachine></SupportVectorMachineModel></PMML>)";
  const Plugin plugin(SVMSCORE_PLUGIN_FILE);
  const LoadedModel loaded = LoadModel(plugin, PmmlDocument::FromText(document, "one input"));
  const ModelSummary summary = Summarise(loaded);
  const Explanation of =
      ExplainForReport({loaded, summary, nullptr, nullptr, nullptr, CellRules()});
  ASSERT_EQ(of.dependences.size(), 1U);
  EXPECT_FALSE(of.surface);
  for (const CasePlace& place : of.dependences[0].curve) {
    const double expected = 1.0 + std::exp(-0.5 * place.x * place.x) +
                            3.0 * std::exp(-0.5 * (place.x - 2.0) * (place.x - 2.0));
    EXPECT_NEAR(place.y, expected, 1e-12);
  }
}

// One-against-all: a machine a row of coefficients for the vectors (1, 0), (0, 1) and (0, 0).
Explanation ExplainMachines(const std::string& kernel,
                            const std::vector<std::string>& coefficients) {
  std::string document =
      R"(<PMML xmlns="http://www.dmg.org/PMML-4_4" version="4.4"><Header/>
    <DataDictionary><DataField name="a" optype="continuous" dataType="double"/>
    <DataField name="b" optype="continuous" dataType="double"/>
    <DataField name="y" optype="categorical" dataType="string"><Value value="0"/><Value value="1"/>
    <Value value="2"/></DataField></DataDictionary><SupportVectorMachineModel
    functionName="classification" classificationMethod="OneAgainstAll" maxWins="true"><MiningSchema>
    <MiningField name="a"/><MiningField name="b"/><MiningField name="y" usageType="target"/>
    </MiningSchema>)" +
      kernel + R"(<VectorDictionary><VectorFields><FieldRef field="a"/>
    <FieldRef field="b"/></VectorFields>
    <VectorInstance id="a"><Array type="real">1 0</Array></VectorInstance>
    <VectorInstance id="b"><Array type="real">0 1</Array></VectorInstance>
    <VectorInstance id="o"><Array type="real">0 0</Array></VectorInstance></VectorDictionary>)";
  int category = 0;
  for (const std::string& of_machine : coefficients) {
    document +=
        "<SupportVectorMachine targetCategory=\"" + std::to_string(category++) +
        "\"><SupportVectors><SupportVector vectorId=\"a\"/><SupportVector vectorId=\"b\"/>"
        "<SupportVector vectorId=\"o\"/></SupportVectors><Coefficients absoluteValue=\"0\">" +
        of_machine + "</Coefficients></SupportVectorMachine>";
  }
  document += "</SupportVectorMachineModel></PMML>";
  const Plugin plugin(SVMSCORE_PLUGIN_FILE);
  const LoadedModel loaded = LoadModel(plugin, PmmlDocument::FromText(document, "machines"));
  const ModelSummary summary = Summarise(loaded);
  return ExplainForReport({loaded, summary, nullptr, nullptr, nullptr, CellRules()});
}

std::string Coefficients(const std::vector<std::string>& values) {
  std::string text;
  for (const std::string& value : values) text += "<Coefficient value=\"" + value + "\"/>";
  return text;
}

// The units of decision values differ from machine to machine.
TEST(ReportExplanation, NoMachineOutweighsAnother) {
  const Explanation of = ExplainMachines(
      "<LinearKernelType/>", {Coefficients({"1", "0.5", "0"}), Coefficients({"500", "1000", "0"}),
                              Coefficients({"1", "1", "0"})});
  ASSERT_EQ(of.strongest.size(), 2U);
  // By symmetry; the vectors are 4/9 from their mean on the average.
  for (const InputShare& share : of.strongest) EXPECT_NEAR(share.value, 4.0 / 18.0, 1e-9);
}

// Decision values may be finite where parts of them are not.
TEST(ReportExplanation, LeavesOutCasesWhoseValuesAreNotFinite) {
  const std::string huge = Coefficients({"1e308", "-1e308", "1e308"});
  const Explanation of =
      ExplainMachines("<RadialBasisKernelType gamma=\"0.5\"/>", {huge, huge, huge});
  EXPECT_EQ(of.why_not, "");
  EXPECT_EQ(of.cases + of.unexplained, 3U);
  EXPECT_GT(of.unexplained, 0U);
  for (const InputShare& share : of.strongest) EXPECT_TRUE(std::isfinite(share.value));
}

ScoredCases CasesWith(std::vector<double> decisions, std::vector<int> predicted,
                      std::vector<int> actual) {
  ScoredCases cases;
  cases.machines = 1;
  for (std::size_t c = 0; c < decisions.size(); ++c) cases.numbers.push_back(c + 1);
  cases.decisions = std::move(decisions);
  cases.predicted = std::move(predicted);
  cases.actual = std::move(actual);
  return cases;
}

TEST(ReportExplanation, ChoosesCasesByTheirDecisionValues) {
  const MachineSides sides{1, 0, 0.0};
  // Case 3 is about other categories, whatever its value.
  const ScoredCases cases = CasesWith({2.0, -1.0, 0.1, 9.0, -0.5, 1.0, -3.0}, {1, 0, 1, 2, 0, 1, 0},
                                      {1, 0, 0, 2, 1, 1, -1});
  EXPECT_THAT(
      ChooseCases(sides, 0, cases),
      UnorderedElementsAre(Pair(CaseChoice::kSurestAbove, 0), Pair(CaseChoice::kSurestBelow, 6),
                           Pair(CaseChoice::kTypicalAbove, 5), Pair(CaseChoice::kTypicalBelow, 1),
                           Pair(CaseChoice::kWorstMistake, 4), Pair(CaseChoice::kClosest, 2)));
  EXPECT_TRUE(ChooseCases(sides, 0, CasesWith({}, {}, {})).empty());
  // The same case is not shown twice.
  EXPECT_EQ(ChooseCases(sides, 0, CasesWith({0.5}, {1}, {-1})).size(), 1U);

  // No case below the threshold: none is the surest there.
  EXPECT_THAT(
      ChooseCases(sides, 0, CasesWith({3.0, 1.0, 2.0}, {1, 1, 1}, {-1, -1, -1})),
      UnorderedElementsAre(Pair(CaseChoice::kSurestAbove, 0), Pair(CaseChoice::kTypicalAbove, 2),
                           Pair(CaseChoice::kClosest, 1)));
  EXPECT_THAT(
      ChooseCases({1, -1, std::nan("")}, 0, CasesWith({3.0, 1.0, 2.0}, {1, 1, 1}, {-1, -1, -1})),
      UnorderedElementsAre(Pair(CaseChoice::kSurestAbove, 0), Pair(CaseChoice::kSurestBelow, 1)));

  ScoredCases regression = CasesWith({1.0, 2.0, 3.0}, {}, {});
  regression.classification = false;
  regression.values = {-100.0, -200.0, -300.0};  // rescaled by a negative factor
  regression.observed.assign(3, std::nan(""));
  EXPECT_THAT(ChooseCases({}, 0, regression),
              UnorderedElementsAre(Pair(CaseChoice::kHighest, 0), Pair(CaseChoice::kLowest, 2),
                                   Pair(CaseChoice::kMiddle, 1)));

  ScoredCases two = CasesWith({5.0, 0.2, -4.0, -0.1}, {1, 0}, {1, 0});
  two.machines = 2;
  two.numbers = {1, 2};
  EXPECT_EQ(HardestMachine({sides, sides}, two), 1U);
  EXPECT_EQ(HardestMachine({sides, {1, -1, std::nan("")}}, two), 0U);
}

TEST(ReportExplanation, ContoursCrossWhereTheLevelIs) {
  // A plane: the level 0.5 is half-way between the columns.
  const auto line = app::ContourOf({0, 1, 0, 1}, 2, 0.5);
  ASSERT_EQ(line.size(), 1U);
  EXPECT_EQ(line[0].from.x, 0.5);
  EXPECT_EQ(line[0].to.x, 0.5);
  EXPECT_EQ(std::fabs(line[0].from.y - line[0].to.y), 1.0);
  EXPECT_TRUE(app::ContourOf({0, 0, 0, 0}, 2, 0.5).empty());
  EXPECT_EQ(app::ContourOf({1, 0, 0, 1}, 2, 0.5).size(), 2U);
  const auto huge = app::ContourOf({-1.7e308, 1.7e308, -1.7e308, 1.7e308}, 2, 0.0);
  ASSERT_EQ(huge.size(), 1U);
  EXPECT_EQ(huge[0].from.x, 0.5);
}

}  // namespace
}  // namespace svmscore::tools
