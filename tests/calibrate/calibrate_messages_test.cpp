// What svmscore calibrate says of what it meets, doubts and refuses.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "tests/app/edited.h"
#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"
#include "tests/calibrate/calibrated.h"

namespace svmscore::app {
namespace {

using nlohmann::json;
using testing::HasSubstr;

TEST(Calibrate, SaysWhatItMeets) {
  const TemporaryFolder folder;
  setenv("SOURCE_DATE_EPOCH", "86400", 1);
  const Calibrated calibrated = Calibrate(
      folder, kPlane,
      PlaneCases() + "1,0,\n1,0,NA\n1,0,perhaps\n,0,no\n1,0,yes\n0,0.1000000001,no\n", "class");
  unsetenv("SOURCE_DATE_EPOCH");
  ASSERT_EQ(calibrated.run.status, 0) << calibrated.run.err;
  EXPECT_THAT(calibrated.document, HasSubstr("1970-01-02T00:00:00Z"));
  const json rows = calibrated.report.at("rows");
  EXPECT_EQ(rows, json::parse(R"({"read": 46, "unlabelled": 2, "unknownLabels": 1, "unscored": 1,
                                  "used": 42})"));
  const std::string remarks = calibrated.report.at("remarks").dump();
  for (const char* said : {"perhaps", "every support vector is among the rows"}) {
    EXPECT_THAT(remarks, HasSubstr(said));
  }
  EXPECT_EQ(calibrated.report.at("before").count("brierScore"), 0);
  std::size_t cases = 0;
  for (const json& tenth : calibrated.report.at("after").at("reliability")) {
    cases += tenth.at("cases").get<std::size_t>();
  }
  EXPECT_EQ(cases, 42);
  // By its votes the other category would win: that is no reason to change what fits the cases.
  const Ran doctor = RunProgram(
      {"doctor",
       folder.Write("votes.pmml", Replaced(calibrated.document, "functionName=\"classification\"",
                                           "functionName=\"classification\" maxWins=\"true\""))});
  EXPECT_THAT(doctor.out, HasSubstr("leave it as it is, and set maxWins"));

  const Ran text =
      RunProgram({"calibrate", folder.Path("model.pmml"), "-", "--actual", "class"},
                 Replaced(Replaced(Replaced(PlaneCases(), "no", "?"), "yes", "no"), "?", "yes"));
  EXPECT_EQ(text.status, 0) << text.err;
  for (const char* said : {"the labels may be exchanged", "by cross-validation in 5 parts",
                           "the model gives no probabilities", "no document is written"}) {
    EXPECT_THAT(text.out, HasSubstr(said));
  }
}

// It predicts 3.
const char* const kConstant = R"(<?xml version="1.0"?>
<PMML version="4.4" xmlns="http://www.dmg.org/PMML-4_4"><DataDictionary>
<DataField name="x" optype="continuous" dataType="double"/>
<DataField name="y" optype="continuous" dataType="double"/></DataDictionary>
<SupportVectorMachineModel functionName="regression"><MiningSchema><MiningField name="x"/>
<MiningField name="y" usageType="target"/></MiningSchema><LinearKernelType/><VectorDictionary><VectorFields>
<FieldRef field="x"/></VectorFields><VectorInstance id="a"><Array type="real" n="1">77</Array></VectorInstance>
</VectorDictionary><SupportVectorMachine><SupportVectors><SupportVector vectorId="a"/></SupportVectors>
<Coefficients absoluteValue="3"><Coefficient value="0"/></Coefficients></SupportVectorMachine>
</SupportVectorMachineModel></PMML>
)";

TEST(Calibrate, DoubtsWhatItIsGiven) {
  const TemporaryFolder folder;
  const auto edited = [](const std::string& example, const std::vector<std::string>& edits) {
    std::string text = ReadFile(Example(example));
    for (std::size_t i = 0; i < edits.size(); i += 2) text = Replaced(text, edits[i], edits[i + 1]);
    return text;
  };
  const struct {
    std::string document;
    std::string holdout;
    const char* actual;
    std::vector<const char*> said;
  } doubts[] = {
      {edited("digits/model.pmml", {}),
       edited("digits/cases.csv", {}),
       "digit",
       {"the probabilities become worse"}},
      {edited("broken/model.pmml", {}),
       edited("iris/cases.csv", {}),
       "species",
       {"those of vote shares", "wrong one of their categories: setosa and virginica; their"}},
      {edited("iris/model.pmml", {}),
       edited("iris/cases.csv", {}),
       "species",
       {"those of vote shares", "few cases"}},
      {edited("iris/model.pmml", {" maxWins=\"true\"", ""}),
       edited("iris/cases.csv", {}),
       "species",
       {"those of vote shares", "more than half of the predictions change"}},
      {edited("iris/model.pmml", {}),
       edited("iris/cases.csv", {}) + ",1,1,1,setosa\n",
       "species",
       {"those of vote shares", "rows that cannot be scored: 1;"}},
      {edited("diabetes/model.pmml",
              {"<VectorDictionary",
               "<Targets><Target rescaleFactor='0.01'/></Targets><VectorDictionary"}),
       edited("diabetes/cases.csv", {}),
       "progression",
       {"may have another unit"}},
      {edited("diabetes/model.pmml", {}), edited("diabetes/cases.csv", {}), "progression", {}},
      {kConstant,
       "x,y\n" + Replaced(std::string(25, '.'), ".", "1,3.0000000000000004\n"),
       "y",
       {"next to no width"}},
      // One label beyond all others is not what the rest is measured by.
      {kConstant, "x,y\n1,1e300\n" + Replaced(std::string(25, '.'), ".", "1,4\n1,2\n"), "y", {}},
  };
  for (const auto& [document, holdout, actual, said] : doubts) {
    const Calibrated calibrated = Calibrate(folder, document, holdout, actual);
    ASSERT_EQ(calibrated.run.status, 0) << calibrated.run.err;
    const json remarks = calibrated.report.at("remarks");
    for (const char* sentence : said) EXPECT_THAT(remarks.dump(), HasSubstr(sentence));
    const bool few = remarks.dump().find("few cases") != std::string::npos;
    const bool told = std::find(said.begin(), said.end(), std::string("few cases")) != said.end();
    EXPECT_EQ(remarks.size(), said.size() + (few && !told ? 1 : 0)) << remarks;
  }
}

TEST(Calibrate, RefusesWhatItCannotDo) {
  const TemporaryFolder folder;
  const std::string plane = kPlane;
  const std::string iris = ReadFile(Example("iris/model.pmml"));
  const std::string iris_cases = ReadFile(Example("iris/cases.csv"));
  const std::string diabetes = ReadFile(Example("diabetes/model.pmml"));
  const std::string diabetes_cases = ReadFile(Example("diabetes/cases.csv"));
  const std::string few = diabetes_cases.substr(0, diabetes_cases.find("\n", 700) + 1);
  std::string all = Edited(iris, {"OneAgainstOne", "OneAgainstAll"});
  for (const auto& [pair, one] : std::map<std::string, std::string>{
           {"targetCategory=\"setosa\" alternateTargetCategory=\"versicolor\"", "setosa"},
           {"targetCategory=\"setosa\" alternateTargetCategory=\"virginica\"", "versicolor"},
           {"targetCategory=\"versicolor\" alternateTargetCategory=\"virginica\"", "virginica"}}) {
    all = Replaced(all, pair, "targetCategory=\"" + one + "\"");
  }
  const std::string machine =
      plane.substr(plane.find("<SupportVectorMachine "), plane.find("</SupportVectorMachineModel") -
                                                             plane.find("<SupportVectorMachine "));
  std::string entity = Replaced(plane, machine, "&machine;");
  entity = Replaced(
      entity, "<PMML",
      "<!DOCTYPE PMML [<!ENTITY machine '" + Replaced(machine, "'", "&#39;") + "'>]>\n<PMML");
  struct Refusal {
    std::string document;
    std::string holdout;
    std::string actual;
    Arguments options;
    int status;
    const char* said;
  };
  const Refusal refusals[] = {
      {all, iris_cases, "species", {}, 3, "one-against-all"},
      {Edited(iris, {"*alternateTargetCategory='virginica'", "alternateTargetCategory='setosa'"}),
       iris_cases,
       "species",
       {},
       3,
       "cannot be calibrated"},
      {entity, PlaneCases(), "class", {}, 3, "the entity \"machine\""},
      {plane,
       Replaced(PlaneCases(), "yes", "no"),
       "class",
       {},
       5,
       "no usable row has the label yes"},
      {plane, "x,y,class\n1,2,maybe\n,2,yes\n", "class", {}, 5, "no row can be used"},
      {plane, "x,y,class\n1,2,maybe\n", "class", {}, 5, R"(are "maybe", categories "no", "yes")"},
      {plane, "x,y,class\n", "class", {}, 5, "no rows below the header"},
      {plane, PlaneCases(), "x", {}, 5, "the column x is an input of the model"},
      {"no document", PlaneCases(), "x", {"-o", folder.Path("no/such.pmml")}, 6, "cannot write"},
      {plane, PlaneCases(), "klass", {}, 5, "no column is named klass"},
      {diabetes, few, "progression", {}, 5, "it takes 19"},
      {diabetes, few, "progression", {"--confidence", "1"}, 2, "1 is not above 0 and below 1"},
      {plane, PlaneCases(), "class", {"-o", folder.Path("model.pmml")}, 2, "which is read"},
      {plane, PlaneCases(), "class", {"-o", "-"}, 2, "name a file"},
  };
  for (const Refusal& refusal : refusals) {
    SCOPED_TRACE(refusal.said);
    const Calibrated refused =
        Calibrate(folder, refusal.document, refusal.holdout, refusal.actual, refusal.options);
    EXPECT_EQ(refused.run.status, refusal.status) << refused.run.out;
    EXPECT_THAT(refused.run.err, HasSubstr(refusal.said));
    EXPECT_FALSE(std::filesystem::exists(folder.Path("calibrated.pmml")));
  }
}

}  // namespace
}  // namespace svmscore::app
