// Files that end early, cannot be written or are nobody's any more, and runs that are ended: a
// score file is complete under its name, or absent.
#include <csignal>
#include <cstring>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/edited.h"
#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"

namespace svmscore::app {
namespace {

using testing::HasSubstr;

const std::string kScore = "\"$SVMSCORE\" score " + Data("line.pmml") + " ";
const std::string kManyCases = "(echo x; yes 1 | head -n 300000) | ";

TEST(Faults, OutputsThatCannotBeWrittenEndWithStatusSixAndLeaveNoFile) {
  const TemporaryFolder folder;
  const std::string cases = folder.Write("cases.csv", "x\n1\n");
  const std::string out = folder.Path("out");
  const std::string write =
      "\"$SVMSCORE\" verify " + Data("line.pmml") + " --input " + cases + " --write " + out;
  const std::string no_space = "cannot write standard output: No space left on device\n";
  const std::string describe = "\"$SVMSCORE\" describe " + Data("line.pmml");
  for (const auto& [line, message] : std::vector<std::pair<std::string, std::string>>{
           {kScore + cases + " > /dev/full", no_space},
           {kScore + cases + " -o /dev/full", "cannot write /dev/full: No space left on device\n"},
           {kScore + cases + " >&-", "cannot write standard output: Bad file descriptor\n"},
           {kScore + cases + " -o " + out + "/none", "No such file or directory\n"},
           {"ulimit -f 64; " + kManyCases + kScore + " -o " + out, out + ": File too large\n"},
           {"ulimit -f 1; " + write, out + ": File too large\n"},
           {describe + " > /dev/full", no_space},
           {"\"$SVMSCORE\" --help > /dev/full", ""},
       }) {
    const Ran ran = RunShell(line);
    EXPECT_EQ(ran.status, 6) << line << ran.err;
    EXPECT_TRUE(ran.err.ends_with(message)) << ran.err;
    EXPECT_EQ(folder.FileCount(), 1U) << line;
  }
}

TEST(Faults, ALogThatCannotBeWrittenIsToldAfterTheScores) {
  const TemporaryFolder folder;
  const std::string cases = folder.Write("cases.csv", "x\n1\n");
  const Ran ran = RunShell(kScore + cases + " --log /dev/full -o " + folder.Path("out"));
  EXPECT_EQ(ran.status, 6);
  EXPECT_THAT(ran.err, testing::EndsWith(
                           " seconds\nsvmscore: cannot write the log /dev/full: No space left on "
                           "device\n"));
  EXPECT_EQ(folder.FileCount(), 2U);
}

TEST(Faults, AClosedPipeEndsTheRunQuietly) {
  const Ran ran = RunShell(kManyCases + "{ " + kScore + "; echo \"status $?\" >&2; } | head -n 1");
  EXPECT_EQ(ran.err, "status 6\n");
  EXPECT_EQ(ran.out, "prediction,stddev,ci_lower,ci_upper,status\n");
}

// A file that a stream stands at goes on there: what was in it stays, and what comes later follows.
TEST(Faults, AnOutputThatIsAnOpenStreamIsWrittenWhereThatStands) {
  const TemporaryFolder folder;
  folder.Write("cases.csv", "x\n1\n");
  const std::string rows =
      "prediction,stddev,ci_lower,ci_upper,status\n2.1,0.5,0.6021338632230051,3.597866136776995,"
      "0\n";
  for (const char* redirected :
       {"-o /dev/stdout >> all", "-o /proc/self/fd/1 >> all", "-o link >> all", "-o all >> all",
        "-o hard >> all", "-o /dev/fd/7 7>> all", "-o /proc/$$/fd/7",
        "-o /dev/stderr --log log 2>> all"}) {
    const Ran ran =
        RunShell("cd " + folder.Path(".") +
                 "; rm -f all hard; printf 'earlier\\n' > all; ln all hard; ln -sf "
                 "/dev/stdout link; exec 7>> all; { " +
                 kScore + "cases.csv " + redirected + "; } 2> err; echo later >> all; cat err >&2");
    const std::string all = ReadFile(folder.Path("all"));
    EXPECT_TRUE(all.starts_with("earlier\n" + rows) && all.ends_with("later\n"))
        << redirected << all << ran.err;
  }
  EXPECT_EQ(
      RunShell("{ " + kScore + folder.Path("cases.csv") + " -o /dev/stdout; echo later; }").out,
      rows + "later\n");
}

TEST(Faults, AFileIsNotReadAndWrittenAtOnce) {
  const TemporaryFolder folder;
  const std::string model = folder.Write("model", ReadFile(Data("line.pmml")));
  const std::string cases = folder.Write("cases", "x\n1\n");
  for (const auto& [rest, message] : std::vector<std::pair<std::string, std::string>>{
           {"cases --log cases", "--log names the file of the cases, cases, which would never end"},
           {"--log ./link < cases", "--log names the file of the"},
           {"cases --log model", "--log names the model, model, and would be appended to it"},
           {"cases --log new -o ./new", "--log names the output, new, and one would overwrite"},
           {"cases --log new > new", "--log names the output, new, and one would overwrite"},
           {"cases -o model", "the output is the model, model, and would take its place"},
           {"cases >> cases", "the output is the file of the cases"},
           {"cases -o /dev/stdout >> cases", "the output is the file of the cases"},
       }) {
    const Ran ran = RunShell("cd " + folder.Path("") +
                             "; ln -sf cases link; timeout 3600 \"$SVMSCORE\" score model " + rest);
    EXPECT_EQ(ran.status, 2) << rest;
    EXPECT_THAT(ran.err, HasSubstr(message));
    EXPECT_THAT(ran.err, HasSubstr("; name another file\n"));
    EXPECT_EQ(ReadFile(model), ReadFile(Data("line.pmml")));
    EXPECT_EQ(ReadFile(cases), "x\n1\n");
  }
  // What is read to its end before it is replaced, and devices, lose nothing.
  const Ran ran = RunShell("cd " + folder.Path("") + "; " + kScore +
                           "cases -o /dev/null --log /dev/null; " + kScore + "cases -o cases");
  EXPECT_EQ(ran.status, 0) << ran.err;
  EXPECT_THAT(ReadFile(cases), HasSubstr("prediction"));
}

// Messages that nobody can read neither end a run nor find their way into its output.
TEST(Faults, AnUnusableStandardErrorChangesNothing) {
  const TemporaryFolder folder;
  const std::string out = folder.Path("out");
  for (const char* closed : {" 2>&-", " 2> /dev/full", " <&- 2>&-"}) {
    const std::string cases = folder.Write("cases.csv", "x\n1\n");
    EXPECT_EQ(RunShell(kScore + cases + " -o " + out + closed).status, 0) << closed;
    EXPECT_EQ(ReadFile(out),
              "prediction,stddev,ci_lower,ci_upper,status\n"
              "2.1,0.5,0.6021338632230051,3.597866136776995,0\n");
    EXPECT_EQ(RunShell(kScore + out + " -o " + out + ".none" + closed).status, 5);
  }
}

TEST(Faults, InputsThatEndEarlyAreRefused) {
  const TemporaryFolder folder;
  const std::string model = ReadFile(Data("line.pmml"));
  const std::string cut = folder.Write("cut.pmml", model.substr(0, model.size() - 3));
  const std::string unknown =
      EditedFile(folder, Data("line.pmml"), {"<FieldRef field='x", "<FieldRef field='z"});
  // A pipe is read once, also by the commands that look at a document twice.
  for (const char* command : {"score", "describe", "verify", "doctor"}) {
    for (const auto& [file, code] : {std::pair{cut, "[260302]"}, {unknown, "[260311]"}}) {
      const std::string run = std::string("timeout 3600 \"$SVMSCORE\" ") + command + ' ';
      const std::string pipe = folder.Path("pipe");
      const Ran piped = RunShell("mkfifo " + pipe + "; (cat " + file + " > " + pipe + ")& " + run +
                                 pipe + "; status=$?; rm " + pipe + "; exit $status");
      EXPECT_EQ(piped.status, RunShell(run + file).status) << command << file << piped.err;
      EXPECT_THAT(piped.out + piped.err, HasSubstr(code)) << command;
    }
  }
  EXPECT_EQ(RunShell(kScore + " < " + folder.Path(".")).status, 5);
  for (const char* endless : {"/dev/null", "/dev/zero", "<(yes)", "<(yes '<a>')"}) {
    const Ran ran = RunShell("timeout 3600 \"$SVMSCORE\" describe " + std::string(endless) +
                             " --limit document-size=100000000");
    EXPECT_EQ(ran.status, 3) << endless;
    EXPECT_LT(ran.peak_kib, 100L << 10U) << endless;
  }
}

// Writes rows into a pipe: more than the program can hold unwritten, so that some of them are
// written afterwards.
void Feed(int pipe) {
  std::string rows = "x,unused\n";
  while (rows.size() < 2U << 20U) rows += "1," + std::string(60, '-') + '\n';
  for (std::size_t done = 0; done < rows.size();) {
    const ssize_t count = write(pipe, rows.data() + done, rows.size() - done);
    ASSERT_GT(count, 0);
    done += static_cast<std::size_t>(count);
  }
}

class Signals : public testing::TestWithParam<std::pair<int, const char*>> {};

// Rows flow, the output grows, and then the signal comes.
TEST_P(Signals, SayHowFarTheRunCameAndLeaveNoFile) {
  const auto [signal_number, name] = GetParam();
  for (const bool to_file : {true, false}) {
    const TemporaryFolder folder;
    const std::string cases = folder.Path("cases");
    ASSERT_EQ(mkfifo(cases.c_str(), 0600), 0);
    const TemporaryFolder streams;
    const pid_t program = StartProgram({"score", Data("line.pmml"), cases, "--threads", "1", "-o",
                                        to_file ? folder.Path("scores.csv") : "-"},
                                       "/dev/null", streams.Path("out"), streams.Path("err"));
    const int feed = open(cases.c_str(), O_WRONLY);
    Feed(feed);
    EXPECT_EQ(folder.FileCount(), to_file ? 2U : 1U);
    kill(program, signal_number);
    EXPECT_EQ(WaitFor(program, true).status, 128 + signal_number);
    close(feed);
    EXPECT_EQ(folder.FileCount(), 1U);
    EXPECT_THAT(ReadFile(streams.Path("err")),
                testing::MatchesRegex(std::string("svmscore: ended by ") + name +
                                      " after [1-9][0-9]* cases" +
                                      (to_file ? "; the output file is not made\n" : "\n")));
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, Signals,
    testing::Values(std::pair{SIGINT, "SIGINT"}, std::pair{SIGTERM, "SIGTERM"},
                    std::pair{SIGHUP, "SIGHUP"}, std::pair{SIGQUIT, "SIGQUIT"},
                    std::pair{SIGXCPU, "SIGXCPU"}, std::pair{SIGALRM, "SIGALRM"},
                    std::pair{SIGUSR1, "SIGUSR1"}, std::pair{SIGUSR2, "SIGUSR2"},
                    std::pair{SIGPROF, "SIGPROF"}, std::pair{SIGPWR, "SIGPWR"},
                    std::pair{SIGRTMIN, "SIGRTMIN"}, std::pair{SIGRTMAX, "SIGRTMIN[+]30"}));

// What would be told at the end is told then.
TEST(Faults, ASignalLosesNoReasons) {
  const TemporaryFolder folder;
  const std::string cases = folder.Path("cases");
  ASSERT_EQ(mkfifo(cases.c_str(), 0600), 0);
  const pid_t program = StartProgram({"score", Data("line.pmml"), cases, "--prediction-only"},
                                     "/dev/null", folder.Path("out"), folder.Path("err"));
  const int feed = open(cases.c_str(), O_WRONLY);
  std::string answers = "prediction,status\n";
  for (const auto& [rows, answer] : {std::pair{"x\n1\n", "2.1,0\n"},
                                     {"5%\n", ",90027\n"},
                                     {"no\n", ",90027\n"},
                                     {"1\n", "2.1,0\n"}}) {
    ASSERT_GT(write(feed, rows, std::strlen(rows)), 0);
    answers += answer;
    while (ReadFile(folder.Path("out")).size() < answers.size()) usleep(1000);
  }
  EXPECT_EQ(ReadFile(folder.Path("out")), answers);
  kill(program, SIGINT);
  EXPECT_EQ(WaitFor(program, true).status, 128 + SIGINT);
  close(feed);
  const std::string told = ReadFile(folder.Path("err"));
  EXPECT_THAT(told, testing::StartsWith("svmscore: row 2, x: \"5%\" is not a number"));
  EXPECT_THAT(told, HasSubstr("\nsvmscore: 2 failures in all, by column and reason:\n"));
  EXPECT_THAT(told, testing::EndsWith("\nsvmscore: ended by SIGINT after 4 cases\n"));
}

TEST(Faults, AStandardErrorThatNobodyReadsHoldsUpNoEnd) {
  const TemporaryFolder folder;
  const std::string cases = folder.Path("cases");
  const std::string full = folder.Path("full");
  ASSERT_EQ(mkfifo(cases.c_str(), 0600) + mkfifo(full.c_str(), 0600), 0);
  const int pipe = open(full.c_str(), O_RDWR | O_NONBLOCK);
  while (write(pipe, "x", 1) == 1) {
  }
  const pid_t program = StartProgram({"score", Data("line.pmml"), cases, "-o", folder.Path("out")},
                                     "/dev/null", folder.Path("none"), full);
  const int feed = open(cases.c_str(), O_WRONLY);
  Feed(feed);
  kill(program, SIGTERM);
  EXPECT_EQ(WaitFor(program, true).status, 128 + SIGTERM);
  close(feed);
  close(pipe);
  EXPECT_EQ(folder.FileCount(), 3U);
}

TEST(Faults, AnIgnoredSignalStaysIgnored) {
  const TemporaryFolder folder;
  // The program has written some of what it took in, and waits for more.
  const Ran ran = RunShell("cd " + folder.Path(".") + "; mkfifo in; trap '' HUP; " + kScore +
                           "in -o out & exec 3> in; (echo x; yes 1 | head -n 1000000) >&3; "
                           "kill -HUP $!; exec 3>&-; wait $!; echo $?; wc -l < out");
  EXPECT_EQ(ran.out, "0\n1000001\n") << ran.err;
}

}  // namespace
}  // namespace svmscore::app
