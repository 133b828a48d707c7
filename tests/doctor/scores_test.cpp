// What doctor concludes from scores that differ from the expected ones.
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/doctor/patients.h"

namespace svmscore::app {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

struct Fault {
  std::string example;
  std::string finding;  // the second one: the first is the mismatch
  Edits edits;

  friend void PrintTo(const Fault& fault, std::ostream* os) {
    *os << fault.example << ": " << fault.finding;
  }
};

class Scores : public testing::TestWithParam<Fault> {};

Diagnosis DiagnoseExample(const std::string& name, const Edits& edits) {
  const std::string folder = Example(name);
  return Diagnose(Edited(ReadFile(folder + "/model.pmml"), edits),
                  {"--input", folder + "/cases.csv", "--expected", folder + "/expected.csv"});
}

TEST_P(Scores, AreExplained) {
  const Diagnosis diagnosis = DiagnoseExample(GetParam().example, GetParam().edits);
  EXPECT_THAT(diagnosis.findings + ",", StartsWith("mismatch, " + GetParam().finding + ","))
      << diagnosis.json.dump(1);
}

TEST(Scores, ThatAgreeAreNoFinding) {
  const Diagnosis digits = DiagnoseExample("digits", {});
  EXPECT_EQ(digits.findings, "constant-field at VectorFields");
  EXPECT_EQ(digits.json["agreement"]["accuracy"], 1.0);
  EXPECT_EQ(digits.json["agreement"]["confusions"].size(), 10U);
  const Diagnosis diabetes = DiagnoseExample("diabetes", {});
  EXPECT_EQ(diabetes.json["agreement"]["r2"], 1.0);
  EXPECT_EQ(diabetes.json["agreement"]["largestDifference"], 0.0);
  EXPECT_TRUE(Diagnose(ReadFile(DATA_FOLDER "/sound.pmml")).json["agreement"].is_null());
}

constexpr const char* kReordered = "rows-reordered";
const Edits kNegated = {"*<Coefficient value='", "<Coefficient value='-", "*='--", "='"};
const Fault kFaults[] = {
    {"iris",
     "max-wins-inverted at SupportVectorMachineModel",
     {"maxWins='true'", "maxWins='false'"}},
    {"iris",
     "max-wins-inverted at SupportVectorMachineModel",
     {"*targetCategory='([a-z]*)' alternateTargetCategory='([a-z]*)'",
      "targetCategory='$2' alternateTargetCategory='$1'"}},
    {"iris",
     "machine-sign at SupportVectorMachine",
     {"targetCategory='setosa' alternateTargetCategory='versicolor'",
      "targetCategory='versicolor' alternateTargetCategory='setosa'"}},
    {"iris",
     "method-mistaken at SupportVectorMachineModel",
     {"'OneAgainstOne'", "'OneAgainstAll'"}},
    {"iris",
     "classes-permuted at SupportVectorMachine",
     {"*'setosa'", "'x'", "*'virginica'", "'setosa'", "*'x'", "'virginica'"}},
    {"iris",
     "categories-renamed",
     {"*'setosa'", "'1'", "*'virginica'", "'2'", "*'versicolor'", "'3'"}},
    {"tumour", "offset-sign at Coefficients", {"absoluteValue='-", "absoluteValue='"}},
    {"tumour",
     "machine-sign at SupportVectorMachine",
     {"*(<Coefficient value|absoluteValue)='", "$1='-", "*='--", "='"}},
    {"tumour",
     "classes-swapped at SupportVectorMachine",
     {"response='malignant' nonResponse='benign'", "response='benign' nonResponse='malignant'"}},
    {"digits", "offset-sign at Coefficients", kNegated},
    {"diabetes", "values-negated at Coefficients", kNegated},
    {"diabetes", "offset-sign at Coefficients", {"absoluteValue='", "absoluteValue='-"}},
    {"diabetes",
     "cases-beyond-vectors at FieldRef",
     {"*<DerivedField name='z_bmi'[^]*?</DerivedField>", "", "field='z_bmi'", "field='bmi'"}},
    {"diabetes", "constant-offset at Coefficients", {"absoluteValue='", "absoluteValue='1"}},
    {"diabetes",
     "values-rescaled at Coefficients",
     {"</MiningSchema>", "</MiningSchema><Targets><Target rescaleFactor='2'/></Targets>"}},
};
INSTANTIATE_TEST_SUITE_P(Examples, Scores, testing::ValuesIn(kFaults));

std::vector<std::string> With(const TemporaryFolder& folder, const std::string& cases,
                              const std::string& expected) {
  return {"--input", folder.Write("cases.csv", cases), "--expected",
          folder.Write("expected.csv", expected)};
}

// Where the field has a certain value, the expected scores are those of another model.
TEST(Scores, NameTheFieldThatTellsTheRowsApart) {
  const std::string model = ReadFile(DATA_FOLDER "/sound.pmml");
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
  ASSERT_EQ(diagnosis.findings, "mismatch, mismatch-field") << diagnosis.json.dump(1);
  EXPECT_THAT(std::string(diagnosis.json["findings"][0]["what"]),
              HasSubstr("8 of 16 rows disagree"));
  EXPECT_THAT(std::string(diagnosis.json["findings"][0]["what"]), HasSubstr("row 3: prediction: "));
  EXPECT_EQ(diagnosis.json["findings"][1]["what"],
            "grade is \"B\" in all rows that disagree, and in none that agree");
}

// What the producer meant, what it wrote instead, and what doctor finds.
struct Slip {
  std::string finding;
  Edits meant;
  Edits written;
};

const Edits kPolynomial = {"<RadialBasisKernelType gamma='0.5'",
                           "<PolynomialKernelType gamma='1' coef0='0' degree='2'"};
Edits Percentages(const std::string& first, const std::string& second) {
  return {"</MiningSchema>",
          "</MiningSchema><Output><OutputField name='first' feature='probability' value='" + first +
              "'/><OutputField name='second' feature='probability' value='" + second +
              "'/></Output>",
          "<SupportVectors ",
          "<Extension extender='svmscore'><ResponseCategory response='yes' nonResponse='no'/>"
          "<ProbabilityParameters A='-1' B='0.1'/></Extension><SupportVectors "};
}

const Slip kSlips[] = {
    {"kernel-default-differs at PolynomialKernelType",
     kPolynomial,
     {kPolynomial[0], "<PolynomialKernelType gamma='1' degree='2'"}},
    {"offset-not-wanted at Coefficients",
     {"absoluteValue='0.1'", "absoluteValue='0'"},
     {"absoluteValue='0.1'", "absoluteValue='0.37'"}},
    {"percentages-swapped at SupportVectorMachine", Percentages("yes", "no"),
     Percentages("no", "yes")},
};

TEST(Scores, TellWhatWasMeant) {
  std::string cases = "age,sex,grade,size\n";
  for (int i = 0; i < 40; ++i) {
    cases += std::to_string(i * 2) + (i % 2 == 0 ? ",Male" : ",Female") +
             (i % 4 < 2 ? ",A," : ",B,") + std::to_string(i % 7 - 3) + "\n";
  }
  const std::string sound = ReadFile(DATA_FOLDER "/sound.pmml");
  for (const Slip& slip : kSlips) {
    const TemporaryFolder folder;
    const Ran meant =
        RunProgram({"score", folder.Write("m.pmml", Edited(sound, slip.meant))}, cases);
    const Diagnosis diagnosis =
        Diagnose(Edited(sound, slip.written), With(folder, cases, meant.out));
    EXPECT_THAT(diagnosis.findings, StartsWith("mismatch, " + slip.finding)) << meant.out;
  }
}

TEST(Scores, TellOtherRowsFromOtherScores) {
  const std::string expected = ReadFile(Example("diabetes/expected.csv"));
  const std::size_t first = expected.find('\n') + 1;
  const std::size_t second = expected.find('\n', first) + 1;
  const std::string rotated =
      expected.substr(0, first) + expected.substr(second) + expected.substr(first, second - first);
  const TemporaryFolder folder;
  const Diagnosis diagnosis =
      Diagnose(ReadFile(Example("diabetes/model.pmml")),
               With(folder, ReadFile(Example("diabetes/cases.csv")), rotated));
  ASSERT_EQ(diagnosis.findings, std::string("mismatch, ") + kReordered) << diagnosis.json.dump(1);
  EXPECT_THAT(std::string(diagnosis.json["findings"][1]["what"]),
              HasSubstr("is predicted for row "));
}

// Decision values show faults that leave all predictions right.
TEST(Scores, IncludeDecisionValues) {
  const Diagnosis lost = DiagnoseExample("iris", {"vectorId='v9'", "vectorId='v99'"});
  EXPECT_THAT(lost.findings, StartsWith("mismatch, unknown-vector at SupportVector"));
  EXPECT_THAT(std::string(lost.json["findings"][0]["what"]),
              HasSubstr("50 of 50 rows disagree with "));
  EXPECT_THAT(std::string(lost.json["findings"][0]["what"]),
              HasSubstr("row 1: decision(setosa|versicolor): expected -0.848"));
}

TEST(Scores, ThatNobodyExpectsOrCanReadAreRefused) {
  const TemporaryFolder folder;
  const std::string cases = folder.Write("cases.csv", "age,sex,grade,size\n20,Male,A,1\n");
  for (const std::string& expected :
       {folder.Write("expected.csv", "prediction,status\n,\n"), folder.Path("none.csv")}) {
    EXPECT_EQ(
        RunProgram({"doctor", DATA_FOLDER "/sound.pmml", "--input", cases, "--expected", expected})
            .status,
        5);
  }
}

TEST(Scores, AreReadAndComparedAsAskedFor) {
  const TemporaryFolder folder;
  const std::string expected =
      Edited(ReadFile(Example("diabetes/expected.csv")), {"\n120.13", "\n120.14"});
  const std::vector<std::string> files =
      With(folder, ReadFile(Example("diabetes/cases.csv")), expected);
  const auto findings = [&](std::vector<std::string> more) {
    more.insert(more.end(), files.begin(), files.end());
    return Diagnose(ReadFile(Example("diabetes/model.pmml")), more).findings;
  };
  EXPECT_NE(findings({}), "");
  EXPECT_EQ(findings({"--tolerance", "1e-3"}), "");
  EXPECT_NE(findings({"--tolerance", "1e-3", "--missing-token", "60"}), "");
}

}  // namespace

std::vector<std::string> KindsOfScores() {
  std::vector<std::string> kinds = {"mismatch", "mismatch-field", kReordered};
  const auto add = [&kinds](const std::string& finding) {
    kinds.push_back(finding.substr(0, finding.find(' ')));
  };
  for (const Fault& fault : kFaults) add(fault.finding);
  for (const Slip& slip : kSlips) add(slip.finding);
  return kinds;
}

}  // namespace svmscore::app
