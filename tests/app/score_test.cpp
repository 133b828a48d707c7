// svmscore score, run as a user runs it: what it prints for good cases.
#include <string>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/edited.h"
#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"

namespace svmscore::app {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

// Runs the command in the folder of the models.
Ran Score(const std::string& arguments, const std::string& cases, const std::string& setting = "") {
  return RunShell("cd " + Data("") + " && " + setting + " \"$SVMSCORE\" score " + arguments, cases);
}

const std::string kAllColumns =
    "prediction,confidence,probability(a),probability(b),\"probability(c, d)\",status\n";

TEST(Score, WritesPredictionsAndVoteSharesOfEveryCase) {
  // Columns in another order, one that no model knows, quoting, CRLF, and no line end at the end.
  const Ran ran = Score("three.pmml -",
                        "colour,height,extra,width\r\n"
                        "red,1,x,1\r\n"
                        "red,-1,\"x,\"\"y\"\"\n\",-1\r\n"
                        "\"blue\",-1,,0.5\r\n"
                        "red,-1,,-0.1");
  EXPECT_EQ(ran.status, 0);
  EXPECT_EQ(ran.out, kAllColumns +
                         "a,0.6666666666666666,0.6666666666666666,0,0.3333333333333333,0\n"
                         "b,0.6666666666666666,0,0.6666666666666666,0.3333333333333333,0\n"
                         "a,0.3333333333333333,0.3333333333333333,0.3333333333333333,"
                         "0.3333333333333333,0\n"
                         "\"c, d\",0.6666666666666666,0,0.3333333333333333,0.6666666666666666,0\n");
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
  const Ran ran = Score("three.pmml --prediction-only", cases);
  EXPECT_EQ(ran.out,
            "prediction,status\n,90029\n,90029\n,90029\na,0\n,90027\n,90027\n,90027\n,90027\n"
            "a,0\na,0\n");
  EXPECT_EQ(ran.status, 0);
  EXPECT_THAT(ran.err, HasSubstr("10 cases, 3 scored, 3 missing, 4 invalid, "));
  const Ran strict = Score("three.pmml --prediction-only --strict", cases);
  EXPECT_EQ(strict.status, 4);
  EXPECT_EQ(strict.out, ran.out);
}

TEST(Score, WritesWhatIsAskedFor) {
  const std::string names = "x,width,height,colour";  // and no case
  const std::string interval = "prediction,stddev,ci_lower,ci_upper";
  const std::string gaps = "width,height,colour\n1,1,\n1,1,?\n1,1,NA\n";
  const struct {
    std::string arguments;
    std::string cases;
    std::string out;
  } rows[] = {
      {"three.pmml --columns raw", names, kAllColumns},
      {"three.pmml --prediction-only", names, "prediction,status\n"},
      {"three.pmml --prediction-only --columns all", names, kAllColumns},
      {"two.pmml", names, "prediction,confidence,probability(yes),probability(no),status\n"},
      {"line.pmml --prediction-only --passthrough x,height", names, "x,height,prediction,status\n"},
      {"line.pmml --prediction-only --columns all", "x\n1\n", interval + ",status\n2.1,,,,0\n"},
      {"line.pmml", "x\n1.5\nNA\n1e308\n",
       interval + ",status\n3.1,0.5,1.602133863223005,4.597866136776995,0\n,,,,90029\n"
                  ",,,,90027\n"},
      {"line.pmml --decisions", "x\n1\n",
       interval + ",decision,status\n2.1,0.5,0.6021338632230051,3.597866136776995,2.1,0\n"},
      {"three.pmml --decisions", "width,height,colour\n1,2,blue\n,1,red\n",
       "prediction,confidence,probability(a),probability(b),\"probability(c, d)\",decision(a|b),"
       "\"decision(a|c, d)\",\"decision(b|c, d)\",status\n"
       "a,0.6666666666666666,0.6666666666666666,0,0.3333333333333333,1,2.5,0,0\n"
       ",,,,,,,,90029\n"},
      {"line.pmml --passthrough '\"a,b\",x' --prediction-only", "x,\"a,b\"\n1,\"p\"\"q\"\n",
       "\"a,b\",x,prediction,status\n\"p\"\"q\",1,2.1,0\n"},
      {"two.pmml --format jsonl --passthrough id", "id,x\n\"\xFF\"\"\",0\n,\n",
       "{\"id\":\"\xEF\xBF\xBD\\\"\",\"prediction\":\"yes\",\"confidence\":0.5,"
       "\"probability(yes)\":0.5,\"probability(no)\":0.5,\"status\":0}\n"
       "{\"id\":null,\"prediction\":null,\"confidence\":null,\"probability(yes)\":null,"
       "\"probability(no)\":null,\"status\":90029}\n"},
      {"three.pmml --prediction-only", gaps, "prediction,status\na,0\n,90027\na,0\n"},
      {"three.pmml --prediction-only --missing-token '?'", gaps,
       "prediction,status\na,0\na,0\n,90027\n"},
      {"three.pmml --prediction-only --missing-token '?' --missing-token NA", gaps,
       "prediction,status\na,0\na,0\na,0\n"},
      {"three.pmml --prediction-only --missing-policy fail", gaps,
       "prediction,status\n,90029\n,90027\n,90029\n"},
      {"three.pmml --prediction-only --missing-policy predict-missing", gaps,
       "prediction,status\n,90029\n,90027\n,90029\n"},
  };
  for (const auto& [arguments, cases, out] : rows) {
    const Ran ran = Score(arguments, cases);
    const bool none_scored = ran.err.find(" cases, 0 scored") != std::string::npos;
    EXPECT_EQ(ran.status, cases != names && none_scored ? 4 : 0) << arguments << ran.err;
    EXPECT_EQ(ran.out, out) << arguments;
    EXPECT_EQ(ran.err.starts_with("svmscore: 0 cases, 0 scored,"), cases == names) << ran.err;
  }
}

std::string LineWithOutput(const TemporaryFolder& folder, const std::string& fields) {
  return EditedFile(folder, Data("line.pmml"),
                    {"<LinearKernelType/>", "<Output>" + fields + "</Output><LinearKernelType/>"});
}

TEST(Score, TellsOfAnOutputFieldNamedLikeAnAddedColumn) {
  const TemporaryFolder folder;
  const std::string model =
      LineWithOutput(folder,
                     "<OutputField name='status' optype='categorical' dataType='string' "
                     "feature='transformedValue'><Constant>5</Constant></OutputField>");
  const Ran csv = Score(model, "x\n1\n");
  EXPECT_EQ(csv.out, "status,status\n5,0\n");
  EXPECT_THAT(csv.err, HasSubstr("two columns \"status\": the document declares"));
  const Ran json = Score(model + " --format jsonl", "x\n1\n");
  EXPECT_EQ(json.status, 2);
  EXPECT_THAT(json.err, HasSubstr("rename the field, or choose --columns raw"));
  EXPECT_EQ(Score(model + " --format jsonl --columns raw", "x\n1\n").status, 0);
}

TEST(Score, AdvisesPlainNamesOnlyWhereTheyHelp) {
  const TemporaryFolder folder;
  const std::string model =
      EditedFile(folder, Data("three.pmml"),
                 {"alternateTargetCategory='c, d'", "alternateTargetCategory='b'"});
  for (const char* columns : {"auto", "raw"}) {
    const Ran ran =
        Score(model + " --decisions --columns " + columns, "width,height,colour\n1,1,red\n");
    EXPECT_THAT(
        ran.err,
        HasSubstr("two machines decide between the same categories; leave --decisions out\n"));
  }
  EXPECT_THAT(Score("line.pmml --passthrough '*'", "x,x1,x1\n1,2,3\n").err,
              HasSubstr("where the input has two of that name"));
}

TEST(Score, TellsOfEmptyOutputFieldsAndOfUnlistedDecisions) {
  const TemporaryFolder folder;
  const std::string model =
      LineWithOutput(folder,
                     "<OutputField name='p' feature='probability'/><OutputField name='d' "
                     "feature='decision'><Decisions><Decision value='1'/></Decisions><FieldRef "
                     "field='x'/></OutputField>");
  const std::string log = folder.Path("log");
  const Ran ran = Score(model + " --log " + log, "x\n1\n");
  EXPECT_THAT(ran.err, StartsWith("svmscore: " + model +
                                  ": line 13, OutputField: the document declares a result that the "
                                  "model does not compute, or computes differently: output field p "
                                  "stays empty: a regression has no probabilities"));
  EXPECT_THAT(ReadFile(log), EndsWith("no probabilities\n"));
  EXPECT_EQ(Score(model + " --log " + log, "x\n2\n1\n3\n").out, "p,d,status\n,2,0\n,1,0\n,3,0\n");
  EXPECT_THAT(ReadFile(log), EndsWith("no probabilities\nsvmscore log: Output field d has a value "
                                      "that is not among its decisions\n"));
}

TEST(Score, PercentagesBelongToTheirCategoriesWhicheverResponds) {
  const TemporaryFolder folder;
  const std::string yes = "<Value value='yes'/>";
  const std::string no = "<Value value='no'/>";
  EXPECT_EQ(Score(EditedFile(folder, Data("two.pmml"), {yes + no, no + yes}), "x\n2\n-2\n").out,
            "prediction,confidence,probability(no),probability(yes),status\n"
            "yes,0.8807970779778823,0.11920292202211769,0.8807970779778823,0\n"
            "no,0.8807970779778824,0.8807970779778824,0.11920292202211755,0\n");
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
            begin + "Enter:ParseFromTree\n" + begin + "Exit:ParseFromTree\n" + failed + failed +
                begin + "row 2, x: no value is given, and nothing replaces it\n" + begin +
                "row 3, x: no value is given, and nothing replaces it\n");
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

// Also where a broken row ends the run.
TEST(Score, NeitherThreadsNorTheInstructionSetChangeTheOutput) {
  const std::string arguments = "three.pmml --decisions --threads ";
  for (const bool broken : {false, true}) {
    const std::string cases = ManyCases(100000) + (broken ? "1,2\n" + ManyCases(50000) : "");
    const Ran one = Score(arguments + "1", cases, "SVMSCORE_ISA=plain");
    EXPECT_EQ(one.status, broken ? 5 : 0) << one.err;
    EXPECT_GT(one.out.size(), 1000000U);
    for (const auto& [threads, isa] : {std::pair{"8", "plain"}, {"8", ""}, {"2", "sse2"}}) {
      const Ran other = Score(arguments + threads, cases, std::string("SVMSCORE_ISA=") + isa);
      EXPECT_EQ(other.status, one.status) << threads << isa;
      EXPECT_TRUE(other.out == one.out) << threads << isa;
      EXPECT_TRUE(!broken || other.err == one.err) << other.err;
    }
  }
}

TEST(Score, RefusesAnUnknownInstructionSet) {
  const Ran ran = Score("line.pmml", "", "SVMSCORE_ISA=avx");
  EXPECT_EQ(ran.status, 3);
  EXPECT_THAT(ran.err, HasSubstr("[260317]"));
  EXPECT_THAT(ran.err, HasSubstr("SVMSCORE_ISA must be sse2, avx2, avx512 or plain"));
}

TEST(Score, CertifiesVotesWithoutChangingAByte) {
  std::string cases = "sepal_length,sepal_width,petal_length,petal_width\n";
  for (int i = 0; i < 20000; ++i) {
    cases += fmt::format("{:.2f},{:.2f},{:.2f},{:.2f}\n", 4 + i % 40 * 0.1, 2 + i % 23 * 0.1,
                         1 + i % 58 * 0.1, 0.1 + i % 24 * 0.1);
  }
  const bool estimates = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
  for (const char* options : {"", " --prediction-only --threads 2"}) {
    const std::string arguments = "../../../examples/iris/model.pmml -" + std::string(options);
    const Ran certified = Score(arguments, cases, "SVMSCORE_CERTIFY=on");
    const Ran exact = Score(arguments, cases, "SVMSCORE_CERTIFY=off");
    EXPECT_TRUE(certified.out == exact.out) << options;
    EXPECT_GT(exact.out.size(), 100000U);
    EXPECT_EQ(certified.err.find("in single precision") != std::string::npos, estimates)
        << certified.err;
    EXPECT_EQ(exact.err.find("votes decided"), std::string::npos) << exact.err;
  }
  EXPECT_THAT(Score("line.pmml", "", "SVMSCORE_CERTIFY=maybe").err,
              HasSubstr("SVMSCORE_CERTIFY must be on or off"));
}

TEST(Score, ShowsProgressOnATerminalOnly) {
  const TemporaryFolder folder;
  const std::string line = "score " + Data("line.pmml") + " " + folder.Write("cases", "x\n1\n");
  const Ran shown = RunShell("script -qec \"'$SVMSCORE' " + line + " -o /dev/null\" /dev/null");
  EXPECT_THAT(shown.out, HasSubstr("1 case, "));
  EXPECT_THAT(shown.out, HasSubstr("100% of the input"));
  EXPECT_THAT(RunShell("\"$SVMSCORE\" " + line).err, StartsWith("svmscore: 1 case, "));
}

TEST(Program, TellsItsVersionAndItsUse) {
  EXPECT_THAT(RunProgram({"--version"}).out, MatchesRegex("svmscore [0-9]+\\.[0-9]+\\.[0-9]+\n"));
  const Ran help = RunProgram({"score", "--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.out, HasSubstr("--missing-policy"));
}

}  // namespace
}  // namespace svmscore::app
