// svmscore verify, and the columns that documents name.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"

namespace svmscore::app {
namespace {

std::string Model(const std::string& name) {
  return Data("../../output/data/" + name);
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  const std::size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

constexpr char kChainCases[] = "x1,x2,y\n0.7,0.3,2\n1.6,,2\n3,1,2\nNA,1,2\nabc,1,2\n";

TEST(OutputColumns, HaveTheDocumentsNamesAndOrder) {
  const Ran named = RunProgram({"score", Model("chain.pmml"), "--passthrough", "x1"}, kChainCases);
  EXPECT_EQ(named.status, 0) << named.err;
  EXPECT_EQ(named.out,
            "x1,y_hat,y_log,band,status\n"
            "0.7,2.4412500000000006,1.2358347774746803,small,0\n"
            "1.6,1.4865624999999998,0.9109012345897168,small,0\n"
            "3,9.25,2.327277705584417,big,0\n"
            "NA,,,,90029\n"
            "abc,,,,90027\n");
  // Plain names are a matter of names: the numbers are rescaled all the same.
  const Ran raw = RunProgram({"score", Model("chain.pmml"), "--columns", "raw"}, kChainCases);
  EXPECT_EQ(raw.out.substr(0, 40), "prediction,status\n2.4412500000000006,0\n1");
  const Ran all = RunProgram({"score", Model("chain.pmml"), "--columns", "all"}, kChainCases);
  EXPECT_EQ(all.out.substr(0, 68),
            "prediction,stddev,ci_lower,ci_upper,status\n2.4412500000000006,,,,0\n1");
}

TEST(OutputColumns, ReadExtraInputsWhereTheCasesHaveThem) {
  const TemporaryFolder folder;
  const std::string document =
      Replaced(ReadFile(Model("chain.pmml")), "<OutputField name=\"y_log\"",
               "<OutputField name=\"rest\" feature=\"residual\"/><OutputField name=\"y_log\" "
               "isFinalResult=\"false\"");
  const std::string model = folder.Write("model.pmml", document);
  const Ran with =
      RunProgram({"score", model, "--format", "jsonl"}, "x1,x2,y\n1.6,,3.5\n1.6,,\n1.6,,?\n");
  EXPECT_EQ(with.out,
            "{\"y_hat\":1.4865624999999998,\"rest\":2.0134375,\"band\":\"small\",\"status\":0}\n"
            "{\"y_hat\":1.4865624999999998,\"rest\":null,\"band\":\"small\",\"status\":0}\n"
            "{\"y_hat\":1.4865624999999998,\"rest\":null,\"band\":\"small\",\"status\":0}\n")
      << with.err;
  const Ran without = RunProgram({"score", model}, "x1,x2\n1.6,0.25\n");
  EXPECT_EQ(without.out, "y_hat,rest,band,status\n1.4865624999999998,,small,0\n");
}

TEST(Verify, RunsTheDocumentsRecords) {
  const Ran good = RunProgram({"verify", Model("chain.pmml")});
  EXPECT_EQ(good.status, 0) << good.err;
  EXPECT_EQ(good.out, "4 cells compared, 0 disagree\n");

  const TemporaryFolder folder;
  std::string document = ReadFile(Model("chain.pmml"));
  document = Replaced(document, ">2.44125<", ">2.44125001<");
  document = Replaced(document, "<band>small</band></row></Inl", "<band>big</band></row></Inl");
  const Ran bad = RunProgram({"verify", folder.Write("model.pmml", document)});
  EXPECT_EQ(bad.status, 1);
  EXPECT_EQ(bad.out,
            "record 1: y_hat: expected 2.44125001, got 2.4412500000000006 (relative deviation "
            "4.1e-09, allowed 1e-09)\n"
            "record 2: band: expected big, got small\n"
            "4 cells compared, 2 disagree\n");
}

TEST(Verify, TheTargetIsExpectedOnlyWhereNoOutputFieldIs) {
  const TemporaryFolder folder;
  const auto run = [&folder](const std::string& document) {
    return RunProgram({"verify", folder.Write("model.pmml", document)});
  };
  // The target's column is the training label beside an output field, and else the prediction.
  const std::string both =
      Replaced(Replaced(ReadFile(Model("chain.pmml")), "<VerificationField field=\"band\"/>",
                        "<VerificationField field=\"y\" column=\"band\"/>"),
               "fieldCount=\"4\"", "fieldCount=\"5\"");
  const std::string field = "VerificationField field=\"y_hat\"";
  EXPECT_EQ(run(both).out, "fieldCount is 5, and there are 4\n2 cells compared, 0 disagree\n");
  const std::string target =
      Replaced(both, field, "VerificationField field=\"y\" column=\"y_hat\"");
  EXPECT_EQ(run(target).status, 1);
  EXPECT_NE(run(target).out.find("record 1: y: expected small, got 2.441"), std::string::npos);

  // A derived field that nothing needs.
  const std::string derived =
      Replaced(Replaced(both, "<PolynomialKernelType",
                        "<LocalTransformations><DerivedField name=\"rest\" optype=\"continuous\" "
                        "dataType=\"double\"><FieldRef field=\"x1\"/></DerivedField>"
                        "</LocalTransformations><PolynomialKernelType"),
               "</VerificationFields>",
               "<VerificationField field=\"rest\" column=\"x1\"/></VerificationFields>");
  EXPECT_THAT(run(derived).out,
              testing::HasSubstr("rest is a derived field that nothing else needs"));
  EXPECT_EQ(run(derived).status, 0);

  const Ran unknown = run(Replaced(both, field, "VerificationField field=\"z\""));
  EXPECT_EQ(unknown.status, 3);
  EXPECT_NE(unknown.err.find("[260311]"), std::string::npos) << unknown.err;
  const Ran nothing = run(Replaced(both, field, field + " column=\"none\""));
  EXPECT_EQ(nothing.status, 3) << nothing.out;
  const Ran none = RunProgram({"verify", Model("alarm.pmml")});
  EXPECT_EQ(none.status, 3);
  EXPECT_NE(none.err.find("holds no verification records"), std::string::npos) << none.err;
}

TEST(Verify, ComparesWithExpectedColumns) {
  const TemporaryFolder folder;
  const std::string cases = folder.Write("cases.csv", kChainCases);
  const auto run = [&](const std::string& expected, const std::string& tolerance = "1e-9") {
    return RunProgram({"verify", Model("chain.pmml"), "--input", cases, "--expected",
                       folder.Write("expected.csv", expected), "--tolerance", tolerance});
  };
  const std::string by_name =
      "band,y_hat,mood\nsmall,2.44125,a\nsmall,1.4865625,b\nbig,9.25,c\n,,\n,,\n";
  EXPECT_EQ(run(by_name).out,
            "not compared, for lack of an output of that name: mood\n"
            "6 cells compared, 0 disagree\n");
  EXPECT_EQ(run("y_hat\n2.45\n1.5\n9.3\n\n\n", "0.01").status, 0);
  const Ran off = run("y_hat\n2.44125\n1.4865625\n9.25\n0\n\n");
  EXPECT_EQ(off.status, 1);
  EXPECT_EQ(
      off.out,
      "record 4: y_hat: expected 0, got nothing (status 90029)\n4 cells compared, 1 disagree\n");
  // A column of another name is the prediction, or an output field made from it.
  EXPECT_EQ(run("score,z\n2.44125,1\n1.4865625,1\n9.25,1\n,\n,\n").out,
            "column score is compared with the prediction\n"
            "not compared, for lack of an output of that name: z\n3 cells compared, 0 disagree\n");
  EXPECT_EQ(run("z\n1.235834777474680\n0.910901234589717\n2.327277705584417\n\n\n").out,
            "column z is compared with y_log\n3 cells compared, 0 disagree\n");
  EXPECT_EQ(run("z\n1\n2\n3\n\n\n").status, 1);
  EXPECT_EQ(run("y_hat\n1\n").status, 5);
  EXPECT_EQ(run("y_hat\n\n\n\n\n\n").status, 5);
}

TEST(Verify, ArgumentsThatDoNotGoTogetherAreRefused) {
  const std::string model = Model("chain.pmml");
  EXPECT_EQ(RunProgram({"verify", model, "--expected", "x"}).status, 2);
  EXPECT_EQ(RunProgram({"verify", model, "--input", "x"}).status, 2);
  EXPECT_EQ(RunProgram({"verify", model, "--write", "x"}).status, 2);
  EXPECT_EQ(RunProgram({"verify", model, "--input", "x", "--expected", "y", "--write", "z"}).status,
            2);
}

// What `document` becomes when records are made from `cases`.
std::string Written(const TemporaryFolder& folder, const std::string& document,
                    const std::string& cases) {
  const Ran ran =
      RunProgram({"verify", folder.Write("model.pmml", document), "--input",
                  folder.Write("cases.csv", cases), "--write", folder.Path("new.pmml")});
  EXPECT_EQ(ran.status, 0) << ran.err;
  return ReadFile(folder.Path("new.pmml"));
}

TEST(VerifyWrite, PutsRecordsInAndLeavesTheRestAsItIs) {
  const TemporaryFolder folder;
  const std::string document = ReadFile(Model("grades.pmml"));
  const std::string written =
      Written(folder, document, "size,colour,grade,other\n1.5,red,A,1\n,blue,\"<&>\",2\n");
  const std::size_t begin = written.find("\n    <ModelVerification");
  const std::string end_tag = "</ModelVerification>";
  const std::size_t end = written.find(end_tag) + end_tag.size();
  ASSERT_NE(begin, std::string::npos);
  EXPECT_EQ(written.substr(0, begin) + written.substr(end), document);
  EXPECT_NE(written.find("<row><size>1.5</size><colour>red</colour><grade>A</grade>"
                         "<class>low</class></row>"),
            std::string::npos);
  EXPECT_NE(written.find("<grade>&#x3C;&#x26;&#x3E;</grade>"), std::string::npos);
  EXPECT_EQ(RunProgram({"verify", folder.Path("new.pmml")}).out, "2 cells compared, 0 disagree\n");
  // Once more: the block is replaced, not added.
  EXPECT_EQ(Written(folder, written, "size,colour,grade\n1.5,red,A\n,blue,\"<&>\"\n"), written);
}

TEST(VerifyWrite, WritesEveryEncodingAndNamesThatAreNoElementNames) {
  const TemporaryFolder folder;
  std::string document = ReadFile(Model("chain.pmml"));
  document = document.substr(0, document.find("<ModelVerification")) +
             document.substr(document.find("</SupportVectorMachineModel>"));
  for (const char* quoted : {"name=\"x1\"", "name=\"x1\"", "field=\"x1\""}) {
    const std::string attribute = std::string(quoted).substr(0, std::string(quoted).find('='));
    document = Replaced(document, quoted, attribute + "=\"&#xE9; 1\"");
  }
  const std::string cases = "\xC3\xA9 1,x2\n0.7,0.3\n";
  const auto widen = [](const std::string& text) {
    std::string wide = "\xFF\xFE";
    for (const char c : text) wide += std::string{c, '\0'};
    return wide;
  };
  const std::string utf16 = Replaced(document, "UTF-8", "UTF-16");
  const std::string latin = Replaced(document, "UTF-8", "ISO-8859-1");
  for (const std::string& text : {document, "\xEF\xBB\xBF" + document, latin, widen(utf16)}) {
    const std::string written = Written(folder, text, cases);
    EXPECT_GT(written.size(), text.size());
    EXPECT_EQ(RunProgram({"verify", folder.Path("new.pmml")}).out,
              "3 cells compared, 0 disagree\n");
  }
  EXPECT_NE(Written(folder, document, cases)
                .find("<VerificationField field=\"&#xE9; 1\" column=\"column1\"/>"),
            std::string::npos);
}

TEST(VerifyWrite, LeavesNothingBehindWhenItCannot) {
  const TemporaryFolder folder;
  const std::string cases = folder.Write("cases.csv", "x1\n\"a\x01\"\n");
  const std::string target = folder.Path("new.pmml");
  EXPECT_EQ(RunProgram({"verify", Model("chain.pmml"), "--input", cases, "--write", target}).status,
            5);
  EXPECT_EQ(RunProgram({"verify", Model("chain.pmml"), "--input", folder.Write("none.csv", "x1\n"),
                        "--write", target})
                .status,
            5);
  EXPECT_EQ(folder.FileCount(), 2U);
}

}  // namespace
}  // namespace svmscore::app
