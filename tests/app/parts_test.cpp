// Parts of a file, scored one by one: together they are what one run writes and tells.
#include <sstream>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/compressed.h"
#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"

namespace svmscore::app {
namespace {

using testing::HasSubstr;

// The lines that name rows.
std::string RowsIn(const std::string& text) {
  std::istringstream lines(text);
  std::string rows;
  for (std::string line; std::getline(lines, line);) {
    if (line.find(": row ") != std::string::npos) rows += line + '\n';
  }
  return rows;
}

TEST(Parts, PutTogetherAreTheOutputOfOneRun) {
  const std::string header = "width,height,colour\n";
  const std::string lines = "1,1,\"red\n\n\"\"x\"\",\n1,1,red\n\"\n";
  const std::string crlf = "width,height,colour\r\n1,q,\"red\r\n\"\r\n-1,-1,red\r\n5%,1,\"\"\r\n";
  const std::string german = "height;width;colour;n\n1,5;-1;red;\"a\n;\"\n\n;;NA;?\n1,2;?;red;";
  const std::string mark = "\xEF\xBB\xBF \n\r\n";
  // The first with every number of parts, the others with some.
  const struct {
    std::string model;
    std::string options;
    std::string cases;
  } rows[] = {
      {"three", "--reasons --passthrough '*'",
       mark + crlf + "\n-1,-1,red\n \t\r\n" + lines + lines + "1,q,red"},
      {"three", "--reasons", header + "1,1,red\nq,1,red\n-1,-1,red\n1,1,green\n1,1,red\n"},
      {"three", "--format jsonl --reasons --passthrough colour", header + lines + "q,1,red\n1,1,"},
      {"three", "--passthrough height --strict", crlf + crlf.substr(crlf.find('\n') + 1)},
      {"three", "--no-header", mark + header + "\n1,q,red\n \t\r\n\nx,1,red\n \n"},
      {"three", "--decisions", header + "1,\"" + std::string(400, '\n') + "\",red\n1,1,red\nx,,\n"},
      {"three", "--delimiter ';' --decimal-comma --missing-token '?' --passthrough '*'", german},
      {"three", "--delimiter tab --reasons", "colour\theight\twidth\n\t\t\n \t1\t1\n\nred\t1\t1\n"},
      {"line", "--columns all", "x\n1\n\nq\n \n\"\"\n-3\n\n"},
      {"line", "", "x\n"},
      {"line", "--reasons", "\n\nx"},
  };
  int step = 1;
  for (const auto& [model, options, cases] : rows) {
    const TemporaryFolder folder;
    const auto score = [&, model = model, options = options](const std::string& log) {
      return fmt::format("\"$SVMSCORE\" score {} {} {} --log {}", Data(model + ".pmml"),
                         folder.Path("cases"), options, folder.Path(log));
    };
    folder.Write("cases", cases);
    const Ran whole = RunShell(score("log"));
    EXPECT_NE(whole.status, 5) << whole.err;
    for (int count = 1; count <= 17; count += step) {
      SCOPED_TRACE(fmt::format("{} parts of {}", count, cases));
      const std::string log = fmt::format("log{}", count);
      const Ran parts = RunShell(
          fmt::format("for i in {{1..{0}}}; do {1} --part $i/{0}; done", count, score(log)));
      EXPECT_EQ(parts.out, whole.out);
      EXPECT_EQ(RowsIn(parts.err), RowsIn(whole.err));
      EXPECT_EQ(RowsIn(ReadFile(folder.Path(log))), RowsIn(ReadFile(folder.Path("log"))));
    }
    step = 8;
  }
}

TEST(Parts, EndWithTheStatusOfTheirOwnCases) {
  const TemporaryFolder folder;
  const auto score = [&](const std::string& part) {
    return RunProgram(
        {"score", Data("line.pmml"), folder.Path("cases"), "--prediction-only", "--part", part});
  };
  // Ten bytes below the header, in which rows begin at the bytes 0, 2, 4 and 9.
  folder.Write("cases", "x\n1\nq\n1111\n\"");
  const struct {
    std::string part;
    int status;
    std::string out;
    std::string told;
  } rows[] = {
      {"1/5", 0, "prediction,status\n2.1,0\n", "svmscore: 1 case, 1 scored"},
      {"2/5", 4, ",90027\n", "svmscore: row 2, x: \"q\" is not a number\n"},
      {"02/05", 4, ",90027\n", "svmscore: row 2, x: \"q\" is not a number\n"},
      {"3/5", 0, "2222.1,0\n", "svmscore: 1 case, 1 scored"},
      {"4/5", 0, "", "svmscore: 0 cases, 0 scored, 0 missing, 0 invalid, "},
      {"5/5", 5, "", "line 5: a quoted cell that is never closed"},
      {"1000000/1000000", 5, "", "line 5: a quoted cell that is never closed"},
      {"1/1000000", 0, "prediction,status\n", "svmscore: 0 cases"},
      {"100000/1000000", 0, "2.1,0\n", "svmscore: 1 case, 1 scored"},
      {"999999/1000000", 0, "", "svmscore: 0 cases"},
  };
  for (const auto& [part, status, out, told] : rows) {
    const Ran ran = score(part);
    EXPECT_EQ(ran.status, status) << part << ran.err;
    EXPECT_EQ(ran.out, out) << part;
    EXPECT_THAT(ran.err, HasSubstr(told)) << part;
  }
}

TEST(Parts, AreOfPlainFilesAndWrittenAsTwoNumbers) {
  const TemporaryFolder folder;
  const std::string plain = folder.Write("plain", "x\n1\n");
  const std::string compressed = folder.Write("compressed", Gzipped("x\n1\n"));
  const std::string model = Data("line.pmml");
  for (const char* part : {"",
                           "/",
                           "1",
                           "1/",
                           "/2",
                           "0/2",
                           "3/2",
                           "0/0",
                           "1/0",
                           "-1/2",
                           "+1/2",
                           "1/2/3",
                           "1 / 2",
                           " 1/2",
                           "1/2x",
                           "0x1/2",
                           "1.0/2",
                           "a/b",
                           "1/1000001",
                           "1/18446744073709551617",
                           "18446744073709551617/2"}) {
    const Ran ran = RunProgram({"score", model, plain, "--part", part});
    EXPECT_EQ(ran.status, 2) << part;
    EXPECT_THAT(ran.err, HasSubstr(fmt::format(
                             "--part: \"{}\" is no part; write I/N, as 2/8 for the second of 8 "
                             "parts: whole numbers from 1, I at most N, N at most 1000000",
                             part)));
  }
  const std::string score = "\"$SVMSCORE\" score " + model + " --part 1/1 ";
  for (const std::string& cases : {"- < " + plain, "< " + plain, "<(cat " + plain + ")", compressed,
                                   std::string("/dev/null"), "/dev/stdin < " + compressed}) {
    const Ran ran = RunShell(score + cases);
    EXPECT_EQ(ran.status, 2) << cases;
    EXPECT_THAT(ran.err, HasSubstr("is not a plain file, and no other can be cut into parts; save "
                                   "the cases to a file that is not compressed\n"));
  }
  EXPECT_EQ(RunShell(score + plain).status, 0);
}

// The rows before the broken one are scored, as in one run, and its own part names its line.
TEST(Parts, UpToABrokenRowAreThoseOfOneRun) {
  const TemporaryFolder folder;
  for (const std::string broken : {"1\"2,1,red\n", "\"1\"2,\"1\",red\n", "1,2\n", "1\r,1,red\n"}) {
    const std::string score =
        "\"$SVMSCORE\" score " + Data("three.pmml") + " " +
        folder.Write("cases", "width,height,colour\n1,1,\"\nred\"\n1,1,red\n" + broken +
                                  "-1,1,red\n-1,-1,red\n");
    const Ran whole = RunShell(score);
    for (const int count : {2, 3, 9}) {
      const Ran parts = RunShell(fmt::format(
          "for i in {{1..{0}}}; do {1} --part $i/{0}; [ $? != 5 ] || exit 5; done", count, score));
      EXPECT_EQ(parts.status, 5) << broken;
      EXPECT_EQ(parts.out, whole.out) << broken;
      EXPECT_EQ(parts.err.substr(parts.err.rfind(": line ")),
                whole.err.substr(whole.err.rfind(": line ")));
    }
  }
}

}  // namespace
}  // namespace svmscore::app
