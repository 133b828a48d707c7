// What svmscore score tells of cases that fail.
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/edited.h"
#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"

namespace svmscore::app {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

// What stands in the column of reasons for a case of one row, without the quoting of CSV.
std::string ReasonOf(const std::string& model, const std::string& cases,
                     const std::string& policy = "") {
  std::vector<std::string> arguments = {"score",     model,       "--prediction-only",
                                        "--reasons", "--columns", "raw"};
  if (!policy.empty()) arguments.insert(arguments.end(), {"--missing-policy", policy});
  const std::string out = RunProgram(arguments, cases).out;
  const std::string header = "prediction,status,reason\n,900";
  if (!out.starts_with(header)) return "no failed case: " + out;
  std::string reason = out.substr(header.size() + 3);
  if (reason.starts_with('"')) reason = reason.substr(1, reason.size() - 3) + '\n';
  for (std::size_t at = 0; at = reason.find("\"\"", at), at != std::string::npos; ++at) {
    reason.erase(at, 1);
  }
  return reason.substr(0, reason.size() - 1);
}

// Documents made of line.pmml: an input x of another declaration or treatment.
std::string WithInput(const TemporaryFolder& folder, const std::string& field,
                      const std::string& mining, const std::string& transformations = "",
                      const std::string& vector_field = "<FieldRef field='x'/>") {
  return EditedFile(folder, Data("line.pmml"),
                    {"<DataField name='x' optype='continuous' dataType='double'/>",
                     "<DataField name='x' " + field + "</DataField>", "<MiningField name='x'/>",
                     "<MiningField name='x' " + mining + "/>", "<FieldRef field='x'/>",
                     vector_field, "<LinearKernelType/>", transformations + "<LinearKernelType/>"});
}

TEST(Reasons, NameTheTextAndWhatIsWrongWithIt) {
  const std::string number = "optype='continuous' dataType='double'>";
  const std::string category = "optype='categorical' dataType='string'><Value value='red'/>";
  const std::string predictor = "<CategoricalPredictor name='x' value='red' coefficient='1'/>";
  const std::string interval = number + "<Interval closure='openClosed' rightMargin='9'/>";
  std::string many = category;
  for (const char* name : {"blue", "green", "grey", "olive", "teal", "pink"}) {
    many += "<Value value='" + std::string(name) + "'/>";
  }
  const struct {
    std::string field, mining, cell, reason, policy, vector_field = "<FieldRef field='x'/>";
  } rows[] = {
      {number, "", "5%", "x: \"5%\" is not a number", ""},
      {number, "", "\"a\x1B\n\"", "x: \"a\\x1B\\n\" is not a number", ""},
      {number, "", std::string(30, 'y') + std::string(70, 'z'),
       "x: \"" + std::string(30, 'y') + "zzzzzz\u2026zzzzzzzzzzzz\" is not a number", ""},
      {number, "", "-INF", "x: \"-INF\" is not a finite number", ""},
      {"optype='continuous' dataType='integer'>", "", "1.5", "x: \"1.5\" is not a whole number",
       ""},
      {interval, "", "10", "x: \"10\" is outside (-INF, 9]", ""},
      {number + "<Value value='7' property='invalid'/>", "", "7",
       "x: \"7\" is a value that the model declares invalid", ""},
      {number, "", "NA", "x: \"NA\" means missing, and nothing replaces it", ""},
      {number, "", "\"\"", "x: no value is given, and nothing replaces it", ""},
      {number + "<Value value='-9' property='missing'/>", "", "-9",
       "x: \"-9\" means missing, and nothing replaces it", ""},
      {number, "missingValueReplacement='1'", "NA",
       "x: \"NA\" means missing, and the missing-value policy does not replace it", "fail"},
      {number, "missingValueTreatment='returnInvalid'", "NA",
       "x: \"NA\" means missing, which the model does not allow", ""},
      {number, "invalidValueTreatment='asMissing'", "q",
       "x: \"q\" is not a number, so it counts as missing, and nothing replaces it", ""},
      {number, "outliers='asMissingValues' lowValue='0' highValue='5'", "6.0",
       "x: \"6.0\" is beyond 0 to 5 and counts as missing, and nothing replaces it", ""},
      {category, "", "tomato", "x: \"tomato\" is not one of its 1 category: \"red\"", "",
       predictor},
      {category, "", "Red", "x: \"Red\" is not one of its 1 category; did you mean \"red\"?", "",
       predictor},
      {many, "", "olivr", "x: \"olivr\" is not one of its 7 categories; did you mean \"olive\"?",
       "", predictor},
      {many, "", "violet",
       "x: \"violet\" is not one of its 7 categories: \"red\", \"blue\", \"green\", \"grey\", "
       "\"olive\", ...",
       "", predictor},
  };
  for (const auto& [field, mining, cell, reason, policy, vector_field] : rows) {
    const TemporaryFolder folder;
    const std::string model = WithInput(folder, field, mining, "", vector_field);
    EXPECT_EQ(ReasonOf(model, "x,z\n" + cell + ",\n", policy), reason);
  }
}

TEST(Reasons, NameTheDerivedFieldDecisionOrOutputField) {
  const std::string number = "optype='continuous' dataType='double'>";
  const auto derived = [](const std::string& name, const std::string& expression) {
    return "<DerivedField name='" + name + "' optype='continuous' dataType='double'>" + expression +
           "</DerivedField>";
  };
  const std::string chain =
      "<LocalTransformations>" +
      derived("last",
              "<Apply function='+'><FieldRef field='root'/><Constant>1</Constant></Apply>") +
      derived("root", "<Apply function='sqrt'><FieldRef field='x'/></Apply>") +
      "</LocalTransformations>";
  const std::string output =
      "<Output><OutputField name='o' feature='transformedValue'><Apply function='ln'><FieldRef "
      "field='x'/></Apply></OutputField></Output>";
  const struct {
    std::string transformations, vector_field, cell, reason;
  } rows[] = {
      {chain, "<FieldRef field='last'/>", "-4",
       "last: the derived field has no valid value, for \"root\" has none, computed from x \"-4\""},
      {chain, "<FieldRef field='root'/>", "-4",
       "root: the derived field has no valid value, computed from x \"-4\""},
      {chain, "<FieldRef field='last'/>", "NA",
       "x: \"NA\" means missing, and the derived field \"last\" needs a value"},
      {"", "<FieldRef field='x'/>", "1e308",
       "decision: the decision value is INF, not a finite number"},
  };
  for (const auto& [transformations, vector_field, cell, reason] : rows) {
    const TemporaryFolder folder;
    EXPECT_EQ(ReasonOf(WithInput(folder, number, "", transformations, vector_field),
                       "x,z\n" + cell + ",\n"),
              reason);
  }
  const TemporaryFolder folder;
  EXPECT_EQ(ReasonOf(EditedFile(folder, Data("line.pmml"),
                                {"</MiningSchema>",
                                 "</MiningSchema><Targets><Target rescaleFactor='1e308'/>"
                                 "</Targets>"}),
                     "x,z\n9,\n"),
            "y: the predicted value is not finite, or cannot be one of the target's type");
  const std::string two = EditedFile(folder, Data("two.pmml"), {"A='-1'", "A='INF'"});
  EXPECT_THAT(RunProgram({"score", two, "--reasons"}, "x\n0\n").out,
              HasSubstr(",,,,90027,y: the probabilities are not finite numbers\n"));
  EXPECT_EQ(
      RunProgram({"score", WithInput(folder, number, "", output), "--reasons"}, "x\n-1\n").out,
      "o,status,reason\n,90027,o: the output field has no valid value\n");
}

TEST(Reasons, SayWhatTheTextLooksLike) {
  const struct {
    std::string cell, remedy;
  } rows[] = {
      {"5 %", "(write it without the percent sign)"},
      {"\"3,14\"", "(write it with a decimal point, or give --decimal-comma)"},
      {"\"-,5e3\"", "(write it with a decimal point, or give --decimal-comma)"},
      {"'1", "(write it without the apostrophe)"},
      {"\"1,234,567.8\"", "(write it without separators of thousands)"},
      {"1\u202F234", "(write it without separators of thousands)"},
      {"\"1.234,5\"", "(write it without separators of thousands)"},
      {"\"1,234\"",
       "(write it without a separator of thousands, or with a decimal point, or give "
       "--decimal-comma)"},
      {"$5.00", "(write the number alone)"},
      {"5 kg", "(write the number alone)"},
      {"None", "(leave a missing value empty, or give --missing-token None)"},
      {"NaN", "(leave a missing value empty, or give --missing-token NaN)"},
      {" null", "(leave a missing value empty, or give --missing-token with this text)"},
      {".", "(leave a missing value empty, or give --missing-token with this text)"},
      {"\\N", "(leave a missing value empty, or give --missing-token with this text)"},
      {"five", "is not a number\n"},
      {"12,34,5", "is not a number\n"},
      {"%", "is not a number\n"},
      {"2024-01-31", "has a spreadsheet made a date of the number?"},
      {"5-6-May", "has a spreadsheet made a date of the number?"},
      {"Jun 12", "has a spreadsheet made a date of the number?"},
      {"5. Mai", "has a spreadsheet made a date of the number?"},
      {"TRUE", "as a rule 1 for true and 0 for false)"},
      {"#DIV/0!", "a formula of the spreadsheet fails; "},
      {"5-6", "is not a number\n"},
      {"5-mm", "(write the number alone)"},
      {"\u22121.5", "(its minus sign is no hyphen but another character, such as U+2212; write -)"},
      {"1\u00A02",
       "\"1\\u00A02\" is not a number (it holds invisible characters, shown as \\uXXXX here; "},
      {"\u200B7", "\"\\u200B7\" is not a number (it holds invisible"},
      {"1\xA0", "\"1\\xA0\" is not a number (the table is not in UTF-8 but"},
      {std::string(1000, '1') + "%", "is not a number\n"},
  };
  for (const auto& [cell, remedy] : rows) {
    const bool quoted = cell.find(',') == std::string::npos || cell.starts_with('"');
    const std::string text = quoted ? cell : '"' + cell + '"';
    EXPECT_THAT(RunProgram({"score", Data("line.pmml")}, "x\n" + text + "\n").err,
                HasSubstr(remedy));
  }
  const TemporaryFolder folder;
  const std::string whole = WithInput(folder, "optype='continuous' dataType='integer'>", "");
  EXPECT_THAT(RunProgram({"score", whole}, "x\n1.5\n").err, HasSubstr("is not a whole number\n"));
}

TEST(Reasons, SayWhatACategoryLooksLike) {
  const TemporaryFolder folder;
  const std::string model = EditedFile(folder, Data("three.pmml"), {"*'red'", "'1'"});
  const struct {
    std::string cell, told;
  } rows[] = {
      {"1.0", "\"1.0\" is not one of its 2 categories; did you mean \"1\"?\n"},
      {" 1", "(write it without the blanks around it)"},
      {"1\u00A0",
       "\"1\\u00A0\" is not one of its 2 categories; did you mean \"1\"? (it holds invisible"},
      {"gr\xFCn", "save it in UTF-8, or convert it: iconv -f WINDOWS-1252 -t UTF-8)\n"},
  };
  for (const auto& [cell, told] : rows) {
    EXPECT_THAT(RunProgram({"score", model}, "width,height,colour\n1,1," + cell + "\n").err,
                HasSubstr(told));
  }
}

// The rows that follow one of another order would be scored with exchanged columns.
TEST(Reasons, TellAHeaderFromAnother) {
  const struct {
    std::string row, told;
  } rows[] = {{"width,height,colour", "row 1: it repeats the header\n"},
              {"height,width,colour", "row 1: it is a header of another order; "},
              {"colour,size,width", "row 1: it is a header of another order; "},
              {"width,1,red", "row 1, width: \"width\" is not a number\n"}};
  for (const auto& [row, told] : rows) {
    EXPECT_THAT(RunProgram({"score", Data("three.pmml")}, "width,height,colour\n" + row + "\n").err,
                HasSubstr(told));
  }
}

// Rows are those of cases; an editor shows lines.
TEST(Reasons, NameTheLineWhereItIsNotTheOneAfterTheRowsNumber) {
  const Ran ran = RunProgram({"score", Data("three.pmml"), "--prediction-only", "--reasons"},
                             "width,height,colour\nq,1,red\n\n1,\"1\n\",red\n,,\n");
  EXPECT_THAT(ran.err, StartsWith("svmscore: row 1, width: \"q\" is not a number\n"));
  EXPECT_THAT(ran.err, HasSubstr("svmscore: row 3, line 6: every input is empty\n"));
  EXPECT_THAT(ran.out, HasSubstr(",90029,every input is empty\n"));
  EXPECT_THAT(RunProgram({"score", Data("line.pmml")}, "x\n1\n").err,
              StartsWith("svmscore: 1 case, 1 scored, "));
}

std::string ManyFailures(int count) {
  const std::string rows[] = {"1,1,red\n", "5%,1,red\n", "1,2,Red\n", "1,,red\n", "7%,x,red\n"};
  std::string text = "width,height,colour\n";
  for (int i = 0; i < count; ++i) text += rows[i % 5];
  return text + "width,height,colour\n";
}

TEST(Reasons, AreListedAndCountedAfterTheRunWhateverTheThreads) {
  const std::string cases = ManyFailures(200000);
  for (const char* threads : {"1", "8"}) {
    const Ran ran =
        RunProgram({"score", Data("three.pmml"), "-o", "/dev/null", "--threads", threads}, cases);
    EXPECT_THAT(
        ran.err,
        StartsWith("svmscore: row 2, width: \"5%\" is not a number (write it without the percent "
                   "sign)\n"
                   "svmscore: row 3, colour: \"Red\" is not one of its 2 categories; did you mean "
                   "\"red\"?\n"
                   "svmscore: row 4, height: no value is given, and nothing replaces it\n"
                   "svmscore: row 5, width: \"7%\" is not a number (write it without the percent "
                   "sign)\n"
                   "svmscore: row 5, height: \"x\" is not a number\n"
                   "svmscore: row 7, width"));
    EXPECT_THAT(ran.err, HasSubstr("\nsvmscore: row 10, height: \"x\" is not a number\n"
                                   "svmscore: 200001 failures in all, by column and reason:\n"
                                   "svmscore:    80000  width: not a number (a percent sign)\n"
                                   "svmscore:    40000  colour: not one of its categories\n"
                                   "svmscore:    40000  height: no value given\n"
                                   "svmscore:    40000  height: not a number\n"
                                   "svmscore:        1  the header again\n"
                                   "svmscore: 200001 cases, 40000 scored, 40000 missing, "));
    EXPECT_EQ(ran.status, 0);
  }
}

// In the output they come last, in the log with their rows; a broken row does not hide them.
TEST(Reasons, AreInTheLastColumnAndInTheLog) {
  const TemporaryFolder folder;
  const std::string cases = "x\n1\nq\nx\n";
  const std::string log = folder.Path("log");
  const std::vector<std::string> arguments = {"score", Data("line.pmml"), "--prediction-only",
                                              "--reasons"};
  EXPECT_EQ(RunProgram(arguments, cases).out,
            "prediction,status,reason\n2.1,0,\n,90027,\"x: \"\"q\"\" is not a number\"\n"
            ",90027,it repeats the header\n");
  std::vector<std::string> lines = arguments;
  lines.insert(lines.end(), {"--format", "jsonl", "--log", log});
  EXPECT_THAT(RunProgram(lines, cases).out,
              StartsWith("{\"prediction\":2.1,\"status\":0,\"reason\":null}\n{\"prediction\":null,"
                         "\"status\":90027,\"reason\":\"x: \\\"q\\\" is not a number\"}\n"));
  EXPECT_THAT(ReadFile(log), HasSubstr("svmscore log: row 2, x: \"q\" is not a number\n"
                                       "svmscore log: row 3: it repeats the header\n"));
  const Ran broken = RunProgram(arguments, cases + "1,2\n");
  EXPECT_EQ(broken.status, 5);
  EXPECT_THAT(broken.err,
              StartsWith("svmscore: row 2, x: \"q\" is not a number\nsvmscore: row 3: "));
}

TEST(Reasons, ExitStatusFourMeansThatNoCaseCouldBeScored) {
  const struct {
    std::string cases;
    int status, strict;
  } rows[] = {{"x\n", 0, 0}, {"x\n1\n", 0, 0}, {"x\n1\nq\n", 0, 4}, {"x\nq\n", 4, 4}};
  for (const auto& [cases, status, strict] : rows) {
    EXPECT_EQ(RunProgram({"score", Data("line.pmml")}, cases).status, status) << cases;
    EXPECT_EQ(RunProgram({"score", Data("line.pmml"), "--strict"}, cases).status, strict) << cases;
  }
}

}  // namespace
}  // namespace svmscore::app
