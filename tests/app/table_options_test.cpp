// Tables as people have them: other delimiters, decimal commas, blank lines, words for missing
// values.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/edited.h"
#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"

namespace svmscore::app {
namespace {

using testing::HasSubstr;

TEST(Tables, AreReadAsTheOptionsSay) {
  const std::string three = "three.pmml";
  const std::string line = "line.pmml";
  const std::string scores = "prediction,status\na,0\nb,0\n";
  const struct {
    std::string model;
    Arguments options;
    std::string cases;
    std::string out;
  } rows[] = {
      {three, {"--delimiter", ";"}, "width;height;colour\n1;1;\"red\"\n-1;-1;red\n", scores},
      {three, {"--delimiter", "tab"}, "width\theight\tcolour\n1\t1\tred\n-1\t-1\tred\n", scores},
      {three, {"--delimiter", "\t"}, "width\theight\tcolour\n1\t1\tred\n-1\t-1\tred\n", scores},
      {three, {"--delimiter", "\\t"}, "width\theight\tcolour\n1\t1\tred\n-1\t-1\tred\n", scores},
      {three, {"--delimiter", "|"}, "width|height|colour\n1|1|red\n-1|\"-1\"|red\n", scores},
      {three, {"--delimiter", " "}, "width height colour\n1 1 red\n-1 -1 red\n", scores},
      {three,
       {"--delimiter", ";", "--passthrough", "a;b,width"},
       "width;height;colour;\"a;b\"\n1;1;red;\"x;,\"\"\n\"\n",
       "a;b,width,prediction,status\n\"x;,\"\"\n\",1,a,0\n"},
      // Numbers are exactly those with a point; texts keep their commas, and a point is no comma.
      {line,
       {"--decimal-comma"},
       "x,t\n\"1,5\",1\n\"0,1\",\"2,2\"\n\"-1,25e1\",3\n7,\"\"\n",
       "prediction,status\n3.1,0\n0.30000000000000004,0\n-24.9,0\n14.1,0\n"},
      {line,
       {"--decimal-comma", "--delimiter", ";"},
       "x\n1,5\n1.5\n1.234,5\n,5\n1,2,3\nNA\n",
       "prediction,status\n3.1,0\n,90027\n,90027\n1.1,0\n,90027\n,90029\n"},
      {line,
       {"--decimal-comma", "--delimiter", ";", "--missing-token", "-9,9"},
       "x;y\n-9,9;2\n",
       "prediction,status\n,90029\n"},
      {three,
       {"--decimal-comma", "--delimiter", ";", "--passthrough", "*", "--no-header"},
       "colour;height;x y;width\n\"red\";1,0;a,b;1,50\n",
       "red,\"1,0\",\"a,b\",\"1,50\",a,0\n"},
      {line, {"--no-header"}, "x\n1\n", "2.1,0\n"},
      {line, {"--passthrough", "*"}, "b,x\n1,2\n", "b,x,prediction,status\n1,2,4.1,0\n"},
      // Blank lines are no rows; in a table of one column they are missing cells.
      {three, {}, "\n \n\r\nwidth,height,colour\n\n1,1,red\n \t\r\n\r\n-1,-1,red\n\n\n   ", scores},
      {line, {}, "\n\nx\n\n1\n", "prediction,status\n,90029\n2.1,0\n"},
  };
  for (const auto& [model, options, cases, out] : rows) {
    const Ran ran = ScoreTable(model, options, cases);
    EXPECT_EQ(ran.out, out) << testing::PrintToString(options) << cases << ran.err;
  }
}

TEST(Tables, OptionsThatCannotBeMeantAreUsageErrors) {
  const struct {
    Arguments options;
    std::string told;
  } rows[] = {
      {{"--delimiter", ""}, "it is empty; give one character, or the word tab"},
      {{"--delimiter", ";;"}, "\";;\" is more than one character; give one, or the word tab"},
      {{"--delimiter", "\xC2\xA7"}, "\"\xC2\xA7\" is no ASCII character"},
      {{"--delimiter", "\""}, "a quotation mark begins a cell"},
      {{"--delimiter", "\n"}, "a line end ends a row"},
      {{"--delimiter", "."}, "\".\" is a part of numbers and names"},
      {{"--delimiter", "e"}, "\"e\" is a part of numbers and names"},
      {{"--delimiter", "\x01"}, "it is a control character"},
      {{"--passthrough", "x,*"}, "* means all columns of the input"},
  };
  for (const auto& [options, told] : rows) {
    const Ran ran = ScoreTable("line.pmml", options, "x\n1\n");
    EXPECT_EQ(ran.status, 2);
    EXPECT_THAT(ran.err, HasSubstr(told));
  }
}

TEST(Tables, ReasonsShowNumbersAsTheTableHasThem) {
  const Ran ran = ScoreTable("line.pmml", {"--decimal-comma", "--delimiter", ";", "--reasons"},
                             "x\n1.5\n1,2,3\n1,5\n1.234,5\n");
  EXPECT_EQ(ran.out,
            "prediction,status,reason\n"
            ",90027,\"x: \"\"1.5\"\" is not a number\"\n"
            ",90027,\"x: \"\"1,2,3\"\" is not a number\"\n"
            "3.1,0,\n"
            ",90027,\"x: \"\"1.234,5\"\" is not a number\"\n");
  EXPECT_THAT(ran.err,
              HasSubstr("\"1.234,5\" is not a number (write it without separators of thousands)"));
  EXPECT_THAT(ran.err, HasSubstr("row 1, x: \"1.5\" is not a number (numbers have a decimal comma "
                                 "here; write it with one, and thousands without points, or leave "
                                 "--decimal-comma out)\n"));
  EXPECT_THAT(ran.err, HasSubstr("\"1,2,3\" is not a number\n"));
}

// A text that looks like a number with a comma stays one, also where it is expected.
TEST(Tables, DecimalCommasAreNotReadInTexts) {
  const TemporaryFolder folder;
  const std::string model =
      EditedFile(folder, Data("three.pmml"), {"*'red'", "'1,5'", "*'b'", "'2,5'"});
  const std::string text = "width;height;colour\n-1;-1;1,5\n";
  const Arguments options = {"--delimiter", ";", "--decimal-comma"};
  Arguments score = {"score", model, "--prediction-only"};
  score.insert(score.end(), options.begin(), options.end());
  EXPECT_EQ(RunProgram(score, text).out, "prediction,status\n\"2,5\",0\n");
  Arguments verify = {"verify",     model,
                      "--input",    folder.Write("c", text),
                      "--expected", folder.Write("e", "prediction\n2,5\n")};
  verify.insert(verify.end(), options.begin(), options.end());
  EXPECT_THAT(RunProgram(verify).out, testing::EndsWith("\n1 cell compared, 0 disagree\n"));
}

TEST(Tables, ADeclaredValueIsNotMissingUnlessATokenThatIsGivenSaysSo) {
  const TemporaryFolder folder;
  const std::string model = EditedFile(folder, Data("three.pmml"), {"*'red'", "'NA'"});
  const std::string cases = "width,height,colour\n-1,-1,NA\nNA,1,NA\n1,1,N/A\n";
  const std::string scores = "prediction,status\nb,0\n,90029\na,0\n";
  const Ran usual = RunProgram({"score", model, "--prediction-only"}, cases);
  EXPECT_EQ(usual.out, scores) << usual.err;
  EXPECT_THAT(usual.err, testing::StartsWith("svmscore: row 2, width: "));
  const Arguments given = {"--missing-policy", "fail", "--missing-token", "NA"};
  Arguments score = {"score", model, "--prediction-only"};
  score.insert(score.end(), given.begin(), given.end());
  const Ran told = RunProgram(score, cases);
  EXPECT_EQ(told.out, "prediction,status\n,90029\n,90029\n,90027\n");
  EXPECT_THAT(told.err, testing::StartsWith(
                            "svmscore: the model lists \"NA\" as a value of \"colour\"; cells of "
                            "that text are missing all the same, because --missing-token NA says "
                            "so\n"));
  const std::string input = folder.Write("cases", cases);
  const std::string expected = folder.Write("expected", scores);
  EXPECT_EQ(RunProgram({"verify", model, "--input", input, "--expected", expected}).status, 0);
  EXPECT_EQ(RunProgram({"doctor", model, "--input", input, "--expected", expected}).status, 0);
}

TEST(Tables, VerifyAndDoctorReadThemAlike) {
  const TemporaryFolder folder;
  const std::string cases = folder.Write("cases", "x;t\n\n1,5;a\n0,1;b\n-9,9;c\n");
  const std::string expected =
      folder.Write("expected", "prediction;status\n3,1;0\n\n\"0,3\";0\n;90029\n");
  const Arguments options = {"--delimiter", ";",   "--decimal-comma", "--missing-token", "-9,9",
                             "--input",     cases, "--expected",      expected};
  Arguments verify = {"verify", Data("line.pmml")};
  verify.insert(verify.end(), options.begin(), options.end());
  const Ran ran = RunProgram(verify);
  EXPECT_EQ(ran.status, 0) << ran.err;
  EXPECT_THAT(ran.out, testing::EndsWith("\n5 cells compared, 0 disagree\n"));
  Arguments doctor = {"doctor", Data("line.pmml")};
  doctor.insert(doctor.end(), options.begin(), options.end());
  EXPECT_THAT(RunProgram(doctor).out, HasSubstr("no findings")) << ran.err;
  folder.Write("expected", "prediction;status\n3.2;0\n0,3;0\n;90029\n");
  EXPECT_EQ(RunProgram(verify).status, 1);
  EXPECT_EQ(RunProgram(doctor).status, 1);
}

// What score wrote can be compared, however the cases are written.
TEST(Tables, ExpectedScoresMayBeWrittenAsTheCasesOrAsScores) {
  const std::string german = "x;t\n1,5;a\n0,1;b\n";
  const struct {
    std::string cases;
    std::string expected;
    Arguments options;
    int status;
  } rows[] = {
      {german, "prediction;status\n3,1;0\n0,3;0\n", {"--decimal-comma"}, 0},
      {german, "prediction;status\n3.1;0\n0.3;0\n", {"--decimal-comma"}, 0},
      {german, "prediction,status\n3.1,0\n0.3,0\n", {"--decimal-comma"}, 0},
      {german, "x,prediction\n\"1,5\",3.1\n\"0,1\",0.3\n", {"--decimal-comma"}, 0},
      {german, "\"t\",\"prediction\"\n\"a;b\nc\",3.1\na,0.3\n", {"--decimal-comma"}, 0},
      {german, "prediction,status\n3.2,0\n0.3,0\n", {"--decimal-comma"}, 1},
      {german,
       "prediction\n\"3,1\"\n0.3\n",
       {"--decimal-comma"},
       1},  // one of them groups thousands
      {german, "prediction\n3,1\n0,3\n", {"--decimal-comma"}, 0},
      {"x;t\n1.5;a\n", "status,prediction\n0,3.1\n", {}, 0},
  };
  for (const auto& [cases, expected, options, status] : rows) {
    const TemporaryFolder folder;
    const std::string input = folder.Write("cases", cases);
    const std::string file = folder.Write("expected", expected);
    for (const char* command : {"verify", "doctor"}) {
      Arguments arguments = {command, Data("line.pmml"), "--delimiter", ";", "--input",
                             input,   "--expected",      file};
      arguments.insert(arguments.end(), options.begin(), options.end());
      const Ran ran = RunProgram(arguments);
      EXPECT_EQ(ran.status, status) << command << ' ' << expected << ran.out << ran.err;
    }
  }
}

}  // namespace
}  // namespace svmscore::app
