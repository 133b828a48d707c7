// svmscore score with what it cannot use: exit statuses, messages, and nothing half-written.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"

namespace svmscore::app {
namespace {

using testing::HasSubstr;

struct BadInput {
  std::string cases;
  std::string message;
};

class BadCases : public testing::TestWithParam<BadInput> {};

TEST_P(BadCases, EndWithStatusFiveAndLeaveNoFile) {
  const TemporaryFolder folder;
  const std::string cases = folder.Write("cases.csv", GetParam().cases);
  const std::string scores = folder.Path("scores.csv");
  const Ran ran = RunProgram({"score", Data("three.pmml"), cases, "-o", scores});
  EXPECT_EQ(ran.status, 5);
  EXPECT_EQ(ran.err, "svmscore: " + cases + ": " + GetParam().message + "\n");
  EXPECT_EQ(folder.FileCount(), 1U);
}

const std::string kHeader = "width,height,colour\n";

INSTANTIATE_TEST_SUITE_P(
    All, BadCases,
    testing::Values(
        BadInput{"",
                 "the input is empty; it needs at least a header line with the names of the "
                 "columns"},
        BadInput{"\xEF\xBB\xBF",
                 "the input is empty; it needs at least a header line with the "
                 "names of the columns"},
        BadInput{"colour,Width\n1,2\n",
                 "the header lacks \"width\", \"height\", which the model "
                 "needs"},
        BadInput{"width,height,colour,width\n", "the header names the column \"width\" twice"},
        BadInput{kHeader + "1,1,red\n1,1\n", "line 3: a row of 2 where the header has 3 cells"},
        BadInput{kHeader + "1,1,\"r\n\"\n1,1,red,\n",
                 "line 4: a row of 4 where the header has 3 cells"},
        BadInput{kHeader + "1,1,red\n\n", "line 3: an empty line where the header has 3 cells"},
        BadInput{kHeader + "1,1,\"red\n1,1,red\n", "line 2: a quoted cell that is never closed"},
        BadInput{kHeader + "1,1,re\"d\"\n",
                 "line 2: a quotation mark inside a cell that is not quoted"},
        BadInput{kHeader + "1,1,\"red\" \n",
                 "line 2: text after the closing quotation mark of a cell"},
        BadInput{kHeader + "1,1,red\n" + std::string("1,\0,red\n", 8),
                 "line 3: a NUL byte: the file is no UTF-8 text"},
        BadInput{std::string("\xFF\xFEw\0,\0\n\0", 8),
                 "line 1: a NUL byte: the file is no UTF-8 text"}));

TEST(BadInput, CasesThatCannotBeReadEndWithStatusFive) {
  const TemporaryFolder folder;
  const Ran none = RunProgram({"score", Data("three.pmml"), folder.Path("none.csv")});
  EXPECT_EQ(none.status, 5);
  EXPECT_EQ(none.err,
            "svmscore: cannot read " + folder.Path("none.csv") + ": No such file or directory\n");
  EXPECT_EQ(RunProgram({"score", Data("three.pmml"), folder.Path(".")}).status, 5);
  const Ran copied = RunProgram({"score", Data("line.pmml"), "--passthrough", "id"}, "x\n1\n");
  EXPECT_EQ(copied.status, 5);
  EXPECT_EQ(copied.err,
            "svmscore: standard input: the header lacks \"id\", which --passthrough names\n");
}

TEST(BadInput, AHeaderAloneIsNoError) {
  const Ran ran = RunProgram({"score", Data("line.pmml"), "--prediction-only"}, "x");
  EXPECT_EQ(ran.status, 0);
  EXPECT_EQ(ran.out, "prediction,status\n");
  EXPECT_THAT(ran.err, HasSubstr("svmscore: 0 cases, 0 scored,"));
}

TEST(BadInput, CellsOfAMegabyteAreRead) {
  const std::string big(1U << 20U, 'x');
  const Ran ran =
      RunProgram({"score", Data("three.pmml"), "--passthrough", "note", "--prediction-only"},
                 "width,height,colour,note\n1,1,red," + big + "\n1,1," + big + ",\n" + big +
                     ",1,red,\n1,1,red,\"" + big + "\"\n");
  EXPECT_EQ(ran.status, 0) << ran.err;
  EXPECT_TRUE(ran.out ==
              "note,prediction,status\n" + big + ",a,0\n,,90027\n,,90027\n" + big + ",a,0\n");
}

TEST(BadInput, ModelsThatCannotBeUsedEndWithStatusThree) {
  const TemporaryFolder folder;
  const auto complaint = [&folder](const std::string& from, const std::string& to) {
    std::string text = ReadFile(Data("three.pmml"));
    text.replace(text.find(from), from.size(), to);
    const std::string model = folder.Write("model.pmml", text);
    const Ran ran = RunProgram({"score", model}, "width,height,colour\n");
    EXPECT_EQ(ran.status, 3) << ran.err;
    EXPECT_EQ(ran.out, "");
    EXPECT_EQ(RunProgram({"describe", model}).err, ran.err);
    return ran.err.substr(ran.err.find(model) + model.size());
  };
  EXPECT_EQ(complaint("<PolynomialKernelType gamma=\"1\" coef0=\"0\" degree=\"1\"/>", ""),
            ": [260115] element LinearKernelType is missing in element SupportVectorMachineModel "
            "(element SupportVectorMachineModel, line 11). Add the element, or export the model "
            "anew with a producer that writes it.\n");
  EXPECT_THAT(complaint("<MiningField name=\"width\"/>", "<MiningField/>"),
              HasSubstr("[260120] attribute name is missing in element MiningField (element "
                        "MiningField, line 13)"));
  EXPECT_THAT(complaint("</Header>", "</Heade>"), HasSubstr(": [260302] "));
  EXPECT_THAT(complaint("</Header>", "</Heade>"), HasSubstr("(line 3, column "));
  const Ran none = RunProgram({"score", folder.Path("none.pmml")});
  EXPECT_EQ(none.status, 3);
  EXPECT_THAT(none.err, HasSubstr("[260301] "));
  EXPECT_EQ(RunProgram({"score", Data("line.pmml"), "--plugin", Data("line.pmml")}).status, 3);
}

TEST(BadInput, WrongArgumentsEndWithStatusTwo) {
  using Arguments = std::vector<std::string>;
  const std::string model = Data("line.pmml");
  for (const Arguments& arguments :
       {Arguments{}, Arguments{"scoore"}, Arguments{"score"},
        Arguments{"score", model, "--nothing"}, Arguments{"score", model, "--threads", "0"},
        Arguments{"score", model, "--columns", "some"},
        Arguments{"score", model, "--missing-policy", "guess"},
        Arguments{"score", model, "--passthrough", "\"x"},
        Arguments{"score", model, "--format", "jsonl", "--passthrough", "status"},
        Arguments{"describe"}}) {
    const Ran ran = RunProgram(arguments, "x,status\n1,2\n");
    EXPECT_EQ(ran.status, 2) << testing::PrintToString(arguments) << ran.err;
    EXPECT_EQ(ran.out, "");
    EXPECT_THAT(ran.err, testing::StartsWith("svmscore: "));
  }
}

}  // namespace
}  // namespace svmscore::app
