// svmscore score, run as a user runs it: what it prints for good cases.
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"

namespace svmscore::app {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

const std::string kAllColumns =
    "prediction,confidence,probability(a),probability(b),\"probability(c, d)\",status\n";
const std::string kThird = "0.3333333333333333";
const std::string kTwoThirds = "0.6666666666666666";

TEST(Score, WritesPredictionsAndVoteSharesOfEveryCase) {
  // Columns in another order, one that no model knows, quoting, CRLF, and no line end at the end.
  const Ran ran = RunProgram({"score", Data("three.pmml"), "-"},
                             "colour,height,extra,width\r\n"
                             "red,1,x,1\r\n"
                             "red,-1,\"x,\"\"y\"\"\n\",-1\r\n"
                             "\"blue\",-1,,0.5\r\n"
                             "red,-1,,-0.1");
  EXPECT_EQ(ran.status, 0) << ran.err;
  EXPECT_EQ(ran.out, kAllColumns + "a," + kTwoThirds + "," + kTwoThirds + ",0," + kThird + ",0\n" +
                         "b," + kTwoThirds + ",0," + kTwoThirds + "," + kThird + ",0\n" + "a," +
                         kThird + "," + kThird + "," + kThird + "," + kThird + ",0\n" +
                         "\"c, d\"," + kTwoThirds + ",0," + kThird + "," + kTwoThirds + ",0\n");
  EXPECT_THAT(ran.err, MatchesRegex("svmscore: 4 cases, 4 scored, 0 missing, 0 invalid, "
                                    "[0-9]+\\.[0-9]+ seconds\n"));
}

TEST(Score, LeavesTheCellsOfFailedCasesEmpty) {
  const std::string cases =
      "width,height,colour,note\n"
      ",1,red,\n"           // missing, nothing to replace it by
      "NA,1,red,\n"         // the same by token
      "1,-9,red,\n"         // declared missing
      "1,1,N/A,\n"          // replaced by red
      "1000,1,red,\n"       // outside the interval
      "1,1e999,red,\n"      // not finite
      "1,one,red,\n"        // no number
      "1,1,green,\n"        // no category
      "1,1,red,anything\n"  // open categories
      "1, 1 ,red,\n";
  const Ran ran = RunProgram({"score", Data("three.pmml"), "--prediction-only"}, cases);
  EXPECT_EQ(ran.out,
            "prediction,status\n,90029\n,90029\n,90029\na,0\n,90027\n,90027\n,90027\n,90027\n"
            "a,0\na,0\n");
  EXPECT_EQ(ran.status, 0);
  EXPECT_THAT(ran.err, HasSubstr("10 cases, 3 scored, 3 missing, 4 invalid, "));
  const Ran strict =
      RunProgram({"score", Data("three.pmml"), "--prediction-only", "--strict"}, cases);
  EXPECT_EQ(strict.status, 4);
  EXPECT_EQ(strict.out, ran.out);
}

TEST(Score, WritesDeviationAndIntervalOfARegression) {
  const Ran ran = RunProgram({"score", Data("line.pmml")}, "x\n1.5\nNA\n1e308\n");
  EXPECT_EQ(ran.out,
            "prediction,stddev,ci_lower,ci_upper,status\n"
            "3.1,0.5,1.602133863223005,4.597866136776995,0\n"
            ",,,,90029\n"
            "INF,0.5,INF,INF,0\n");
}

TEST(Score, WritesTheColumnsAskedFor) {
  const auto header = [](const std::string& model, std::vector<std::string> options) {
    options.insert(options.begin(), {"score", Data(model)});
    const Ran ran = RunProgram(options, "x,width,height,colour\n");
    EXPECT_EQ(ran.status, 0) << ran.err;
    return ran.out;
  };
  EXPECT_EQ(header("three.pmml", {"--columns", "raw"}), kAllColumns);
  EXPECT_EQ(header("three.pmml", {"--prediction-only"}), "prediction,status\n");
  EXPECT_EQ(header("three.pmml", {"--prediction-only", "--columns", "all"}), kAllColumns);
  EXPECT_EQ(header("two.pmml", {}),
            "prediction,confidence,probability(yes),probability(no),status\n");
  EXPECT_EQ(header("line.pmml", {"--prediction-only", "--passthrough", "x,height"}),
            "x,height,prediction,status\n");
  EXPECT_EQ(
      RunProgram({"score", Data("line.pmml"), "--prediction-only", "--columns", "all"}, "x\n1\n")
          .out,
      "prediction,stddev,ci_lower,ci_upper,status\n2.1,,,,0\n");
}

TEST(Score, CopiesColumnsAndWritesJsonLines) {
  EXPECT_EQ(RunProgram({"score", Data("line.pmml"), "--passthrough", "\"a,b\",x"},
                       "x,\"a,b\"\n1,\"p\"\"q\"\n")
                .out,
            "\"a,b\",x,prediction,stddev,ci_lower,ci_upper,status\n"
            "\"p\"\"q\",1,2.1,0.5,0.6021338632230051,3.597866136776995,0\n");
  EXPECT_EQ(RunProgram({"score", Data("two.pmml"), "--format", "jsonl", "--passthrough", "id"},
                       "id,x\n\"\xFF\"\"\",0\n,\n")
                .out,
            "{\"id\":\"\xEF\xBF\xBD\\\"\",\"prediction\":\"yes\",\"confidence\":0.5,"
            "\"probability(yes)\":0.5,\"probability(no)\":0.5,\"status\":0}\n"
            "{\"id\":null,\"prediction\":null,\"confidence\":null,\"probability(yes)\":null,"
            "\"probability(no)\":null,\"status\":90029}\n");
}

TEST(Score, TellsOfAnOutputFieldNamedLikeAnAddedColumn) {
  std::ifstream file(Data("line.pmml"));
  std::string text{std::istreambuf_iterator<char>(file), {}};
  text.insert(text.find("<LinearKernelType/>"),
              "<Output><OutputField name=\"status\" optype=\"categorical\" dataType=\"string\" "
              "feature=\"transformedValue\"><Constant>5</Constant></OutputField></Output>");
  const TemporaryFolder folder;
  const std::string model = folder.Write("model.pmml", text);
  const Ran csv = RunProgram({"score", model}, "x\n1\n");
  EXPECT_EQ(csv.out, "status,status\n5,0\n");
  EXPECT_THAT(csv.err, HasSubstr("two columns \"status\": the document declares"));
  const Ran json = RunProgram({"score", model, "--format", "jsonl"}, "x\n1\n");
  EXPECT_EQ(json.status, 2);
  EXPECT_THAT(json.err, HasSubstr("rename the field, or choose --columns raw"));
  EXPECT_EQ(RunProgram({"score", model, "--format", "jsonl", "--columns", "raw"}, "x\n1\n").status,
            0);
}

TEST(Score, FollowsTheMissingValueOptions) {
  const std::string cases = "width,height,colour\n1,1,\n1,1,?\n1,1,NA\n";
  const auto statuses = [&cases](std::vector<std::string> options) {
    options.insert(options.begin(), {"score", Data("three.pmml"), "--prediction-only"});
    return RunProgram(options, cases).out;
  };
  EXPECT_EQ(statuses({}), "prediction,status\na,0\n,90027\na,0\n");
  EXPECT_EQ(statuses({"--missing-token", "?"}), "prediction,status\na,0\na,0\n,90027\n");
  EXPECT_EQ(statuses({"--missing-token", "?", "--missing-token", "NA"}),
            "prediction,status\na,0\na,0\na,0\n");
  EXPECT_EQ(statuses({"--missing-policy", "fail"}), "prediction,status\n,90029\n,90027\n,90029\n");
  EXPECT_EQ(statuses({"--missing-policy", "predict-missing"}),
            "prediction,status\n,90029\n,90027\n,90029\n");
}

TEST(Score, WritesTheOutputFileAndTheLog) {
  const TemporaryFolder folder;
  const std::string cases = folder.Write("cases.csv", "x\n1\n\n\n");
  const Ran ran = RunProgram({"score", Data("line.pmml"), cases, "--prediction-only", "-o",
                              folder.Path("scores.csv"), "--log", folder.Path("log")});
  EXPECT_EQ(ran.status, 0) << ran.err;
  EXPECT_EQ(ran.out, "");
  EXPECT_EQ(ReadFile(folder.Path("scores.csv")), "prediction,status\n2.1,0\n,90029\n,90029\n");
  const std::string begin = "svmscore log: ";
  const std::string failed = begin + "MCStatus error code is :90029\n";
  EXPECT_EQ(ReadFile(folder.Path("log")),
            begin + "Enter:ParseFromTree\n" + begin + "Exit:ParseFromTree\n" + failed + failed);
}

// Rows of all outcomes, some of them quoted, in many blocks.
std::string ManyCases(int count) {
  const char* const widths[] = {"0.25", "-1", "NA", "x", "\"3\"", "1e999", "0", "7e-1"};
  const char* const colours[] = {"red", "blue", "", "\"b\nlue\"", "red"};
  std::string text = "width,height,colour\n";
  for (int i = 0; i < count; ++i) {
    text += std::string(widths[i % 8]) + "," + std::to_string(i % 1000 - 500) + "." +
            std::to_string(i) + "," + colours[i % 5] + "\n";
  }
  return text;
}

TEST(Score, NeitherThreadsNorTheInstructionSetChangeTheOutput) {
  const std::string cases = ManyCases(100000);
  const std::vector<std::string> arguments = {"score", Data("three.pmml"), "--decisions",
                                              "--threads"};
  const auto run = [&](const char* threads, const char* isa) {
    std::vector<std::string> all = arguments;
    all.emplace_back(threads);
    setenv("SVMSCORE_ISA", isa, 1);
    Ran ran = RunProgram(all, cases);
    unsetenv("SVMSCORE_ISA");
    EXPECT_EQ(ran.status, 0) << ran.err;
    return ran.out;
  };
  const std::string plain = run("1", "plain");
  EXPECT_GT(plain.size(), 1000000U);
  EXPECT_TRUE(run("8", "plain") == plain);
  EXPECT_TRUE(run("8", "") == plain);
  EXPECT_TRUE(run("2", "sse2") == plain);
}

TEST(Score, RefusesAnUnknownInstructionSet) {
  const Ran ran = RunShell("SVMSCORE_ISA=avx \"$SVMSCORE\" score " + Data("line.pmml"));
  EXPECT_EQ(ran.status, 3);
  EXPECT_THAT(ran.err, HasSubstr("[260317]"));
  EXPECT_THAT(ran.err, HasSubstr("SVMSCORE_ISA must be sse2, avx2, avx512 or plain"));
}

TEST(Score, PercentagesBelongToTheirCategoriesWhicheverResponds) {
  const TemporaryFolder folder;
  std::string document = ReadFile(Data("two.pmml"));
  const std::string declared = "<Value value=\"yes\"/><Value value=\"no\"/>";
  document.replace(document.find(declared), declared.size(),
                   "<Value value=\"no\"/><Value value=\"yes\"/>");
  const std::string model = folder.Write("model.pmml", document);
  EXPECT_EQ(RunProgram({"score", model}, "x\n2\n-2\n").out,
            "prediction,confidence,probability(no),probability(yes),status\n"
            "yes,0.8807970779778823,0.11920292202211769,0.8807970779778823,0\n"
            "no,0.8807970779778824,0.8807970779778824,0.11920292202211755,0\n");
}

TEST(Score, DecisionsStandBeforeTheStatus) {
  const Ran votes = RunProgram({"score", Data("three.pmml"), "--decisions"},
                               "width,height,colour\n1,2,blue\n,1,red\n");
  EXPECT_EQ(votes.status, 0) << votes.err;
  EXPECT_EQ(votes.out,
            "prediction,confidence,probability(a),probability(b),\"probability(c, d)\","
            "decision(a|b),\"decision(a|c, d)\",\"decision(b|c, d)\",status\n"
            "a,0.6666666666666666,0.6666666666666666,0,0.3333333333333333,1,2.5,0,0\n"
            ",,,,,,,,90029\n");
  const Ran line = RunProgram({"score", Data("line.pmml"), "--decisions"}, "x\n1\n");
  EXPECT_EQ(line.out,
            "prediction,stddev,ci_lower,ci_upper,decision,status\n"
            "2.1,0.5,0.6021338632230051,3.597866136776995,2.1,0\n");
}

TEST(Score, ThreadsDoNotChangeWhatIsWrittenBeforeABrokenRow) {
  const std::string cases = ManyCases(100000) + "1,2\n" + ManyCases(50000);
  const Ran one = RunProgram({"score", Data("three.pmml"), "--threads", "1"}, cases);
  const Ran eight = RunProgram({"score", Data("three.pmml"), "--threads", "8"}, cases);
  EXPECT_EQ(one.status, 5);
  EXPECT_EQ(eight.status, 5);
  EXPECT_GT(one.out.size(), 1000000U);
  EXPECT_TRUE(one.out == eight.out);
  EXPECT_EQ(one.err, eight.err);
}

TEST(Score, ShowsProgressOnATerminalOnly) {
  const TemporaryFolder folder;
  const std::string cases = folder.Write("cases.csv", "x\n1\n");
  const std::string line = " score " + Data("line.pmml") + " " + cases + " -o /dev/null";
  EXPECT_THAT(RunShell("TERM=dumb script -qec \"'$SVMSCORE'" + line + "\" /dev/null").out,
              HasSubstr("1 cases, "));
  EXPECT_THAT(RunShell("TERM=dumb script -qec \"'$SVMSCORE'" + line + "\" /dev/null").out,
              HasSubstr("100% of the input"));
  EXPECT_THAT(RunShell("\"$SVMSCORE\"" + line).err, StartsWith("svmscore: 1 cases, "));
}

TEST(Program, TellsItsVersionAndItsUse) {
  EXPECT_THAT(RunProgram({"--version"}).out, MatchesRegex("svmscore [0-9]+\\.[0-9]+\\.[0-9]+\n"));
  const Ran help = RunProgram({"score", "--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.out, HasSubstr("--missing-policy"));
}

}  // namespace
}  // namespace svmscore::app
