// svmscore verify, and the columns that documents name.
#include <regex>
#include <string>
#include <tuple>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/edited.h"
#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"

namespace svmscore::app {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

const std::string kChain = Data("../../output/data/chain.pmml");
constexpr char kChainCases[] = "x1,x2,y\n0.7,0.3,2\n1.6,,2\n3,1,2\nNA,1,2\nabc,1,2\n";

TEST(OutputColumns, HaveTheDocumentsNamesAndOrder) {
  const Ran named = RunProgram({"score", kChain, "--passthrough", "x1"}, kChainCases);
  EXPECT_EQ(named.status, 0) << named.err;
  EXPECT_EQ(named.out,
            "x1,y_hat,y_log,band,status\n"
            "0.7,2.4412500000000006,1.2358347774746803,small,0\n"
            "1.6,1.4865624999999998,0.9109012345897168,small,0\n"
            "3,9.25,2.327277705584417,big,0\n"
            "NA,,,,90029\n"
            "abc,,,,90027\n");
  // Plain names are a matter of names: the numbers are rescaled all the same.
  EXPECT_THAT(RunProgram({"score", kChain, "--columns", "raw"}, kChainCases).out,
              StartsWith("prediction,status\n2.4412500000000006,0\n1"));
  EXPECT_THAT(RunProgram({"score", kChain, "--columns", "all"}, kChainCases).out,
              StartsWith("prediction,stddev,ci_lower,ci_upper,status\n2.4412500000000006,,,,0\n1"));
}

TEST(OutputColumns, ReadExtraInputsWhereTheCasesHaveThem) {
  const TemporaryFolder folder;
  const std::string model =
      EditedFile(folder, kChain,
                 {"<OutputField name='y_log'",
                  "<OutputField name='rest' feature='residual'/><OutputField name='y_log' "
                  "isFinalResult='false'"});
  const Ran with =
      RunProgram({"score", model, "--format", "jsonl"}, "x1,x2,y\n1.6,,3.5\n1.6,,\n1.6,,?\n");
  EXPECT_EQ(with.out,
            "{\"y_hat\":1.4865624999999998,\"rest\":2.0134375,\"band\":\"small\",\"status\":0}\n"
            "{\"y_hat\":1.4865624999999998,\"rest\":null,\"band\":\"small\",\"status\":0}\n"
            "{\"y_hat\":1.4865624999999998,\"rest\":null,\"band\":\"small\",\"status\":0}\n")
      << with.err;
  EXPECT_EQ(RunProgram({"score", model}, "x1,x2\n1.6,0.25\n").out,
            "y_hat,rest,band,status\n1.4865624999999998,,small,0\n");
}

TEST(Verify, RunsTheDocumentsRecords) {
  const std::string band = "VerificationField field='band'";
  const std::string label = "VerificationField field='y' column='band'";
  const std::string hat = "VerificationField field='y_hat'";
  const struct {
    Edits edits;
    int status;
    std::string told;  // on standard output first of all, or else in the message
  } rows[] = {
      {{}, 0, "4 cells compared, 0 disagree\n"},
      {{">2.44125<", ">2.44125001<", "<band>small</band></row></Inl",
        "<band>big</band></row></Inl"},
       1,
       "record 1: y_hat: expected 2.44125001, got 2.4412500000000006 (relative deviation 4.1e-09, "
       "allowed 1e-09)\nrecord 2: band: expected big, got small\n4 cells compared, 2 disagree\n"},
      // The target's column is the training label beside an output field, and else the prediction.
      {{band, label, "fieldCount='4'", "fieldCount='5'"},
       0,
       "fieldCount is 5, but there are 4\n2 cells compared, 0 disagree\n"},
      {{band, label, hat, "VerificationField field='y' column='y_hat'"},
       1,
       "record 1: y: expected small, got 2.441"},
      {{"<PolynomialKernelType",
        "<LocalTransformations><DerivedField name='rest' optype='continuous' dataType='double'>"
        "<FieldRef field='x1'/></DerivedField></LocalTransformations><PolynomialKernelType",
        "</VerificationFields>",
        "<VerificationField field='rest' column='x1'/></VerificationFields>"},
       0,
       "fieldCount is 4, but there are 5\nrest is a derived field that nothing else needs"},
      {{"<FieldRef field='x1'/><", "<FieldRef field='root'/><", "<PolynomialKernelType",
        "<LocalTransformations><DerivedField name='root' optype='continuous' dataType='double'>"
        "<Apply function='sqrt'><Apply function='-'><FieldRef field='x1'/><Constant>1.24"
        "</Constant></Apply></Apply></DerivedField></LocalTransformations><PolynomialKernelType",
        band, band + " column='none'", hat, "VerificationField field='root' column='y_hat'"},
       1,
       "root is a derived field: its values are compared\nrecord 1: root: expected 2.44125, got "
       "nothing (status 90027; root: the derived field has no valid value, computed from x1 "
       "\"0.7\")\nrecord 2: root: expected 1.4865625, got 0.6000000000000001 "},
      {{hat, "VerificationField field='z'"}, 3, "[260311]"},
      {{band, label, hat, hat + " column='none'"}, 3, "no record has a value to compare"},
      {{"*<ModelVerification[^]*</ModelVerification>", ""}, 3, "holds no verification records"},
  };
  for (const auto& [edits, status, told] : rows) {
    const TemporaryFolder folder;
    const Ran ran = RunProgram({"verify", EditedFile(folder, kChain, edits)});
    EXPECT_EQ(ran.status, status) << told << ran.err;
    if (status == 3) {
      EXPECT_THAT(ran.err, HasSubstr(told));
    } else {
      EXPECT_THAT(ran.out, StartsWith(told));
    }
  }
}

TEST(Verify, ComparesWithExpectedColumns) {
  const TemporaryFolder folder;
  const std::string cases = folder.Write("cases.csv", kChainCases);
  const struct {
    std::string expected;
    int status;
    std::string told;
    std::string tolerance = "1e-9";
  } rows[] = {
      {"band,y_hat,mood\nsmall,2.44125,a\nsmall,1.4865625,b\nbig,9.25,c\n,,\n,,\n", 0,
       "not compared, for lack of an output of that name: mood\n6 cells compared, 0 disagree\n"},
      {"y_hat\n2.45\n1.5\n9.3\n\n\n", 0, "3 cells compared, 0 disagree\n", "0.01"},
      {"y_hat\n2.44125\n1.4865625\n9.25\n0\n\n", 1,
       "record 4: y_hat: expected 0, got nothing (status 90029; x1: \"NA\" means missing, and "
       "nothing replaces it)\n4 cells compared, 1 disagree\n"},
      // A column of another name is the prediction, or an output field made from it.
      {"score,z\n2.44125,1\n1.4865625,1\n9.25,1\n,\n,\n", 0,
       "column score is compared with the prediction\n"
       "not compared, for lack of an output of that name: z\n3 cells compared, 0 disagree\n"},
      {"z\n1.235834777474680\n0.910901234589717\n2.327277705584417\n\n\n", 0,
       "column z is compared with y_log\n3 cells compared, 0 disagree\n"},
      {"z\n1\n2\n9.25\n\n\n", 1,
       "column z is compared with the prediction\n"
       "record 1: y: expected 1, got 2.4412500000000006 (relative deviation 1.4, allowed 1e-09)\n"
       "record 2: y: expected 2, got 1.4865624999999998 (relative deviation 0.26, allowed 1e-09)\n"
       "3 cells compared, 2 disagree\n"},
      {"y_hat\n1\n", 5, "has 5 rows of cases, and "},
      {"y_hat\n\n\n\n\n\n", 5, "every cell is empty"},
      {"y_hat\n1\n1,2\n", 5, "expected.csv: line 3: a row of 2 where the header has 1 cell"},
      {"", 5, "expected.csv: the file is empty"},
  };
  for (const auto& [expected, status, told, tolerance] : rows) {
    const Ran ran = RunProgram({"verify", kChain, "--input", cases, "--expected",
                                folder.Write("expected.csv", expected), "--tolerance", tolerance});
    EXPECT_EQ(ran.status, status) << expected << ran.err;
    EXPECT_EQ(std::regex_replace(ran.out, std::regex("(^|\n)R2 .*\n"), "$1"),
              status == 5 ? "" : told)
        << expected;
    EXPECT_THAT(ran.err, HasSubstr(status == 5 ? told : ""));
  }
}

TEST(Verify, ComparesDecisionValues) {
  const std::string three = "width,height,colour\n1,1,red\n2,0.5,red\nq,1,red\n";
  const std::string values = "decision(b|a),decision(a|b),\"decision(a|c, d)\"\n";
  const struct {
    std::string model, cases, expected;
    int status;
    std::string told;
  } rows[] = {
      {"line.pmml", "x\n1\n2\n", "decision\n2.1\n4.1\n", 0, "2 cells compared, 0 disagree\n"},
      {"line.pmml", "x\n1\nNA\n", "decision\n2.2\n1\n", 1,
       "record 1: decision: expected 2.2, got 2.1 (relative deviation 0.045, allowed 1e-06)\n"
       "record 2: decision: expected 1, got nothing (status 90029; x: \"NA\" means missing, and "
       "nothing replaces it)\n2 cells compared, 2 disagree\n"},
      // A machine that the model lacks is not passed over.
      {"three.pmml", three, values + "7,1,1.5\n,2,1\n,,\n", 1,
       "expected, but the model has no machine for it: decision(b|a)\n"
       "record 1: decision(b|a): expected 7, got nothing\n5 cells compared, 1 disagree\n"},
      {"three.pmml", three, "decision(a|b),status\n1,0\n2,0\n,90027\n", 0,
       "5 cells compared, 0 disagree\n"},
      {"two.pmml", "x\n1\n", "decision\n1\n", 1, "column decision is compared with the pred"},
      // A column beside decision values is the prediction, unless it names rows or is an input.
      {"line.pmml", "x\n1\n", "x,row,wanted,decision,more\n1,1,2.1,2.1,4\n", 0,
       "column wanted is compared with the prediction\n"
       "not compared, for lack of an output of that name: more\nR2 undefined"},
      {"line.pmml", "x\n1\n", "x,row,decision\n1,1,2.1\n", 0, "1 cell compared, 0 disagree\n"},
  };
  for (const auto& [model, cases, expected, status, told] : rows) {
    const TemporaryFolder folder;
    const Ran ran = RunProgram({"verify", Data(model), "--input", folder.Write("cases.csv", cases),
                                "--expected", folder.Write("expected.csv", expected)});
    EXPECT_EQ(ran.status, status) << expected << ran.err;
    EXPECT_THAT(ran.out, StartsWith(told)) << expected;
  }
}

// A model f = 2x + 0.1 of y, and one whose score follows the sign of x.
TEST(Verify, TellsHowWellPredictionsAgree) {
  const std::string matrix = "confusion matrix, expected downwards, predicted across:\n";
  const struct {
    std::string model, cases, expected, out;
  } rows[] = {
      // Target's own name; rows named without a header, and by one.
      {"line.pmml", "x\n1\n2\n3\n", ",y\n1,2\n2,4\n3,7\n",
       "R2 0.934474, RMSE 0.525991, largest difference 0.9 (record 3), 3 cases\n"},
      {"line.pmml", "x\n1\n2\nNA\n", "id,what\na,2\nb,2\nc,7\n",
       "R2 undefined, RMSE 1.48661, largest difference 2.1 (record 2), 2 cases; 1 case has no "
       "prediction\n"},
      // Beside predictions, the target's column has the actual values.
      {"line.pmml", "x\n1\n", "y,prediction\n9,2.1\n",
       "R2 undefined, RMSE 0, largest difference 0 (record 1), 1 case\n"},
      {"two.pmml", "x\n1\n-1\n2\n-2\nq\n", "Row,the class\n1,yes\n2,yes\n3,yes\n4,maybe\n5,no\n",
       "accuracy 0.5: 2 of 4 predictions are the expected category; 1 case has no prediction\n" +
           matrix +
           "             yes      no   maybe\n"
           "yes            2       1       0\n"
           "no             0       0       0\n"
           "maybe          0       1       0\n"},
  };
  for (const auto& [model, cases, expected, out] : rows) {
    const TemporaryFolder folder;
    const std::vector<std::string> files = {Data(model), "--input",
                                            folder.Write("cases.csv", cases), "--expected",
                                            folder.Write("expected.csv", expected)};
    std::vector<std::string> verify = {"verify"};
    verify.insert(verify.end(), files.begin(), files.end());
    EXPECT_THAT(RunProgram(verify).out, HasSubstr(out)) << expected;
    std::vector<std::string> doctor = {"doctor"};
    doctor.insert(doctor.end(), files.begin(), files.end());
    EXPECT_THAT(RunProgram(doctor).out, HasSubstr(out)) << expected;
  }
}

TEST(Verify, TellsTheMostFrequentConfusionsOfManyCategories) {
  const TemporaryFolder folder;
  std::string cases = "width,height,colour\n1,1,red\n";
  std::string expected = "kind\nb\n";
  for (char name = 'p'; name < 'z'; ++name) {
    cases += "1,1,red\n1,1,red\n1,1,red\n";
    expected += std::string(1, name) + "\n" + name + "\na\n";
  }
  EXPECT_THAT(
      RunProgram({"verify", Data("three.pmml"), "--input", folder.Write("cases", cases),
                  "--expected", folder.Write("expected", expected)})
          .out,
      HasSubstr("accuracy 0.3226: 10 of 31 predictions are the expected category\nmost "
                "frequent confusions:\n       2  p taken for a\n       2  q taken for a\n"));
}

TEST(Verify, ACaseWithoutAFiniteDecisionFailsWithItsReason) {
  const TemporaryFolder folder;
  const std::string model =
      EditedFile(folder, Data("line.pmml"), {"<Coefficient value='2'", "<Coefficient value='INF'"});
  const std::string cases = folder.Write("cases.csv", "x\n1\n0\n");
  const Ran scored =
      RunProgram({"score", model, cases, "--reasons", "--columns", "raw", "--prediction-only"});
  EXPECT_EQ(scored.out,
            "prediction,status,reason\n,90027,\"decision: the decision value is INF, not a finite "
            "number\"\n,90027,\"decision: the decision value is NaN, not a finite number\"\n");
  EXPECT_EQ(scored.status, 4);
  EXPECT_THAT(scored.err, HasSubstr("2 cases, 0 scored, 0 missing, 2 invalid"));
  const std::string expected = folder.Write("expected.csv", "y\n1\n2\n");
  for (const char* command : {"verify", "doctor"}) {
    const Ran ran = RunProgram({command, model, "--input", cases, "--expected", expected});
    EXPECT_EQ(ran.status, 1) << command;
    EXPECT_THAT(ran.out, HasSubstr("y: expected 1, got nothing (status 90027; decision: the "
                                   "decision value is INF, not a finite number)"));
  }
}

TEST(Verify, RefusesTheCasesThatScoreRefuses) {
  const TemporaryFolder folder;
  const std::string expected = folder.Write("expected.csv", "prediction\n2\n");
  for (const char* text : {"x1,x2,x1\n1,1,2\n", "X1,x2\n1,1\n", "x1,x2\n1,1\n\n1\n"}) {
    const std::string cases = folder.Write("cases.csv", text);
    const std::string told = RunProgram({"score", kChain, cases}).err;
    for (const auto& [command, option, file] : {std::tuple{"verify", "--expected", expected},
                                                {"doctor", "--expected", expected},
                                                {"verify", "--write", folder.Path("new.pmml")}}) {
      const Ran ran = RunProgram({command, kChain, "--input", cases, option, file});
      EXPECT_EQ(ran.status, 5) << command << option;
      EXPECT_THAT(ran.err, HasSubstr("he header "));
      EXPECT_THAT(told, testing::EndsWith(ran.err));
      EXPECT_EQ(ran.out, "");
    }
  }
  EXPECT_EQ(folder.FileCount(), 2U);
}

// What `document` becomes when records are made from `cases`, and how many of their cells agree.
std::string Written(const TemporaryFolder& folder, const std::string& document,
                    const std::string& cases, const std::string& cells) {
  const std::string written = folder.Path("new.pmml");
  const Ran ran = RunProgram({"verify", folder.Write("model.pmml", document), "--input",
                              folder.Write("cases.csv", cases), "--write", written});
  EXPECT_EQ(ran.status, 0) << ran.err;
  EXPECT_EQ(RunProgram({"verify", written}).out,
            cells + (cells == "1" ? " cell" : " cells") + " compared, 0 disagree\n");
  return ReadFile(written);
}

TEST(VerifyWrite, PutsRecordsInAndLeavesTheRestAsItIs) {
  const TemporaryFolder folder;
  const std::string document = ReadFile(Data("../../output/data/grades.pmml"));
  const std::string written =
      Written(folder, document, "size,colour,grade,other\n1.5,red,A,1\n,blue,\"<&>\",2\n", "2");
  EXPECT_EQ(Edited(written, {"*\n    <ModelVerification[^]*</ModelVerification>", ""}), document);
  EXPECT_THAT(written, HasSubstr("<row><size>1.5</size><colour>red</colour><grade>A</grade>"
                                 "<class>low</class></row>"));
  EXPECT_THAT(written, HasSubstr("<grade>&#x3C;&#x26;&#x3E;</grade>"));
  // Once more: the block is replaced, not added.
  EXPECT_EQ(Written(folder, written, "size,colour,grade\n1.5,red,A\n,blue,\"<&>\"\n", "2"),
            written);
  // Of two blocks the one that is read.
  const std::string twice =
      Edited(written, {"</ModelVerification>", "</ModelVerification><ModelVerification/>"});
  EXPECT_THAT(Written(folder, twice, "size,colour,grade\n1.5,red,A\n", "1"),
              HasSubstr("</ModelVerification><ModelVerification/>"));
}

TEST(VerifyWrite, WritesEveryEncodingAndNamesThatAreNoElementNames) {
  const TemporaryFolder folder;
  const std::string document = Edited(
      ReadFile(kChain),
      {"*<ModelVerification[^]*</ModelVerification>", "", "*(name|field)='x1'", "$1='&#xE9; 1'"});
  std::string wide = "\xFF\xFE";
  for (const char c : Edited(document, {"UTF-8", "UTF-16"})) wide += std::string{c, '\0'};
  for (const std::string& text :
       {"\xEF\xBB\xBF" + document, wide, Edited(document, {"UTF-8", "ISO-8859-1"}), document}) {
    Written(folder, text, "\xC3\xA9 1,x2\n0.7,0.3\n", "3");
  }
  EXPECT_THAT(ReadFile(folder.Path("new.pmml")),
              HasSubstr("<VerificationField field=\"&#xE9; 1\" column=\"column1\"/>"));
}

TEST(VerifyWrite, LeavesNothingBehindWhenItCannot) {
  const TemporaryFolder folder;
  const std::string chain = ReadFile(kChain);
  const std::string size = std::to_string(chain.size());
  const TemporaryFolder entities;
  const std::size_t block = chain.find("<ModelVerification");
  const std::size_t end = chain.find("</SupportVectorMachineModel>");
  std::string within = chain.substr(0, block) + "&m;" + chain.substr(end);
  within.insert(within.find("<PMML"),
                "<!DOCTYPE PMML [<!ENTITY m '" + chain.substr(block, end - block) + "'>]>");
  const struct {
    std::string model, cases;
    int status;
    std::string told, limit = "9999";
  } rows[] = {
      {kChain, "x1,x2\n1,\n\"a\x01\",\n", 5, "a character that XML cannot hold"},
      {kChain, "x1\n", 5, "has no case"},
      {kChain, "x1,x2\nNA,\nabc,\n", 5, "cases.csv: no case is scored"},
      {entities.Write("chain.pmml", within), "x1,x2\n1,\n", 3,
       "chain.pmml: records cannot be put into it, for the model's elements come out of the entity "
       "\"m\""},
      {kChain, "x1,x2\n1,\n2,\n3,\n4,\n", 3, "new.pmml: [260318] ", size},
      {folder.Path("none.pmml"), "x1\n1\n", 3, "none.pmml: [260301] "},
      // A table's cells are read without the line ends around them.
      {Data("../../output/data/grades.pmml"), "size,colour,grade\n2.5,red,\"A\n\"\n", 6,
       "new.pmml: not written, for the new records are not confirmed:\nrecord 1: class: expected "},
  };
  for (const auto& [model, cases, status, told, limit] : rows) {
    const Ran ran =
        RunProgram({"verify", model, "--input", folder.Write("cases.csv", cases), "--write",
                    folder.Path("new.pmml"), "--limit", "document-size=" + limit});
    EXPECT_EQ(ran.status, status) << cases;
    EXPECT_THAT(ran.err, HasSubstr(told)) << cases;
    EXPECT_EQ(folder.FileCount(), 1U);
  }
}

}  // namespace
}  // namespace svmscore::app
