// Memory that runs out anywhere in the program, from its first allocation on: the program ends as
// it would have, except for single cases that it may give up, or reports it in one line, with exit
// status 1 and no file under the name of the output.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "app/cli/program.h"
#include "tests/app/temporary_folder.h"
#include "tests/process/failing_memory.h"

namespace svmscore_test {
namespace {

using svmscore::app::ReadFile;
using svmscore::app::TemporaryFolder;

constexpr long kPlaces = 40;

struct Ended {
  int status = -1;  // as waitpid gives it
  long calls = 0;
  std::string out, err;
};

void Redirect(int from, const std::string& path) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  if (file < 0 || dup2(file, from) < 0) _exit(126);
}

[[noreturn]] void RunChild(std::vector<std::string> arguments, const TemporaryFolder& folder,
                           long n, Failing failing) {
  Redirect(1, folder.Path("out"));
  Redirect(2, folder.Path("err"));
  std::FILE* calls = std::fopen(folder.Path("calls").c_str(), "w");
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  int status = 0;
  {
    const FailingMemory memory(n, failing);
    status = svmscore::app::RunProgram(static_cast<int>(argv.size()) - 1, argv.data());
    std::fprintf(calls, "%ld", Allocations());
  }
  std::fclose(calls);
  std::fflush(nullptr);
  _exit(status);
}

Ended RunFailing(const std::vector<std::string>& arguments, const TemporaryFolder& folder, long n,
                 Failing failing) {
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) RunChild(arguments, folder, n, failing);
  Ended ended;
  waitpid(child, &ended.status, 0);
  ended.calls = std::atol(ReadFile(folder.Path("calls")).c_str());
  ended.out = ReadFile(folder.Path("out"));
  ended.err = ReadFile(folder.Path("err"));
  return ended;
}

// Compares line by line; single cases may have been given up.
void ExpectSame(const std::string& got, const std::string& expected) {
  std::istringstream got_lines(got), expected_lines(expected);
  std::string line, wanted;
  while (std::getline(expected_lines, wanted)) {
    ASSERT_TRUE(std::getline(got_lines, line));
    if (!line.ends_with(",90029")) {
      ASSERT_EQ(line, wanted);
    }
  }
  EXPECT_FALSE(std::getline(got_lines, line));
}

class ProgramFaults : public testing::TestWithParam<std::vector<std::string>> {};

TEST_P(ProgramFaults, EndWithAMessage) {
  setenv("SVMSCORE_PLUGIN", SVMSCORE_PLUGIN_FILE, 1);
  const TemporaryFolder folder;
  std::vector<std::string> arguments = {"svmscore"};
  for (const std::string& word : GetParam()) {
    const bool is_path = word.find('/') != std::string::npos;
    arguments.push_back(is_path ? PROJECT_FOLDER "/" + word : word);
  }
  const std::string results = folder.Path("results.csv");
  const bool scores = arguments[1] == "score";
  if (scores) arguments.insert(arguments.end(), {"-o", results, "--threads", "2"});
  const Ended good = RunFailing(arguments, folder, 0, Failing::kOne);
  ASSERT_TRUE(WIFEXITED(good.status)) << good.err;
  ASSERT_EQ(good.err.find("memory"), std::string::npos) << good.err;
  const std::string expected = scores ? ReadFile(results) : good.out;
  ASSERT_FALSE(expected.empty()) << good.err;
  int runs = 0;
  int failed = 0;
  // Every allocation when the program starts, then some of them.
  for (long n = 1; n <= good.calls; n += n < kPlaces / 4 ? 1 : 1 + good.calls / kPlaces) {
    const Failing failing = ++runs % 2 == 0 ? Failing::kOne : Failing::kAllFromThere;
    std::remove(results.c_str());
    const Ended ended = RunFailing(arguments, folder, n, failing);
    ASSERT_TRUE(WIFEXITED(ended.status))
        << "allocation " << n << ": signal " << WTERMSIG(ended.status) << "\n"
        << ended.err;
    // A single case may fail for lack of memory, and says so.
    if (ended.status == good.status && ended.err.find("out of memory") == std::string::npos) {
      ExpectSame(scores ? ReadFile(results) : ended.out, expected);
      ASSERT_FALSE(HasFailure()) << "allocation " << n;
      continue;
    }
    ++failed;
    EXPECT_EQ(WEXITSTATUS(ended.status), 1) << "allocation " << n << ": " << ended.err;
    EXPECT_EQ(ended.err, "svmscore: out of memory\n") << "allocation " << n;
    EXPECT_EQ(folder.FileCount(), 3U) << "files of the program's own are left, allocation " << n;
  }
  EXPECT_GT(failed, 20);
}

using Words = std::vector<std::string>;
INSTANTIATE_TEST_SUITE_P(
    Commands, ProgramFaults,
    testing::Values(Words{"score", "examples/iris/model.pmml", "examples/iris/cases.csv"},
                    Words{"score", "examples/tumour/model.pmml", "examples/tumour/cases.csv"},
                    Words{"describe", "tests/process/data/mixed.pmml", "--json"},
                    Words{"describe", "tests/output/data/grades.pmml", "--dump"},
                    Words{"verify", "tests/output/data/chain.pmml"},
                    Words{"doctor", "examples/broken/model.pmml"},
                    Words{"doctor", "tests/process/data/mixed.pmml", "--json"}));

}  // namespace
}  // namespace svmscore_test
