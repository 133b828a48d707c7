// What the program cannot use, or does not read as it is written: exit statuses, messages, and
// nothing half-written.
#include <algorithm>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fmt/format.h>

#include "host/text/printable.h"
#include "tests/app/edited.h"
#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"
#include "tests/translator/failures.h"

namespace svmscore::app {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string Repeated(const std::string& text, int count) {
  std::string repeated;
  while (count-- > 0) repeated += text;
  return repeated;
}

void ExpectPrintableLines(const std::string& text) {
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    EXPECT_EQ(line, Printable(line));
    EXPECT_LT(line.size(), 5000U);
  }
}

TEST(BadInput, BrokenCasesEndWithStatusFiveAndLeaveNoFile) {
  const std::string header = "width,height,colour\n";
  const std::string empty =
      "the input is empty; it needs at least a header line with the names of the columns";
  const std::string nul = "a NUL byte: the file is no UTF-8 text";
  const std::string cr = "; do the lines end with CR alone? They must end with LF or CRLF";
  const struct {
    std::string cases;
    std::string message;
  } rows[] = {
      {"", empty},
      {"\xEF\xBB\xBF", empty},
      {"colour,Width\n1,2\n",
       "did you mean \"width\" by \"Width\"? The header lacks \"width\", \"height\", which the "
       "model "
       "needs; it has \"colour\", \"Width\""},
      {"width,height,colour\r1,1,red\r",
       "line 1: a carriage return inside a cell that is not quoted" + cr},
      {"width,height,colour,note\r1,1,red,\r",
       "line 1: a carriage return inside a cell that is not quoted" + cr},
      {header + "1,1,red\r\n1,1,red\r1,1,red\r",
       "line 3: a carriage return inside a cell that is not quoted" + cr},
      {header + "1,1,\"red\"\r1,1,\"red\"\r",
       "line 2: text after the closing quotation mark of a cell" + cr},
      {header + "\r1,1,red\n", "line 2: a carriage return inside a cell that is not quoted" + cr},
      {"width,height,colour,width\n", "the header names the column \"width\" twice"},
      {header + "1,1,red\n1,1\n", "line 3: a row of 2 where the header has 3 cells"},
      {header + "\"1\n\",1,red\n1,1,red,\n",
       "line 4: a row of 4 where the header has 3 cells; the row ends with a delimiter"},
      {header + "1,1,\"red\n1,1,red\n", "line 2: a quoted cell that is never closed"},
      {header + "1,1,re\"d\"\n", "line 2: a quotation mark inside a cell that is not quoted"},
      {header + "1,1,\"red\n\" \n", "line 3: text after the closing quotation mark of a cell"},
      {header + std::string("1,\0,red\n", 8), "line 2: " + nul},
      {header + std::string("1,\"\n\0\",red\n", 11), "line 3: " + nul},
  };
  for (const auto& [cases, message] : rows) {
    const TemporaryFolder folder;
    const std::string path = folder.Write("cases.csv", cases);
    const Ran ran = RunProgram({"score", Data("three.pmml"), path, "-o", folder.Path("scores")});
    EXPECT_EQ(ran.status, 5) << message;
    EXPECT_EQ(ran.err, "svmscore: " + path + ": " + message + "\n");
    EXPECT_EQ(folder.FileCount(), 1U) << message;
  }
  EXPECT_THAT(RunProgram({"score", Data("three.pmml"), "--limit", "row-length=100"},
                         Repeated("1,1,red\r", 200))
                  .err,
              HasSubstr("line 1: do the lines end with CR alone?"));
}

TEST(BadInput, CasesThatCannotBeReadEndWithStatusFive) {
  const TemporaryFolder folder;
  const std::string none = folder.Path("none.csv");
  const Ran absent = RunProgram({"score", Data("three.pmml"), none});
  EXPECT_EQ(absent.status, 5);
  EXPECT_EQ(absent.err, "svmscore: cannot read " + none + ": No such file or directory\n");
  EXPECT_EQ(RunProgram({"score", Data("three.pmml"), folder.Path(".")}).status, 5);
  const Ran copied = RunProgram({"score", Data("line.pmml"), "--passthrough", "id"}, "x\n1\n");
  EXPECT_EQ(copied.status, 5);
  EXPECT_EQ(copied.err,
            "svmscore: standard input: the header lacks \"id\", which --passthrough names; it has "
            "\"x\"\n");
}

TEST(BadInput, WrongArgumentsEndWithStatusTwo) {
  const std::string model = Data("line.pmml");
  for (const Arguments& arguments :
       {Arguments{},
        Arguments{"scoore"},
        Arguments{"score"},
        Arguments{"describe"},
        Arguments{"doctor"},
        Arguments{"score", model, "--nothing"},
        Arguments{"score", model, "--threads", "0"},
        Arguments{"score", model, "--columns", "some"},
        Arguments{"score", model, "--missing-policy", "guess"},
        Arguments{"score", model, "--passthrough", "\"x"},
        Arguments{"score", model, "--format", "jsonl", "--passthrough", "status"},
        Arguments{"verify", model, "--expected", "x"},
        Arguments{"verify", model, "--input", "x"},
        Arguments{"verify", model, "--write", "x"},
        Arguments{"verify", model, "--tolerance", "-1"},
        Arguments{"verify", model, "--tolerance", "1,5"},
        Arguments{"verify", model, "--tolerance", "1e999"},
        Arguments{"describe", ""},
        Arguments{"score", model, ""},
        Arguments{"score", model, "-o", ""},
        Arguments{"score", model, "--log", ""},
        Arguments{"score", model, "--plugin", ""},
        Arguments{"verify", model, "--write", ""},
        Arguments{"verify", model, "--input", "", "--expected", ""},
        Arguments{"verify", model, "--input", "-", "--expected", "-"},
        Arguments{"doctor", model, "--input", "-", "--expected", "-"},
        Arguments{"verify", model, "--input", "x", "--expected", "y", "--write", "z"},
        Arguments{"doctor", model, "--input", "x"}}) {
    const Ran ran = RunProgram(arguments, "x,status\n1,2\n");
    EXPECT_EQ(ran.status, 2) << testing::PrintToString(arguments) << ran.err;
    EXPECT_EQ(ran.out, "");
    EXPECT_THAT(ran.err, StartsWith("svmscore: "));
  }
  EXPECT_THAT(RunProgram({"scoore"}).err,
              StartsWith("svmscore: there is no command \"scoore\"; the commands are score, "));
  EXPECT_EQ(RunProgram({"verify", model, "--write", ""}).err,
            "svmscore: --write: the name of a file is empty\n"
            "Usage: svmscore verify [OPTIONS] MODEL\n"
            "Run svmscore verify --help for what it takes.\n");
  EXPECT_THAT(RunProgram({"score", model, "--delimeter", ";"}).err,
              HasSubstr("--delimeter\nUsage: svmscore score [OPTIONS] MODEL [CASES]\nRun svmscore "
                        "score --help for what it takes.\n"));
  EXPECT_THAT(RunProgram({"--nothing"}).err, HasSubstr("\nRun svmscore --help for what it takes."));
}

TEST(BadModel, EndWithStatusThreeAndTheTranslatorsCode) {
  const TemporaryFolder folder;
  std::set<int> codes;  // each once
  for (const svmscore_test::Failure& row : svmscore_test::kFailures) {
    if (!codes.insert(row.code).second && row.name != std::string("NoAlternate")) continue;
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

TEST(BadModel, TellTheModelTheCodeThePlaceAndWhatToDo) {
  const TemporaryFolder folder;
  const std::string model =
      folder.Write("model.pmml", Edited(ReadFile(Data("line.pmml")), {"<LinearKernelType/>", ""}));
  for (const char* command : {"score", "describe"}) {
    EXPECT_EQ(RunProgram({command, model}).err,
              "svmscore: " + model +
                  ": [260115] the model has no kernel (element SupportVectorMachineModel, line 8). "
                  "Add LinearKernelType, PolynomialKernelType, RadialBasisKernelType or "
                  "SigmoidKernelType, or export the model again.\n");
  }
  EXPECT_THAT(RunProgram({"score", folder.Path("none.pmml")}).err, HasSubstr("[260301] "));
  EXPECT_EQ(RunProgram({"score", Data("line.pmml"), "--plugin", model}).status, 3);
}

// Texts of a document that are told neither end a line nor steer a terminal, nor go on for pages.
// Wherever the parser was when it met the byte.
TEST(BadModel, AByteThatIsNotUtf8IsNamedByItsLine) {
  const TemporaryFolder folder;
  const std::string text = ReadFile(Data("three.pmml"));
  const std::size_t end = text.find("</PMML>");
  for (const char* lines : {"", "<!--\n\xC3\xA9-->", "<!-- \n\n -->"}) {
    std::string long_text = text;
    const std::string filling = Repeated(lines, 20000) + "<!--\n\xE9 -->";
    long_text.insert(end, filling);
    const auto line =
        1 + std::count(long_text.begin(),
                       long_text.begin() + static_cast<std::ptrdiff_t>(end + filling.find("\xE9 ")),
                       '\n');
    const std::string model = folder.Write("model.pmml", long_text);
    const Ran ran = RunProgram({"describe", model});
    EXPECT_EQ(ran.status, 3);
    EXPECT_THAT(ran.err, HasSubstr("it is not in UTF-8: "));
    EXPECT_THAT(ran.err, HasSubstr(fmt::format("(line {}). Save the document in UTF-8", line)));
    EXPECT_THAT(RunShell("cat " + model + " | \"$SVMSCORE\" describe /dev/stdin").err,
                HasSubstr(fmt::format("(line {})", line)));
  }
}

// The translator's codes name one element for several faults.
TEST(BadModel, ARefusalSaysWhatIsAtFault) {
  const std::string line = ReadFile(Data("line.pmml"));
  const std::string three = ReadFile(Data("three.pmml"));
  const struct {
    std::string document;
    Edits edits;
    std::string told;
  } rows[] = {
      {line,
       {"<LinearKernelType/>", "<RBFKernelType/>"},
       "[260115] \"RBFKernelType\" is no kernel that is computed (element RBFKernelType, line 13); "
       "did you mean \"RadialBasisKernelType\"? Write "},
      {line,
       {"<LinearKernelType/>", "<radialBasisKernel/>"},
       "did you mean \"RadialBasisKernelType\"? Write "},
      {line,
       {"<LinearKernelType/>", "<LaplaceKernelType/>"},
       "(element LaplaceKernelType, line 13). "},
      {line,
       {"*SupportVectorMachineModel", "supportVectorMachineModel"},
       "line 8); did you mean \"SupportVectorMachineModel\"? "},
      {line,
       {"<SupportVectorMachineModel ", "<MiningModel><SupportVectorMachineModel ",
        "</SupportVectorMachineModel>", "</SupportVectorMachineModel></MiningModel>"},
       "is inside the \"MiningModel\", and"},
      {line, {"*SupportVectorMachineModel", "Nothing"}, "the document has no model (element PMML"},
      {line,
       {"*SupportVectorMachineModel", "body", "*PMML", "html"},
       "the document is a page of HTML (element html, line 2). Save the document itself"},
      {line, {"*SupportVectorMachineModel", "TreeModel"}, "a model of another kind, \"TreeModel\""},
      {line,
       {"</SupportVectorMachine>", "</SupportVectorMachine><SupportVectorMachine/>"},
       "a regression has 1 machine, and the model has 2"},
      {line,
       {"regression", "classification"},
       "the function is classification, and the target \"y\" is continuous"},
      {three,
       {"classification", "regression"},
       "the function is regression, and the target \"kind\" is not continuous"},
      {three,
       {"<Value value='b'/>", ""},
       "decide for the category \"b\", which the target \"kind\" does not list (element DataField, "
       "line 9). "},
      {three,
       {"*<SupportVectorMachine targetCategory='a' "
        "alternateTargetCategory='b'>[^]*?</Su[a-zA-Z]*Machine>",
        ""},
       "no machine decides between \"a\" and \"b\": the target \"kind\" lists 3 values, for which "
       "one against one needs 3 machines, and the model has 2 (element SupportV"},
      {three,
       {"</SupportVectorMachineModel>",
        "<SupportVectorMachine targetCategory='a' alternateTargetCategory='b'><SupportVectors>"
        "<SupportVector vectorId='w'/></SupportVectors><Coefficients><Coefficient value='1'/>"
        "</Coefficients></SupportVectorMachine></SupportVectorMachineModel>"},
       "needs 3 machines, and the model has 4"},
      {three, {"<Value value='a'/><Value value='b'/>", ""}, "decide for the category \"a\", which"},
      {three,
       {"usageType='target'", "usageType='supplementary'"},
       "no field is the target; it may be \"kind\", which has the machines' categories (element "
       "MiningField, line 17). Write usageType=\"target\""},
      {three,
       {"usageType='target'", "usageType='traget'"},
       "\"traget\" of the MiningField \"kind\" is no usageType (element MiningField, line 17); did "
       "you mean \"target\"? "},
      {three,
       {"<MiningField name='kind' usageType='target'/>", ""},
       "and no MiningField (element M"},
      {three,
       {"<MiningField name='kind'", "<MiningField name='kinds'"},
       "the data dictionary does not declare \"kinds\" (element MiningField, line 17); did you "
       "mean "
       "\"kind\"? "},
  };
  for (const auto& [document, edits, told] : rows) {
    const TemporaryFolder folder;
    const std::string model = folder.Write("model.pmml", Edited(document, edits));
    const Ran ran = RunProgram({"score", model, "--as-is"}, "x\n");
    EXPECT_EQ(ran.status, 3);
    EXPECT_THAT(ran.err, HasSubstr(told));
  }
}

TEST(BadModel, NamesThatAreNearlyRightAreSuggested) {
  const struct {
    Edits edits;
    std::string remark;
  } rows[] = {
      {{"<FieldRef field='height'", "<FieldRef field='heigth'"}, "; did you mean \"height\"?"},
      {{"<FieldRef field='height'", "<FieldRef field='z_height'"},
       "; the DerivedField that computes it from \"height\" may be lost. "},
      {{"<FieldRef field='height'", "<FieldRef field='widht'"}, "(element FieldRef, line 23). "},
      {{"<MiningField name='height'", "<MiningField name='Height'"}, "; did you mean \"height\"?"},
      {{"usageType='active'", "usageType='actve'"}, "; did you mean \"active\"?"},
      {{"*value='b'", "value='bird'", "*Category='b'", "Category='brid'"},
       "; did you mean \"bird\"?"},
      {{"</MiningSchema>",
        "</MiningSchema><LocalTransformations><DerivedField name='d' optype='continuous' "
        "dataType='double'><FieldRef field='heigth'/></DerivedField></LocalTransformations>"},
       "; did you mean \"height\"?"},
      {{"</MiningSchema>", "</MiningSchema><Targets><Target field='Kind'/></Targets>"},
       "; did you mean \"kind\"?"},
      {{"*value='b'", "value='bird'", "*Category='b'", "Category='bird'", "</MiningSchema>",
        "</MiningSchema><Output><OutputField name='p' feature='probability' value='brid'/>"
        "</Output><Targets><Target><TargetValue value='Bird'/></Target></Targets>"},
       "; did you mean \"bird\"?"},
  };
  for (const auto& [edits, remark] : rows) {
    const TemporaryFolder folder;
    const std::string model = EditedFile(folder, Data("three.pmml"), edits);
    for (const char* mode : {"--columns=auto", "--strict-document"}) {
      EXPECT_THAT(RunProgram({"score", model, mode}, "width,height,colour\n").err,
                  HasSubstr(remark))
          << mode;
    }
  }
}

TEST(BadModel, InsideAnotherIsToldOnce) {
  const TemporaryFolder folder;
  const std::string model =
      EditedFile(folder, Data("line.pmml"),
                 {"<SupportVectorMachineModel ", "<MiningModel><SupportVectorMachineModel ",
                  "</SupportVectorMachineModel>", "</SupportVectorMachineModel></MiningModel>"});
  EXPECT_THAT(RunProgram({"score", model}).err,
              HasSubstr("of its own is scored (element MiningModel, line 8). Export"));
}

TEST(BadModel, AFolderIsNamedAsOne) {
  const TemporaryFolder folder;
  for (const char* command : {"score", "describe", "doctor", "verify"}) {
    EXPECT_THAT(RunProgram({command, folder.Path("")}).err,
                HasSubstr(": Is a directory. Name a file in it."));
  }
}

TEST(BadModel, ItsTextsStayWithinTheirLines) {
  const std::string field = "<FieldRef field='x";
  const std::string version = "xml version='1.0'";
  const std::string version_1_1 = "xml version='1.1'";
  const std::string name(300000, 'a');
  const struct {
    Edits edits;
    std::string told;
  } rows[] = {
      {{field, "<FieldRef field='se&#10;svmscore: all good"}, "se\\nsvmscore: all good"},
      {{field, "<FieldRef field='\xC2\x9B;2J&#x202E;\xC3\xA9"}, "\\u009B;2J\\u202E\xC3\xA9"},
      {{version, version_1_1, field, "<FieldRef field='&#x1B;[31m"}, "\\x1B[31m"},
      {{field, "<FieldRef field='\xC3\x02"}, "invalid byte '\\x02'"},
      {{field, "<FieldRef field='" + name}, "aa\u2026aa"},
      {{field, "<" + name + " field='x"}, "aa\u2026aa"},
  };
  for (const auto& [edits, told] : rows) {
    const TemporaryFolder folder;
    const std::string model = EditedFile(folder, Data("line.pmml"), edits);
    for (const char* command : {"score", "describe", "verify", "doctor"}) {
      const Ran ran = RunProgram({command, model}, "x\n1\n");
      EXPECT_THAT(ran.out + ran.err, HasSubstr(told)) << command;
      ExpectPrintableLines(ran.out);
      ExpectPrintableLines(ran.err);
    }
  }
}

TEST(BadModel, NamesStayWithinTheLinesOfReports) {
  const TemporaryFolder folder;
  const std::string name = "x&#10;0 cells&#x9B;";
  const std::string model = EditedFile(folder, Data("line.pmml"),
                                       {"*='x'", "='" + name + "'", "*='y'", "='y" + name + "'"});
  const std::string cases = folder.Write("cases.csv", "\"x\n0 cells\xC2\x9B\"\n1\n");
  const std::string expected = folder.Write("expected.csv", "\"z\n\x1B\"\n1\n");
  for (const auto& [command, lines] : {std::pair{"describe", 25}, {"verify", 4}, {"doctor", 8}}) {
    std::vector<std::string> arguments = {command, model};
    if (lines != 25) arguments.insert(arguments.end(), {"--input", cases, "--expected", expected});
    if (lines == 25) arguments.push_back("--dump");
    const Ran ran = RunProgram(arguments);
    EXPECT_THAT(ran.out, HasSubstr("x\\n0 cells\\u009B")) << ran.err;
    EXPECT_EQ(std::count(ran.out.begin(), ran.out.end(), '\n'), lines) << ran.out;
    ExpectPrintableLines(ran.out);
  }
}

TEST(BadModel, WhatIsReadInAnotherWayIsALineForEachKindAndRefusedWhenStrict) {
  const TemporaryFolder folder;
  const std::string vector = "<SupportVector vectorId='v'/>";
  const std::string coefficient = "<Coefficient value='2'/>";
  const std::string model =
      EditedFile(folder, Data("line.pmml"),
                 {vector, vector + "<SupportVector vectorId='u'/><SupportVector vectorId='w'/>",
                  "numberOfSupportVectors='1'", "", "numberOfCoefficients='1'", "", coefficient,
                  coefficient + "<Coefficient value='3'/><Coefficient value='4,5'/>"});
  const Ran ran = RunProgram({"score", model}, "x\n1\n");
  EXPECT_EQ(ran.status, 0);
  EXPECT_EQ(ran.out, RunProgram({"score", Data("line.pmml")}, "x\n1\n").out);
  const std::string told =
      ": error: line 20, SupportVector: a support vector that names no vector is left "
      "out, together with its coefficient: the vectorId \"u\", which no VectorInstance with values "
      "has, in element SupportVector (the first of 2 places); the decision value lacks the term\n";
  EXPECT_THAT(ran.err, HasSubstr("svmscore: " + model + told));
  EXPECT_THAT(ran.err, HasSubstr("svmscore: " + model + ": error: line 21, Coefficient: a coeff"));
  EXPECT_THAT(ran.err, HasSubstr(": scores may be wrong: svmscore doctor says what to do, "));
  EXPECT_EQ(std::count(ran.err.begin(), ran.err.end(), '\n'), 4) << ran.err;
  for (const char* command : {"score", "verify"}) {
    const Ran strict = RunProgram({command, model, "--strict-document"}, "x\n1\n");
    EXPECT_EQ(strict.status, 3) << command;
    EXPECT_THAT(strict.err, HasSubstr(": [260153] \"4,5\" is not an allowed value"));
  }
  const std::string described = RunProgram({"describe", model}).out;
  EXPECT_THAT(described, HasSubstr("What is lost or wrong\n  error: line 21, Coefficient: a "));
  EXPECT_THAT(described, Not(HasSubstr("refuses this model")));
  EXPECT_THAT(RunProgram({"describe", model, "--strict-document"}).out,
              HasSubstr("score refuses this model: [260153] "));
}

TEST(BadPlugin, IsNamedWithTheReason) {
  const Ran ran = RunProgram({"score", Data("line.pmml"), "--plugin", "/no/plugin.so"}, "x\n1\n");
  EXPECT_EQ(ran.status, 3);
  EXPECT_THAT(ran.err, HasSubstr("[260305] cannot load the plug-in /no/plugin.so: "));
  EXPECT_THAT(ran.err, HasSubstr("SVMSCORE_PLUGIN"));
}

}  // namespace
}  // namespace svmscore::app
