// Compressed tables and documents, as files and as they come.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/compressed.h"
#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"

namespace svmscore::app {
namespace {

using testing::HasSubstr;

TEST(CompressedFiles, AreReadAsWhatTheyHold) {
  const TemporaryFolder folder;
  const std::string header = "width,height,colour\n";
  const std::string one = "1,1,red\n";
  const std::string other = "-1,-1,red\n";
  const std::string scores = "prediction,status\na,0\nb,0\n";
  const std::string document = ReadFile(Data("three.pmml"));
  for (const auto& [cases, model] :
       {std::pair{Gzipped(header + one + other), Gzipped(document)},
        {Gzipped(header) + Gzipped(one) + Gzipped(other), Zstandard(document)},
        {Zstandard(header + one) + Zstandard(other), Gzipped(document)}}) {
    EXPECT_EQ(ScoreTable("three.pmml", {}, cases).out, scores);
    const std::string file = folder.Write("three.pmml.compressed", model);
    const std::string input = folder.Write("cases", cases);
    const std::string expected = folder.Write("expected", Gzipped(scores));
    EXPECT_EQ(RunProgram({"score", file, input, "--prediction-only"}).out, scores);
    EXPECT_EQ(RunShell("cat " + file + " | \"$SVMSCORE\" score /dev/stdin " + input +
                       " --prediction-only")
                  .out,
              scores);
    for (const char* command : {"verify", "doctor"}) {
      const Arguments arguments = {command, file, "--input", input, "--expected", expected};
      EXPECT_EQ(RunProgram(arguments).status, 0) << command;
    }
    EXPECT_EQ(RunProgram({"verify", file, "--input", input, "--write", folder.Path("new")}).status,
              0);
    EXPECT_THAT(ReadFile(folder.Path("new")), HasSubstr("<ModelVerification recordCount=\"2\""));
  }
  // The rows before a fault are scored; of a model nothing is left.
  const std::string cut = Gzipped(header + one) + Gzipped(other).substr(0, 15);
  const Ran ran = ScoreTable("three.pmml", {}, cut);
  EXPECT_EQ(ran.status, 5);
  EXPECT_THAT(ran.err, HasSubstr("standard input: the file is compressed by gzip and ends before"));
  const std::string broken = folder.Write("broken", Gzipped(document).substr(0, 500));
  EXPECT_THAT(RunProgram({"score", broken}, one).err,
              HasSubstr("[260301] cannot read " + broken + ": it ends before its gzip stream"));
  EXPECT_THAT(
      RunProgram({"score", folder.Write("big", Gzipped(document)), "--limit", "document-size=1000"},
                 one)
          .err,
      HasSubstr("[260318] the size of the document in bytes exceeds the limit"));
  // Much that was little.
  EXPECT_THAT(ScoreTable("three.pmml", {}, Gzipped(header + std::string(20U << 20U, '1'))).err,
              HasSubstr("the length of a row in bytes exceeds the limit"));
  const std::string many = folder.Write("many", Gzipped(header + one + other));
  EXPECT_THAT(RunProgram({"verify", Data("three.pmml"), "--input", many, "--expected", many,
                          "--limit", "table-size=17"})
                  .err,
              HasSubstr("the size in bytes of a table that is held in memory exceeds the limit"));
}

// A row is answered before the next one comes. Only a hang ends the waiting.
TEST(CompressedFiles, AreAnsweredRowByRowAsPlainOnes) {
  for (const char* threads : {"1", "8"}) {
    for (const std::string compress : {"cat", "gzip"}) {
      const Ran ran = RunShell(
          "coproc S { \"$SVMSCORE\" score " + Data("line.pmml") + " --prediction-only --threads " +
          threads + "; }\nfor row in x 1 NA $'\\n7\\n' 2; do { echo \"$row\" | " + compress +
          "; } >&${S[1]}; read -t 3600 -u ${S[0]} answer && echo \"$answer\"; done");
      EXPECT_EQ(ran.out, "prediction,status\n2.1,0\n,90029\n,90029\n14.1,0\n") << compress;
    }
  }
}

}  // namespace
}  // namespace svmscore::app
