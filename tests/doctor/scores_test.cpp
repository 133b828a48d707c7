// What doctor makes of scores that are not the expected ones.
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/doctor/patients.h"

namespace svmscore::app {
namespace {

using testing::Contains;
using testing::HasSubstr;

struct Fault {
  std::string example;
  std::vector<Edit> edits;
  std::string finding;  // the second one: the first is the mismatch

  friend void PrintTo(const Fault& fault, std::ostream* os) {
    *os << fault.example << ": " << fault.finding;
  }
};

class Scores : public testing::TestWithParam<Fault> {};

TEST_P(Scores, AreExplained) {
  const std::string folder = Example(GetParam().example);
  const Diagnosis diagnosis =
      Diagnose(Edited(folder + "/model.pmml", GetParam().edits),
               {"--input", folder + "/cases.csv", "--expected", folder + "/expected.csv"});
  ASSERT_GE(diagnosis.findings.size(), 2u);
  EXPECT_EQ(diagnosis.findings[0], "mismatch");
  EXPECT_EQ(diagnosis.findings[1], GetParam().finding) << diagnosis.json.dump(1);
}

const Edit kSwapOne = {"targetCategory=\"setosa\" alternateTargetCategory=\"versicolor\"",
                       "targetCategory=\"versicolor\" alternateTargetCategory=\"setosa\""};
const Edit kSwapAll = {"targetCategory=\"([a-z]*)\" alternateTargetCategory=\"([a-z]*)\"",
                       "targetCategory=\"$2\" alternateTargetCategory=\"$1\"", true};
const Edit kMinus = {"<Coefficient value=\"", "<Coefficient value=\"-", true};
const Edit kPlus = {"value=\"--", "value=\"", true};
const Edit kOffset = {"absoluteValue=\"-", "absoluteValue=\"", true};

INSTANTIATE_TEST_SUITE_P(
    Examples, Scores,
    testing::Values(Fault{"iris",
                          {{"maxWins=\"true\"", "maxWins=\"false\""}},
                          "max-wins-inverted at SupportVectorMachineModel"},
                    Fault{"iris", {kSwapAll}, "max-wins-inverted at SupportVectorMachineModel"},
                    Fault{"iris", {kSwapOne}, "machine-sign at SupportVectorMachine"},
                    Fault{"iris",
                          {{"\"setosa\"", "\"x\"", true},
                           {"\"virginica\"", "\"setosa\"", true},
                           {"\"x\"", "\"virginica\"", true}},
                          "classes-permuted at SupportVectorMachine"},
                    Fault{"tumour", {kOffset}, "offset-sign at Coefficients"},
                    Fault{"tumour", {kMinus, kPlus, kOffset}, "machine-sign at Coefficients"},
                    Fault{"tumour",
                          {{"response=\"malignant\" nonResponse=\"benign\"",
                            "response=\"benign\" nonResponse=\"malignant\""}},
                          "classes-swapped at SupportVectorMachine"},
                    Fault{"digits", {kMinus, kPlus}, "offset-sign at Coefficients"},
                    Fault{"diabetes", {kMinus, kPlus}, "values-negated at Coefficients"},
                    Fault{"diabetes",
                          {{"absoluteValue=\"", "absoluteValue=\"-"}},
                          "offset-sign at Coefficients"},
                    Fault{"diabetes",
                          {{"absoluteValue=\"", "absoluteValue=\"1"}},
                          "constant-offset at Coefficients"},
                    Fault{"diabetes",
                          {{"</MiningSchema>",
                            "</MiningSchema><Targets><Target rescaleFactor=\"2\"/></Targets>"}},
                          "values-rescaled at Coefficients"}));

std::vector<std::string> With(const TemporaryFolder& folder, const std::string& cases,
                              const std::string& expected) {
  return {"--input", folder.Write("cases.csv", cases), "--expected",
          folder.Write("expected.csv", expected)};
}

TEST(Scores, ThatAgreeAreNoFinding) {
  const std::string folder = Example("digits");
  const Diagnosis diagnosis =
      Diagnose(ReadFile(folder + "/model.pmml"),
               {"--input", folder + "/cases.csv", "--expected", folder + "/expected.csv"});
  EXPECT_EQ(diagnosis.findings, std::vector<std::string>{"constant-field at VectorFields"});
}

// The expected scores are those of another model, wherever the field has a certain value.
TEST(Scores, NameTheFieldThatTellsTheRowsApart) {
  const std::string model = ReadFile(Data("sound.pmml"));
  std::string rows;
  for (int i = 0; i < 16; ++i) {
    rows += std::to_string(20 + i * 7 % 50) + (i % 2 == 0 ? ",Male" : ",Female") +
            (i % 4 < 2 ? ",A," : ",B,") + (i % 5 == 0 ? "-1" : "0.4") + "\n";
  }
  const TemporaryFolder folder;
  const std::string cases = "age,sex,grade,size\n" + rows;
  const Ran scored = RunProgram({"score", folder.Write("m.pmml", model)}, cases);
  std::istringstream predictions(scored.out);
  std::string line;
  std::getline(predictions, line);
  std::string expected = "prediction\n";
  for (int i = 0; std::getline(predictions, line); ++i) {
    const bool yes = line.starts_with("yes");
    expected += (yes != (i % 4 >= 2)) ? "yes\n" : "no\n";
  }
  const Diagnosis diagnosis = Diagnose(model, With(folder, cases, expected));
  ASSERT_EQ(diagnosis.findings, (std::vector<std::string>{"mismatch", "mismatch-field"}))
      << diagnosis.json.dump(1);
  EXPECT_THAT(std::string(diagnosis.json["findings"][0]["what"]),
              HasSubstr("8 of 16 rows disagree"));
  EXPECT_THAT(std::string(diagnosis.json["findings"][0]["what"]), HasSubstr("row 3: prediction: "));
  EXPECT_EQ(diagnosis.json["findings"][1]["what"],
            "grade is \"B\" in all rows that disagree, and in none that agree");
}

// Training with coef0 = 0, and a document that leaves it out.
TEST(Scores, TellOfDefaultsThatTheProducerMeantOtherwise) {
  const std::string kernel = "<PolynomialKernelType gamma=\"1\" coef0=\"0\" degree=\"2\"";
  const Edit with = {"<RadialBasisKernelType gamma=\"0.5\"", kernel};
  const Edit without = {"<RadialBasisKernelType gamma=\"0.5\"",
                        "<PolynomialKernelType gamma=\"1\" degree=\"2\""};
  std::string cases = "age,sex,grade,size\n";
  for (int i = 0; i < 40; ++i) {
    cases += std::to_string(i * 2) + (i % 2 == 0 ? ",Male" : ",Female") +
             (i % 4 < 2 ? ",A," : ",B,") + std::to_string(i % 7 - 3) + "\n";
  }
  const TemporaryFolder folder;
  const std::string meant = folder.Write("m.pmml", Edited(Data("sound.pmml"), {with}));
  const Ran scored = RunProgram({"score", meant}, cases);
  const Diagnosis diagnosis =
      Diagnose(Edited(Data("sound.pmml"), {without}), With(folder, cases, scored.out));
  EXPECT_THAT(diagnosis.findings, Contains("kernel-default-differs at PolynomialKernelType"))
      << diagnosis.json.dump(1);
}

TEST(Scores, ThatNobodyExpectsAreRefused) {
  const TemporaryFolder folder;
  const std::string model = folder.Write("m.pmml", ReadFile(Data("sound.pmml")));
  std::vector<std::string> arguments =
      With(folder, "age,sex,grade,size\n20,Male,A,1\n", "prediction,status\n,\n");
  arguments.insert(arguments.begin(), {"doctor", model});
  EXPECT_EQ(RunProgram(arguments).status, 5);
}

TEST(Scores, AreReadAndComparedAsAskedFor) {
  const TemporaryFolder folder;
  const std::string cases = ReadFile(Example("diabetes/cases.csv"));
  const std::string expected = Edited(Example("diabetes/expected.csv"), {{"\n120.13", "\n120.14"}});
  const std::vector<std::string> files = {"--input", folder.Write("cases.csv", cases), "--expected",
                                          folder.Write("expected.csv", expected)};
  const std::string model = ReadFile(Example("diabetes/model.pmml"));
  const auto findings = [&](std::vector<std::string> more) {
    more.insert(more.end(), files.begin(), files.end());
    return Diagnose(model, more).findings.size();
  };
  EXPECT_GT(findings({}), 0u);
  EXPECT_EQ(findings({"--tolerance", "1e-3"}), 0u);
  EXPECT_GT(findings({"--tolerance", "1e-3", "--missing-token", "60"}), 0u);
}

}  // namespace
}  // namespace svmscore::app
