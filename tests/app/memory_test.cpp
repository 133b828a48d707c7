// A large input goes through in little memory.
#include <string>

#include <gtest/gtest.h>

#include "tests/app/edited.h"
#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"

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

// Rows of two bytes become rows of ten thousand: 400 MB that must not wait for each other.
TEST(Memory, StaysBelowTwoHundredMegabytesForOutputsOfAnySize) {
  const TemporaryFolder folder;
  const std::string field =
      "<Output><OutputField name='long' feature='transformedValue' dataType='string' "
      "optype='categorical'><Constant>" +
      std::string(10000, 'c') + "</Constant></OutputField></Output>";
  const std::string model =
      EditedFile(folder, Data("line.pmml"), {"</MiningSchema>", "</MiningSchema>" + field});
  const Ran ran = RunShell("(echo x; yes 1 | head -n 40000) | \"$SVMSCORE\" score " + model +
                           " --threads 8 | wc -l");
  EXPECT_EQ(ran.out, "40001\n") << ran.err;
  EXPECT_LT(ran.peak_kib, 200L << 10U);
}

}  // namespace
}  // namespace svmscore::app
