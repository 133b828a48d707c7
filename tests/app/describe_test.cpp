// svmscore describe: what it tells of a model, and every silent outcome that it makes heard.
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/app/edited.h"
#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"

namespace svmscore::app {
namespace {

using nlohmann::json;
using testing::HasSubstr;

json Describe(const std::string& model, const Edits& edits) {
  const TemporaryFolder folder;
  const Ran ran = RunProgram({"describe", EditedFile(folder, Data(model), edits), "--json"});
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
  const std::string model = EditedFile(folder, Data("three.pmml"),
                                       {"</VectorDictionary>", instances + "</VectorDictionary>"});
  const std::string out = RunProgram({"describe", model}).out;
  EXPECT_THAT(out,
              HasSubstr("line 30, VectorInstance: the vector \"\" is not kept: it has no sparse "
                        "array\n"));
  EXPECT_THAT(out, HasSubstr("and 95 more of vector-dropped\n"));
}

struct Silent {
  std::string told;  // kind and element
  Edits edits;
  std::string model = "three.pmml";

  friend void PrintTo(const Silent& silent, std::ostream* os) { *os << silent.told; }
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
// else is told to be left out. It is scored all the same, but for what the kernels cannot pair.
TEST_P(SilentOutcome, IsTold) {
  const auto& [told, edits, model] = GetParam();
  const json described = Describe(model, edits);
  EXPECT_EQ(described["refused"].is_null(), told != "indices-unordered at Indices");
  const std::set<std::string> left_out = Named(described["leftOut"], "kind");
  if (Named(described["intake"], "name").contains(told)) {
    EXPECT_THAT(left_out, testing::IsEmpty()) << described.dump(1);
  } else {
    EXPECT_THAT(left_out, testing::ElementsAre(told)) << described.dump(1);
  }
}

const std::string kWidth = "<MiningField name='width'/>";
const std::string kTarget = "<MiningField name='kind' usageType='target'/>";
const std::string kNote = "<MiningField name='note' usageType='active'/>";
const std::string kWidthEntry = "<FieldRef field='width'/>";
const std::string kLocal[] = {"<PolynomialKernelType",
                              "<LocalTransformations/><PolynomialKernelType"};
const std::string kVectorW =
    "<VectorInstance id='w'><REAL-SparseArray n='3'><Indices>1</Indices>"
    "<REAL-Entries>1</REAL-Entries></REAL-SparseArray></VectorInstance>";
const std::string kVectors = "<SupportVector vectorId='b'/><SupportVector vectorId='w'/>";
const std::string kCoefficients = "<Coefficient value='1'/><Coefficient value='-1'/>";
const std::string kEnd = "</SupportVectorMachine>";
const std::string kPair = "response='yes' nonResponse='no'";

// A machine's probabilities, for the categories that it names.
const std::string kMachines =
    "*(<SupportVectorMachine targetCategory='(.*)' alternateTargetCategory='(.*?)'.*)";
const std::string kFirstMachine =
    "*(<SupportVectorMachine targetCategory='(a)' alternateTargetCategory='(b)'>)";
const std::string kProbability =
    "$1<Extension extender='svmscore'><ResponseCategory response='$2' nonResponse='$3'/>"
    "<ProbabilityParameters A='-1' B='0'/></Extension>";

// A vector beside the three that the machines use.
Edits Added(const std::string& instance) {
  return {kVectorW, kVectorW + instance, "numberOfVectors='3'", "numberOfVectors='4'"};
}
Edits AddedArray(const std::string& array) {
  return Added("<VectorInstance id='new'><REAL-SparseArray n='3'>" + array +
               "</REAL-SparseArray></VectorInstance>");
}
Edits AddedEntries(const std::string& indices, const std::string& entries) {
  return AddedArray("<Indices>" + indices + "</Indices><Entries>" + entries + "</Entries>");
}

const Silent kOfDocuments[] = {
    {"other-model at TreeModel", {"</PMML>", "<TreeModel/></PMML>"}},
    {"second-application at Application", {"</Header>", "<Application name='other'/></Header>"}},
    {"bad-threshold at SupportVectorMachineModel", {"threshold='0'", "threshold='none'"}},
    {"unknown-method at SupportVectorMachineModel", {"OneAgainstOne", "OneVsAll"}},
    {"bad-max-wins at SupportVectorMachineModel", {"maxWins='true'", "maxWins='maybe'"}},
    {"second-kernel at SigmoidKernelType",
     {"<VectorDictionary", "<SigmoidKernelType gamma='-1'/><VectorDictionary"}},
    {"results at OutputField",
     {"<LinearKernelType/>",
      "<LinearKernelType degree='-1'/><Output><OutputField name='error' feature='standardError'/>"
      "</Output>"},
     "line.pmml"},
    {"unknown-mining-field at MiningField", {kWidth, kWidth + "<MiningField name='depth'/>"}},
    {"unknown-usage at MiningField",
     {"name='note' usageType='active'", "name='note' usageType='Active'"}},
    {"second-target at MiningField",
     {kTarget, kTarget + "<MiningField name='note' usageType='predicted'/>", kNote, ""}},
    {"version-raised at PMML",
     {"version='4.4'", "version='2.1'", kLocal[0], kLocal[1]}},
    {"local-transformations-hidden at LocalTransformations",
     {"<SupportVectorMachineModel", "<TransformationDictionary/><SupportVectorMachineModel",
      kLocal[0], kLocal[1]}},
    {"unknown-vector-field at Constant", {kWidthEntry, "<Extension/><Constant/>" + kWidthEntry}},
    {"count-disagrees at VectorFields", {"numberOfFields='3'", "numberOfFields='2'"}},
};
INSTANTIATE_TEST_SUITE_P(Documents, SilentOutcome, testing::ValuesIn(kOfDocuments));

const Silent kOfVectors[] = {
    {"vector-dropped at VectorInstance", Added("<VectorInstance id='new'/>")},
    {"vector-dropped at VectorInstance",
     Added("<VectorInstance id='new'><REAL-SparseArray n='0'/></VectorInstance>")},
    {"vector-dropped at VectorInstance",
     Added("<VectorInstance id=''><REAL-SparseArray n='3'/></VectorInstance>")},
    {"vector-dropped at VectorInstance", Added(kVectorW)},
    {"zero-vector at REAL-SparseArray", AddedArray("<Indices/><REAL-Entries/>")},
    {"no-indices at REAL-SparseArray", AddedArray("<REAL-Entries>1 2 3</REAL-Entries>")},
    {"index-out-of-range at Indices", AddedEntries("0 4", "1 1")},
    {"unordered-indices at REAL-SparseArray", AddedEntries("2 1", "1 1")},
    {"indices-unordered at Indices", AddedEntries("2 2", "1 1")},
    {"bad-number at Indices", AddedEntries("1 2.9", "1\n1e-3")},
    {"bad-number at Entries", AddedEntries("1 2", "1,5 x")},
    {"count-disagrees at REAL-SparseArray", {"n='3'", "n='30'"}},
};
INSTANTIATE_TEST_SUITE_P(Vectors, SilentOutcome, testing::ValuesIn(kOfVectors));

const Silent kOfMachines[] = {
    {"unknown-vector at SupportVector",
     {"<SupportVector vectorId='b'", "<SupportVector vectorId='B'"}},
    {"surplus-vectors at SupportVector",
     {kCoefficients, "<Coefficient value='1'/>", "numberOfCoefficients='2'", ""}},
    {"surplus-coefficients at Coefficient",
     {kVectors, "<SupportVector vectorId='b'/>", "numberOfSupportVectors='2'", ""}},
    {"bad-coefficient at Coefficient", {"<Coefficient value='-1'", "<Coefficient value='one'"}},
    {"no-coefficient-value at Coefficient", {"<Coefficient value='-1'", "<Coefficient"}},
    {"bad-absolute-value at Coefficients", {"absoluteValue='0.5'", "absoluteValue='0,5'"}},
    {"no-absolute-value at Coefficients", {"absoluteValue='0.5'", ""}},
    {"bad-threshold at SupportVectorMachine", {"threshold='0.25'", "threshold=''"}},
    {"unknown-category at SupportVectorMachine",
     {"targetCategory='a' alternateTargetCategory='b'",
      "targetCategory='A' alternateTargetCategory=' b'"}},
    {"count-disagrees at SupportVectors",
     {"numberOfSupportVectors='2' numberOfAttributes='3'",
      "numberOfSupportVectors='3' numberOfAttributes='4'"}},
    {"count-disagrees at Coefficients", {"numberOfCoefficients='2'", "numberOfCoefficients='3'"}},
    {"second-list at Coefficients", {kEnd, "<Coefficients/>" + kEnd}},
    {"machine-count at SupportVectorMachineModel",
     {"OneAgainstOne", "OneAgainstAll",
      "*<SupportVectorMachine targetCategory='b'[^]*?</SupportVectorMachine>", ""}},
    {"method-not-used at SupportVectorMachineModel",
     {"OneAgainstOne", "OneAgainstAll", kMachines, kProbability}},
    {"extension-not-first at Extension", {"<Extension", "<Extension/><Extension"}, "two.pmml"},
    {"extension-incomplete at Extension", {" B='0'", ""}, "two.pmml"},
    {"extension-incomplete at Extension",
     {"<StandardDeviation>0.5</StandardDeviation>", ""},
     "line.pmml"},
    {"percentages-exchanged at ResponseCategory",
     {kPair, "response='no' nonResponse='yes'"},
     "two.pmml"},
    {"unknown-category at ResponseCategory",
     {kPair, "response='yes' nonResponse='NO'"},
     "two.pmml"},
    {"pair-out-of-order at ResponseCategory",
     {kMachines, kProbability, "nonResponse='c, d'", "nonResponse='b'"}},
    {"extension-on-some at SupportVectorMachine", {kFirstMachine, kProbability}},
};
INSTANTIATE_TEST_SUITE_P(Machines, SilentOutcome, testing::ValuesIn(kOfMachines));

}  // namespace
}  // namespace svmscore::app
