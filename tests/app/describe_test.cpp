// svmscore describe: what it tells of a model and of how its document is read.
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
Decided       by exact decision values (the degree is neither 2 nor 3)

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

What is lost or wrong
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
  EXPECT_TRUE(described["findings"].empty());
  EXPECT_THAT(std::string(described["display"]), HasSubstr("SupportVectorMachineModel"));
  EXPECT_EQ(json::parse(RunProgram({"describe", Data("two.pmml"), "--json"}).out)["percentages"],
            "calibrated probabilities");
}

// One line a kind, and in JSON every place up to the fifth.
TEST(Describe, TellsHowADocumentIsReadAndWhatIsLost) {
  std::string instances;
  for (int i = 0; i < 100; ++i) {
    instances += "<VectorInstance id=\"e" + std::to_string(i) + "\"/>\n";
  }
  const TemporaryFolder folder;
  const std::string model =
      EditedFile(folder, Data("three.pmml"),
                 {"</VectorDictionary>", instances + "</VectorDictionary>", "numberOfVectors='3'",
                  "", "maxWins='true'", "maxWins='1'", "threshold='0'", "threshold='none'"});
  const std::string out = RunProgram({"describe", model}).out;
  EXPECT_THAT(out, HasSubstr("\nHow the document is read\n"
                             "  line 11, SupportVectorMachineModel: maxWins is written"));
  EXPECT_THAT(out,
              HasSubstr("\nWhat is lost or wrong\n"
                        "  line 29, VectorInstance: a vector is left out, together with the terms "
                        "of machines that name it: no array of numbers in element "
                        "VectorInstance (the first of 100 places)\n"
                        "  error: line 11, SupportVectorMachineModel: a threshold that is not "
                        "a number is ignored: \"none\" is not"));
  const json described = json::parse(RunProgram({"describe", model, "--json"}).out);
  const json& findings = described["findings"];
  ASSERT_EQ(findings.size(), 7u) << findings.dump(1);
  EXPECT_EQ(findings[0]["name"], "boolean-spelling");
  EXPECT_EQ(findings[0]["class"], "standard");
  EXPECT_EQ(findings[0]["further"], 0);
  EXPECT_EQ(findings[5]["name"], "vector-dropped");
  EXPECT_EQ(findings[5]["line"], 33);
  EXPECT_EQ(findings[5]["further"], 95);
  EXPECT_EQ(findings[6]["class"], "error");
  EXPECT_EQ(findings[6]["remedy"], "write a number");
}

}  // namespace
}  // namespace svmscore::app
