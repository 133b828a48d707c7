// A large input goes through in little memory.
#include <string>

#include <gtest/gtest.h>

#include "tests/app/run_program.h"

namespace svmscore::app {
namespace {

TEST(Memory, StaysBelowTwoHundredMegabytesForInputsOfAnySize) {
  const std::string row = "1.5,\"" + std::string(1000, 'x') + "\"";  // 300 MB in all
  const Ran ran =
      RunShell("(echo x,note; yes '" + row + "' | head -n 300000) | \"$SVMSCORE\" score " +
               Data("line.pmml") + " --threads 8 --passthrough note | wc -l");
  EXPECT_EQ(ran.out, "300001\n") << ran.err;
  EXPECT_LT(ran.peak_kib, 200L << 10U);
}

}  // namespace
}  // namespace svmscore::app
