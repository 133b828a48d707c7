// A large input goes through in little memory.
#include <string>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"

namespace svmscore::app {
namespace {

constexpr long kLimitKib = 200L << 10U;
constexpr std::size_t kInputBytes = 300U << 20U;

TEST(Memory, StaysBelowTwoHundredMegabytesForInputsOfAnySize) {
  const TemporaryFolder folder;
  const std::string cases = folder.Path("cases");
  ASSERT_EQ(mkfifo(cases.c_str(), 0600), 0);
  const pid_t program =
      StartProgram({"score", Data("line.pmml"), cases, "--threads", "8", "--passthrough", "note"},
                   "/dev/null", "/dev/null", folder.Path("err"));
  const int feed = open(cases.c_str(), O_WRONLY);
  std::string rows;
  while (rows.size() < (1U << 20U)) rows += "1.5,\"" + std::string(1000, 'x') + "\"\n";
  ASSERT_EQ(write(feed, "x,note\n", 7), 7);
  for (std::size_t sent = 0; sent < kInputBytes; sent += rows.size()) {
    std::size_t done = 0;
    while (done < rows.size()) {
      const ssize_t count = write(feed, rows.data() + done, rows.size() - done);
      ASSERT_GT(count, 0);
      done += static_cast<std::size_t>(count);
    }
  }
  close(feed);
  const Ran ran = WaitFor(program);
  EXPECT_EQ(ran.status, 0) << ReadFile(folder.Path("err"));
  EXPECT_LT(ran.peak_kib, kLimitKib);
}

}  // namespace
}  // namespace svmscore::app
