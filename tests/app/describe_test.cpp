// svmscore describe: what it tells of a model, and every silent outcome that it makes heard.
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"

namespace svmscore::app {
namespace {

using nlohmann::json;
using testing::HasSubstr;

struct Edit {
  std::string from;
  std::string to;
};

// The document with the first occurrence of every `from` replaced.
std::string Edited(const std::string& model, const std::vector<Edit>& edits) {
  std::string text = ReadFile(Data(model));
  for (const Edit& edit : edits) {
    const std::size_t at = text.find(edit.from);
    EXPECT_NE(at, std::string::npos) << edit.from;
    if (at != std::string::npos) text.replace(at, edit.from.size(), edit.to);
  }
  return text;
}

json Describe(const std::string& text) {
  const TemporaryFolder folder;
  const Ran ran = RunProgram({"describe", folder.Write("model.pmml", text), "--json"});
  EXPECT_EQ(ran.status, 0) << ran.err;
  return ran.status == 0 ? json::parse(ran.out) : json::object();
}

TEST(Describe, TellsWhatAModelIs) {
  const Ran ran = RunProgram({"describe", Data("three.pmml")});
  EXPECT_EQ(ran.status, 0) << ran.err;
  EXPECT_EQ(ran.out, "Document      " + Data("three.pmml") + ", PMML 4.4\n" +
                         R"(Producer      tests 7
Model         three
Method        classification, one-against-one: a decision value above the threshold is a vote for the target category
Percentages   vote shares
Target        kind (string): a, b, c, d
Kernel        polynomial, gamma 1, coef0 0, degree 1
Counts        4 inputs, 0 derived fields, 3 vector fields, 3 vectors, 3 machines, 4 terms
Missing value policy replace

Inputs
  name    type                needed  replaces a missing value
  width   continuous double   yes     -
  height  continuous double   yes     -
  colour  categorical string  yes     red
  note    categorical string  no      -

Machines
  target category  alternate  threshold  absolute value  terms
  a                b          0          0               1
  a                c, d       0          0.5             1
  b                c, d       0.25       0               2

What the translator leaves out
  nothing
)");
}

TEST(Describe, TellsTheSameAsJson) {
  const Ran ran = RunProgram({"describe", Data("line.pmml"), "--json", "--dump"});
  const json described = json::parse(ran.out);
  EXPECT_EQ(described["method"], "regression");
  EXPECT_EQ(described["interval"], true);
  EXPECT_EQ(described["kernel"]["type"], "linear");
  EXPECT_EQ(described["counts"]["terms"], 1);
  EXPECT_EQ(described["machines"][0]["absoluteValue"], 0.1);
  EXPECT_EQ(described["inputs"][0]["needed"], true);
  EXPECT_TRUE(described["leftOut"].empty());
  EXPECT_THAT(std::string(described["display"]), HasSubstr("SupportVectorMachineModel"));
  EXPECT_EQ(json::parse(RunProgram({"describe", Data("two.pmml"), "--json"}).out)["percentages"],
            "calibrated probabilities");
}

TEST(Describe, GroupsManyFindingsOfAKind) {
  std::string instances;
  for (int i = 0; i < 100; ++i) instances += "<VectorInstance id=\"\"/>\n";
  const TemporaryFolder folder;
  const std::string model = folder.Write(
      "model.pmml",
      Edited("three.pmml", {{"</VectorDictionary>", instances + "</VectorDictionary>"}}));
  const std::string out = RunProgram({"describe", model}).out;
  EXPECT_THAT(out,
              HasSubstr("line 30, VectorInstance: the vector \"\" is not kept: it has no sparse "
                        "array\n"));
  EXPECT_THAT(out, HasSubstr("and 95 more of vector-dropped\n"));
}

TEST(Describe, TellsWhyScoringRefusesAModel) {
  const json described = Describe(
      Edited("three.pmml", {{"<FieldRef field=\"height\"/>", "<FieldRef field=\"depth\"/>"}}));
  EXPECT_THAT(std::string(described["refused"]), HasSubstr("[260311] "));
}

struct Silent {
  std::string kind;
  std::string element;
  std::vector<Edit> edits;
  std::string model = "three.pmml";
  bool refused = false;  // by the command score
};

class SilentOutcome : public testing::TestWithParam<Silent> {};

std::set<std::string> Named(const json& findings, const char* name) {
  std::set<std::string> named;
  for (const json& finding : findings) {
    named.insert(std::string(finding[name]) + " at " + std::string(finding["element"]));
    EXPECT_GT(finding["line"], 0);
  }
  return named;
}

// What the edited document loses is told, as left out or as changed before the translation; nothing
// else is told to be left out. It is scored all the same.
TEST_P(SilentOutcome, IsTold) {
  const json described = Describe(Edited(GetParam().model, GetParam().edits));
  EXPECT_EQ(described["refused"].is_null(), !GetParam().refused) << described["refused"];
  const std::string expected = GetParam().kind + " at " + GetParam().element;
  const std::set<std::string> left_out = Named(described["leftOut"], "kind");
  if (Named(described["intake"], "name").contains(expected)) {
    EXPECT_THAT(left_out, testing::IsEmpty()) << described.dump(1);
  } else {
    EXPECT_THAT(left_out, testing::ElementsAre(expected)) << described.dump(1);
  }
}

const std::string kVectorW =
    "<VectorInstance id=\"w\"><REAL-SparseArray n=\"3\"><Indices>1</Indices>"
    "<REAL-Entries>1</REAL-Entries></REAL-SparseArray></VectorInstance>";
const std::string kTwoVectors = "<SupportVector vectorId=\"b\"/><SupportVector vectorId=\"w\"/>";
const std::string kTwoCoefficients = "<Coefficient value=\"1\"/><Coefficient value=\"-1\"/>";
const std::string kMachine =
    "<SupportVectorMachine targetCategory=\"a\" alternateTargetCategory=\"b\">";

const std::string kSecondMachine =
    "<SupportVectorMachine targetCategory=\"a\" alternateTargetCategory=\"c, d\">";
const std::string kThirdMachine =
    "<SupportVectorMachine targetCategory=\"b\" alternateTargetCategory=\"c, d\" "
    "threshold=\"0.25\">";

std::string Probability(const std::string& response, const std::string& non_response) {
  return "<Extension extender=\"svmscore\"><ResponseCategory response=\"" + response +
         "\" nonResponse=\"" + non_response +
         "\"/><ProbabilityParameters A=\"-1\" B=\"0\"/></Extension>";
}

// A vector beside the three that the machines use.
Edit Added(const std::string& instance) {
  return {kVectorW, kVectorW + instance};
}
Edit AddedArray(const std::string& array) {
  return Added("<VectorInstance id=\"new\"><REAL-SparseArray n=\"3\">" + array +
               "</REAL-SparseArray></VectorInstance>");
}
const Edit kFourVectors = {"numberOfVectors=\"3\"", "numberOfVectors=\"4\""};

INSTANTIATE_TEST_SUITE_P(
    Document, SilentOutcome,
    testing::Values(
        Silent{"other-model", "TreeModel", {{"</PMML>", "<TreeModel/></PMML>"}}},
        Silent{"second-application",
               "Application",
               {{"</Header>", "<Application name=\"other\" version=\"8\"/></Header>"}}},
        Silent{"bad-threshold",
               "SupportVectorMachineModel",
               {{"maxWins=\"true\" threshold=\"0\"", "maxWins=\"true\" threshold=\"none\""}}},
        Silent{"unknown-method",
               "SupportVectorMachineModel",
               {{"classificationMethod=\"OneAgainstOne\"", "classificationMethod=\"OneVsAll\""}}},
        Silent{"bad-max-wins",
               "SupportVectorMachineModel",
               {{"maxWins=\"true\"", "maxWins=\"maybe\""}}},
        Silent{"second-kernel",
               "SigmoidKernelType",
               {{"<VectorDictionary", "<SigmoidKernelType gamma=\"-1\"/><VectorDictionary"}}},
        Silent{"kernel-minus-one", "PolynomialKernelType", {{"coef0=\"0\"", "coef0=\"-1\""}}},
        Silent{"results",
               "OutputField",
               {{"<LinearKernelType/>",
                 "<LinearKernelType degree=\"-1\"/><Output><OutputField name=\"error\" "
                 "feature=\"standardError\"/></Output>"}},
               "line.pmml"}));

INSTANTIATE_TEST_SUITE_P(
    Fields, SilentOutcome,
    testing::Values(
        Silent{"unknown-mining-field",
               "MiningField",
               {{"<MiningField name=\"width\"/>",
                 "<MiningField name=\"width\"/><MiningField name=\"depth\"/>"}}},
        Silent{"unknown-usage",
               "MiningField",
               {{"name=\"note\" usageType=\"active\"", "name=\"note\" usageType=\"Active\""}}},
        Silent{"second-target",
               "MiningField",
               {{"<MiningField name=\"kind\" usageType=\"target\"/>",
                 "<MiningField name=\"kind\" usageType=\"target\"/>"
                 "<MiningField name=\"note\" usageType=\"predicted\"/>"},
                {"<MiningField name=\"note\" usageType=\"active\"/>", ""}}},
        Silent{"transformations-off",
               "LocalTransformations",
               {{"version=\"4.4\"", "version=\"2.1\""},
                {"<PolynomialKernelType", "<LocalTransformations/><PolynomialKernelType"}}},
        Silent{"local-transformations-hidden",
               "LocalTransformations",
               {{"<SupportVectorMachineModel",
                 "<TransformationDictionary/><SupportVectorMachineModel"},
                {"<PolynomialKernelType", "<LocalTransformations/><PolynomialKernelType"}}},
        Silent{"unknown-vector-field",
               "Constant",
               {{"<FieldRef field=\"width\"/>",
                 "<Extension/><Constant/><FieldRef field=\"width\"/>"}}},
        Silent{"map-missing-to",
               "FieldRef",
               {{"<FieldRef field=\"width\"/>", "<FieldRef field=\"width\" mapMissingTo=\"0\"/>"}}},
        Silent{"category-coefficient",
               "CategoricalPredictor",
               {{"value=\"blue\" coefficient=\"1\"", "value=\"blue\" coefficient=\"2\""}}},
        Silent{"category-unlisted",
               "CategoricalPredictor",
               {{"value=\"blue\" coefficient=\"1\"", "value=\"Blue\" coefficient=\"1\""}}},
        Silent{"count-disagrees",
               "VectorFields",
               {{"numberOfFields=\"3\"", "numberOfFields=\"2\""}}}));

INSTANTIATE_TEST_SUITE_P(
    Vectors, SilentOutcome,
    testing::Values(
        Silent{"dense-array",
               "REAL-ARRAY",
               {Added("<VectorInstance id=\"new\"><REAL-ARRAY n=\"3\">1 2 3</REAL-ARRAY>"
                      "</VectorInstance>"),
                kFourVectors}},
        Silent{"vector-dropped",
               "VectorInstance",
               {Added("<VectorInstance id=\"new\"/>"), kFourVectors}},
        Silent{"zero-vector",
               "REAL-SparseArray",
               {AddedArray("<Indices/><REAL-Entries/>"), kFourVectors}},
        Silent{"vector-dropped",
               "VectorInstance",
               {Added("<VectorInstance id=\"new\"><REAL-SparseArray n=\"0\"/></VectorInstance>"),
                kFourVectors}},
        Silent{"vector-dropped",
               "VectorInstance",
               {Added("<VectorInstance id=\"\"><REAL-SparseArray n=\"3\"/></VectorInstance>"),
                kFourVectors}},
        Silent{"vector-dropped", "VectorInstance", {Added(kVectorW), kFourVectors}},
        Silent{"no-indices",
               "REAL-SparseArray",
               {AddedArray("<REAL-Entries>1 2 3</REAL-Entries>"), kFourVectors}},
        Silent{
            "index-out-of-range",
            "Indices",
            {AddedArray("<Indices>0 4</Indices><REAL-Entries>1 1</REAL-Entries>"), kFourVectors}},
        Silent{
            "unordered-indices",
            "REAL-SparseArray",
            {AddedArray("<Indices>2 1</Indices><REAL-Entries>1 1</REAL-Entries>"), kFourVectors}},
        Silent{"indices-unordered",
               "Indices",
               {AddedArray("<Indices>2 2</Indices><REAL-Entries>1 1</REAL-Entries>"), kFourVectors},
               "three.pmml",
               true},
        Silent{"bad-number",
               "Indices",
               {AddedArray("<Indices>1 2.9</Indices><Entries>1\n1e-3</Entries>"), kFourVectors}},
        Silent{
            "bad-number",
            "REAL-Entries",
            {AddedArray("<Indices>1 2</Indices><REAL-Entries>1,5 x</REAL-Entries>"), kFourVectors}},
        Silent{"count-disagrees", "REAL-SparseArray", {{"n=\"3\"", "n=\"30\""}}},
        Silent{"count-disagrees",
               "VectorDictionary",
               {{"numberOfVectors=\"3\"", "numberOfVectors=\"5\""}}}));

INSTANTIATE_TEST_SUITE_P(
    Machines, SilentOutcome,
    testing::Values(
        Silent{"unknown-vector",
               "SupportVector",
               {{kTwoVectors, "<SupportVector vectorId=\"b\"/><SupportVector vectorId=\"W\"/>"}}},
        Silent{
            "surplus-vectors",
            "SupportVector",
            {{kTwoCoefficients, "<Coefficient value=\"1\"/>"}, {"numberOfCoefficients=\"2\"", ""}}},
        Silent{"surplus-coefficients",
               "Coefficient",
               {{kTwoVectors, "<SupportVector vectorId=\"b\"/>"},
                {"numberOfSupportVectors=\"2\"", ""}}},
        Silent{"bad-coefficient",
               "Coefficient",
               {{kTwoCoefficients, "<Coefficient value=\"1\"/><Coefficient value=\"one\"/>"}}},
        Silent{"no-coefficient-value",
               "Coefficient",
               {{kTwoCoefficients, "<Coefficient value=\"1\"/><Coefficient/>"}}},
        Silent{"bad-absolute-value",
               "Coefficients",
               {{"absoluteValue=\"0.5\"", "absoluteValue=\"0,5\""}}},
        Silent{"no-absolute-value", "Coefficients", {{"absoluteValue=\"0.5\"", ""}}},
        Silent{"bad-threshold", "SupportVectorMachine", {{"threshold=\"0.25\"", "threshold=\"\""}}},
        Silent{"unknown-category",
               "SupportVectorMachine",
               {{"targetCategory=\"a\" alternateTargetCategory=\"b\"",
                 "targetCategory=\"A\" alternateTargetCategory=\" b\""}}},
        Silent{"count-disagrees",
               "SupportVectors",
               {{"numberOfSupportVectors=\"2\" numberOfAttributes=\"3\"",
                 "numberOfSupportVectors=\"3\" numberOfAttributes=\"4\""}}},
        Silent{"count-disagrees",
               "Coefficients",
               {{"numberOfCoefficients=\"2\"", "numberOfCoefficients=\"3\""}}},
        Silent{"second-list",
               "Coefficients",
               {{"</SupportVectorMachine>", "<Coefficients/></SupportVectorMachine>"}}},
        Silent{"machine-count",
               "SupportVectorMachineModel",
               {{"OneAgainstOne", "OneAgainstAll"},
                {"</SupportVectorMachine>",
                 "</SupportVectorMachine>" + kMachine +
                     "<SupportVectors><SupportVector vectorId=\"w\"/></SupportVectors>"
                     "<Coefficients absoluteValue=\"0\"><Coefficient value=\"1\"/></Coefficients>"
                     "</SupportVectorMachine>"}}},
        Silent{"extension-not-first",
               "Extension",
               {{"<Extension extender=\"svmscore\">",
                 "<Extension/><Extension extender=\"svmscore\">"}},
               "two.pmml"},
        Silent{"extension-incomplete", "Extension", {{" B=\"0\"", ""}}, "two.pmml"},
        Silent{"extension-incomplete",
               "Extension",
               {{"<StandardDeviation>0.5</StandardDeviation>", ""}},
               "line.pmml"},
        Silent{"percentages-exchanged",
               "ResponseCategory",
               {{"response=\"yes\" nonResponse=\"no\"", "response=\"no\" nonResponse=\"yes\""}},
               "two.pmml"},
        Silent{"unknown-category",
               "ResponseCategory",
               {{"nonResponse=\"no\"", "nonResponse=\"NO\""}},
               "two.pmml"},
        Silent{"pair-out-of-order",
               "ResponseCategory",
               {{kMachine, kMachine + Probability("b", "a")},
                {kSecondMachine, kSecondMachine + Probability("a", "b")},
                {kThirdMachine, kThirdMachine + Probability("b", "c, d")}}},
        Silent{"extension-on-some",
               "SupportVectorMachine",
               {{kMachine, kMachine +
                               "<Extension extender=\"svmscore\"><ResponseCategory response=\"a\" "
                               "nonResponse=\"b\"/><ProbabilityParameters A=\"-1\" B=\"0\"/>"
                               "</Extension>"}}}));

}  // namespace
}  // namespace svmscore::app
