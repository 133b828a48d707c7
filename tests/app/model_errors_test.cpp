// Documents that a translator refuses, or does not read as they are written, as users meet them.
#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fmt/format.h>

#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"
#include "tests/translator/failures.h"

namespace svmscore::app {
namespace {

using testing::HasSubstr;
using testing::Not;

TEST(ModelErrors, EndWithStatusThreeAndTheTranslatorsCode) {
  const TemporaryFolder folder;
  for (const svmscore_test::Failure& row : svmscore_test::kFailures) {
    const std::string model =
        folder.Write("model.pmml", svmscore_test::Edit(row.base(), row.pattern, row.replacement));
    const Ran ran = RunProgram({"score", model}, "x,color\n1,red\n");
    if (row.name == std::string("NoAlternate")) {
      // The second of two categories is known without being named.
      EXPECT_EQ(ran.status, 0) << ran.err;
      EXPECT_THAT(ran.err, HasSubstr("decides between both"));
      EXPECT_EQ(RunProgram({"score", model, "--strict-document"}).status, 3);
      continue;
    }
    EXPECT_EQ(ran.status, 3) << row.name;
    EXPECT_EQ(ran.out, "") << row.name;
    EXPECT_THAT(ran.err, HasSubstr(fmt::format("{}: [{}] ", model, row.code))) << row.name;
    EXPECT_THAT(ran.err, HasSubstr("(element ")) << row.name;
  }
}

TEST(ModelErrors, AnUnreadableDeviationIsRefused) {
  const TemporaryFolder folder;
  const std::string model = folder.Write(
      "model.pmml", svmscore_test::Edit(svmscore_test::Regression(), "0\\.35", "wide"));
  const Ran ran = RunProgram({"score", model}, "x,color\n1,red\n");
  EXPECT_EQ(ran.status, 3);
  EXPECT_THAT(ran.err, HasSubstr("[260153] \"wide\" is not a number (element StandardDeviation"));
}

TEST(Documents, AreToldByALineForEachKindAndRefusedWhenStrict) {
  const TemporaryFolder folder;
  std::string text = ReadFile(Data("line.pmml"));
  const auto add = [&text](const std::string& after, const std::string& added) {
    text.replace(text.find(after), after.size(), after + added);
  };
  add("<SupportVector vectorId=\"v\"/>",
      "<SupportVector vectorId=\"u\"/><SupportVector vectorId=\"w\"/>");
  add("<Coefficient value=\"2\"/>", "<Coefficient value=\"3\"/><Coefficient value=\"4,5\"/>");
  const std::string model = folder.Write("model.pmml", text);
  const Ran ran = RunProgram({"score", model}, "x\n1\n");
  EXPECT_EQ(ran.status, 0);
  EXPECT_EQ(ran.out, RunProgram({"score", Data("line.pmml")}, "x\n1\n").out);
  const std::string told =
      ": line 20, SupportVector: a support vector that names no vector is left "
      "out, together with its coefficient (2 places)\n";
  EXPECT_THAT(ran.err, HasSubstr("svmscore: " + model + told));
  EXPECT_THAT(ran.err, HasSubstr("svmscore: " + model + ": line 21, Coefficient: a threshold, "));
  EXPECT_EQ(std::count(ran.err.begin(), ran.err.end(), '\n'), 3) << ran.err;
  for (const char* command : {"score", "verify"}) {
    const Ran strict = RunProgram({command, model, "--strict-document"}, "x\n1\n");
    EXPECT_EQ(strict.status, 3) << command;
    EXPECT_THAT(strict.err, HasSubstr(": [260153] \"4,5\" is not an allowed value"));
  }
  const std::string described = RunProgram({"describe", model}).out;
  EXPECT_THAT(described, HasSubstr("How the document is read\n  line 21, Coefficient: a "));
  EXPECT_THAT(described, Not(HasSubstr("refuses this model")));
  EXPECT_THAT(RunProgram({"describe", model, "--strict-document"}).out,
              HasSubstr("score refuses this model: [260153] "));
}

}  // namespace
}  // namespace svmscore::app
