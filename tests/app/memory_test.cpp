// Large inputs go through in little memory, and large documents in a time that they are worth.
#include <algorithm>
#include <string>

#include <sys/resource.h>

#include <gtest/gtest.h>

#include "tests/app/edited.h"
#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"

namespace svmscore::app {
namespace {

TEST(Memory, StaysBelowTwoHundredMegabytesForInputsOfAnySize) {
  const std::string row = "1.5,\"" + std::string(1000, 'x') + "\"";  // 300 MB in all
  const TemporaryFolder folder;
  const std::string explain =
      " explain --background " + folder.Write("background.csv", "x\n1\n2\n") + " ";
  for (const std::string& command : {std::string(" score --passthrough note "), explain}) {
    const Ran ran = RunShell("(echo x,note; yes '" + row + "' | head -n 300000) | \"$SVMSCORE\"" +
                             command + Data("line.pmml") + " --threads 8 | wc -l");
    EXPECT_EQ(ran.out, "300001\n") << ran.err;
    EXPECT_LT(ran.peak_kib, 200L << 10U);
  }
}

// Two million rows that fail: 200 MB for the log, and as much of reasons.
TEST(Memory, StaysBelowTwoHundredMegabytesForFailuresOfAnyNumber) {
  const Ran ran = RunShell("(echo x; yes q | head -n 2000000) | \"$SVMSCORE\" score " +
                           Data("line.pmml") + " --threads 8 --reasons --log /dev/null | wc -l");
  EXPECT_EQ(ran.out, "2000001\n") << ran.err;
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

// 1500 fields and 6000 records of one or two cells; and a field whose name is half a megabyte.
TEST(Memory, StaysBelowTwoHundredMegabytesForRecordsThatAreMostlyEmpty) {
  const TemporaryFolder folder;
  std::string outputs;
  std::string fields = "<VerificationField field='x'/>";
  for (int i = 0; i < 1500; ++i) {
    const std::string name = "o" + std::to_string(i);
    const std::string whole = i == 0 ? std::string(500000, 'o') : name;
    outputs += "<OutputField name='" + whole + "' feature='predictedValue'/>";
    fields += "<VerificationField field='" + whole + "' column='" + name + "'/>";
  }
  std::string records;
  for (int i = 0; i < 6000; ++i) {
    const std::string column = "o" + std::to_string(i < 3000 ? i % 1500 : 0);
    records += "<row><x>1</x><" + column + ">2</" + column + "></row>";
  }
  const std::string model = EditedFile(
      folder, Data("line.pmml"),
      {"</MiningSchema>", "</MiningSchema><Output>" + outputs + "</Output>",
       "</SupportVectorMachine>\n",
       "</SupportVectorMachine><ModelVerification><VerificationFields>" + fields +
           "</VerificationFields><InlineTable>" + records + "</InlineTable></ModelVerification>"});
  const Ran verified = RunProgram({"verify", model});
  EXPECT_EQ(std::count(verified.out.begin(), verified.out.end(), '\n'), 6001) << verified.err;
  EXPECT_EQ(verified.out.substr(verified.out.rfind('\n', verified.out.size() - 2)),
            "\n6000 cells compared, 6000 disagree\n");
  EXPECT_EQ(verified.out.substr(0, 16), "record 1: oooooo");
  const Ran examined = RunProgram({"doctor", model});
  EXPECT_EQ(examined.status, 1) << examined.err;
  for (const Ran* ran : {&verified, &examined}) EXPECT_LT(ran->peak_kib, 200L << 10U);
}

// 3000 fields that pass on what another one can be, which is 3000 values.
TEST(Memory, StaysBelowTwoHundredMegabytesForFieldsOfManyValues) {
  const TemporaryFolder folder;
  std::string values;
  std::string fields;
  for (int i = 0; i < 3000; ++i) {
    const std::string name = "d" + std::to_string(i);
    values += "<Value value='" + name + "'/>";
    fields += "<DerivedField name='" + name +
              "' optype='categorical' dataType='string'><FieldRef field='c' mapMissingTo='none'/>"
              "</DerivedField><DerivedField name='n" +
              name + "' optype='continuous' dataType='double'><NormDiscrete field='" + name +
              "' value='D7'/></DerivedField>";
  }
  const std::string model =
      EditedFile(folder, Data("line.pmml"),
                 {"numberOfFields='2'", "", "</DataDictionary>",
                  "<DataField name='c' optype='categorical' dataType='string'>" + values +
                      "</DataField></DataDictionary>",
                  "<MiningField name='x'/>", "<MiningField name='x'/><MiningField name='c'/>",
                  "</MiningSchema>",
                  "</MiningSchema><LocalTransformations>" + fields + "</LocalTransformations>"});
  const Ran ran = RunProgram({"doctor", model});
  EXPECT_NE(ran.out.find("\"D7\" is not a category of \"d0\", \"d7\" is"), std::string::npos)
      << ran.err;
  EXPECT_LT(ran.peak_kib, 200L << 10U);
}

// Processor time of the programs that have ended.
double SecondsOfChildren() {
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec) +
         1e-6 * static_cast<double>(usage.ru_utime.tv_usec);
}

// As many machines as categories: searching the ones for each of the others takes twenty times as
// long as reading them.
TEST(Time, OfDoctorIsNotThatOfCategoriesTimesMachines) {
  const TemporaryFolder folder;
  std::string categories;
  std::string machines;
  for (int i = 0; i < 40000; ++i) {
    const std::string name = "c" + std::to_string(i);
    categories += "<Value value='" + name + "'/>";
    machines += "<SupportVectorMachine targetCategory='" + name +
                "'><SupportVectors><SupportVector vectorId='v'/></SupportVectors><Coefficients>"
                "<Coefficient value='1'/></Coefficients></SupportVectorMachine>";
  }
  const std::string model =
      EditedFile(folder, Data("line.pmml"),
                 {"*<SupportVectorMachine>[^]*</SupportVectorMachine>", machines,
                  "name='y' optype='continuous' dataType='double'/>",
                  "name='y' optype='categorical' dataType='string'>" + categories + "</DataField>",
                  "'regression'", "'classification' classificationMethod='OneAgainstAll'"});
  // Processor time, beside that of a command that goes over the same document: how fast and how
  // busy the machine is plays no part.
  const auto seconds_of = [&model](const char* command) {
    const double before = SecondsOfChildren();
    const Ran ran = RunProgram({command, model});
    EXPECT_NE(ran.out.find("absoluteValue"), std::string::npos) << ran.err;
    return SecondsOfChildren() - before;
  };
  EXPECT_LT(seconds_of("doctor"), 6.0 * seconds_of("describe"));
}

}  // namespace
}  // namespace svmscore::app
