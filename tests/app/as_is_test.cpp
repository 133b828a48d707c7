// --as-is: the document to the letter, on every command that scores or describes.
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
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

const std::vector<std::string> kCommands = {"score", "verify", "describe"};

TEST(AsIs, ExcludesTheStrictReading) {
  for (const std::string& command : kCommands) {
    const Ran ran = RunProgram({command, Data("line.pmml"), "--as-is", "--strict-document"});
    EXPECT_EQ(ran.status, 2) << command;
    EXPECT_THAT(ran.err, HasSubstr("--as-is and --strict-document cannot be combined"));
  }
}

// By default the prefix is passed over, and the two classes are those of the machine.
TEST(AsIs, RefusesWithTheCodeOfThePlugin) {
  const TemporaryFolder folder;
  const std::string model = EditedFile(folder, Data("two.pmml"),
                                       {"alternateTargetCategory='no'", "", "*<Extension.*", ""});
  EXPECT_EQ(RunProgram({"score", model}, "x\n1\n").status, 0);
  for (const std::string& command : kCommands) {
    const Ran ran = RunProgram({command, model, "--as-is"}, "x\n1\n");
    EXPECT_EQ(ran.status, 3) << command;
    EXPECT_THAT(ran.out, IsEmpty());
    EXPECT_THAT(ran.err, StartsWith("svmscore: " + model + ": [260120] "));
  }
}

TEST(AsIs, ScoresWhatIsWritten) {
  const TemporaryFolder folder;
  const struct {
    Edits edits;  // of the line
    std::string header;
    std::string letter;   // the row of x = 1
    std::string meaning;  // the same by default, or why there is none
  } cases[] = {
      // A dense array is no vector: its term is lost.
      {{"*<REAL-SparseArray.*</REAL-SparseArray>", "<Array>3</Array>"},
       "prediction,stddev,ci_lower,ci_upper,status",
       "0.1,0.5,-1.397866136776995,1.597866136776995,0",
       "6.1,0.5,4.602133863223004,7.597866136776995,0"},
      {{"<LinearKernelType/>",
        "<Output><OutputField name='p'/><OutputField name='q' feature='none'/></Output>"
        "<LinearKernelType/>"},
       "p,q,status",
       "2.1,,0",
       "2.1,,0"},
      {{"field='x'/></VectorFields>", "field='z'/></VectorFields>"},
       "prediction,stddev,ci_lower,ci_upper,status",
       "0.1,0.5,-1.397866136776995,1.597866136776995,0",
       "[260311]"},
      {{"absoluteValue='0.1'", "absoluteValue='0,1'"},
       "prediction,stddev,ci_lower,ci_upper,status",
       "2,0.5,0.502133863223005,3.497866136776995,0",
       "[260153]"},
      {{"value='2'", "value='INF'"},
       "prediction,stddev,ci_lower,ci_upper,status",
       "INF,0.5,INF,INF,0",
       ",,,,90027"},
  };
  for (const auto& [edits, header, letter, meaning] : cases) {
    const std::string model = EditedFile(folder, Data("line.pmml"), edits);
    const Ran as_is = RunProgram({"score", model, "--as-is"}, "x\n1\n");
    EXPECT_EQ(as_is.out, header + '\n' + letter + '\n') << edits[1];
    const Ran meant = RunProgram({"score", model}, "x\n1\n");
    if (meaning.starts_with('[')) {
      EXPECT_EQ(meant.status, 3);
      EXPECT_THAT(meant.err, HasSubstr(meaning));
    } else {
      EXPECT_EQ(meant.out, header + '\n' + meaning + '\n') << edits[1];
    }
    const Ran described = RunProgram({"describe", model, "--as-is"});
    EXPECT_EQ(described.status, 0);
    EXPECT_THAT(described.out, Not(HasSubstr("refused"))) << edits[1];
  }
}

// The response stands first, whichever category it is.
TEST(AsIs, KeepsTheOrderOfPercentages) {
  const TemporaryFolder folder;
  const std::string model =
      EditedFile(folder, Data("two.pmml"),
                 {"response='yes' nonResponse='no'", "response='no' nonResponse='yes'"});
  const std::string header = "prediction,confidence,probability(yes),probability(no),status\n";
  const std::string low = "0.2689414213699951";
  const std::string high = "0.7310585786300049";
  EXPECT_EQ(RunProgram({"score", model}, "x\n1\n").out,
            header + "no," + high + ',' + low + ',' + high + ",0\n");
  EXPECT_EQ(RunProgram({"score", model, "--as-is"}, "x\n1\n").out,
            header + "no," + high + ',' + high + ',' + low + ",0\n");
}

TEST(AsIs, IsHowVerificationRecordsAreMadeAndRead) {
  const TemporaryFolder folder;
  const std::string model = EditedFile(
      folder, Data("line.pmml"), {"*<REAL-SparseArray.*</REAL-SparseArray>", "<Array>3</Array>"});
  const std::string cases = folder.Write("cases.csv", "x\n1\n");
  const std::string written = folder.Path("written.pmml");
  const Ran ran = RunProgram({"verify", model, "--input", cases, "--write", written, "--as-is"});
  EXPECT_EQ(ran.status, 0) << ran.err;
  EXPECT_EQ(RunProgram({"verify", written, "--as-is"}).status, 0);
  EXPECT_EQ(RunProgram({"verify", written}).status, 1);
}

}  // namespace
}  // namespace svmscore::app
