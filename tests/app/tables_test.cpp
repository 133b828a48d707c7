// Tables as people have them: other delimiters, decimal commas, blank lines.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/compressed.h"
#include "tests/app/edited.h"
#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"

namespace svmscore::app {
namespace {

using testing::HasSubstr;
using testing::Not;

using Arguments = std::vector<std::string>;

Ran ScoreTable(const std::string& model, Arguments options, const std::string& cases) {
  options.insert(options.begin(), {"score", Data(model), "--prediction-only"});
  return RunProgram(options, cases);
}

TEST(Tables, AreReadAsTheOptionsSay) {
  const std::string three = "three.pmml";
  const std::string line = "line.pmml";
  const std::string scores = "prediction,status\na,0\nb,0\n";
  const struct {
    std::string model;
    Arguments options;
    std::string cases;
    std::string out;
  } rows[] = {
      {three, {"--delimiter", ";"}, "width;height;colour\n1;1;\"red\"\n-1;-1;red\n", scores},
      {three, {"--delimiter", "tab"}, "width\theight\tcolour\n1\t1\tred\n-1\t-1\tred\n", scores},
      {three, {"--delimiter", "\t"}, "width\theight\tcolour\n1\t1\tred\n-1\t-1\tred\n", scores},
      {three, {"--delimiter", "\\t"}, "width\theight\tcolour\n1\t1\tred\n-1\t-1\tred\n", scores},
      {three, {"--delimiter", "|"}, "width|height|colour\n1|1|red\n-1|\"-1\"|red\n", scores},
      {three, {"--delimiter", " "}, "width height colour\n1 1 red\n-1 -1 red\n", scores},
      {three,
       {"--delimiter", ";", "--passthrough", "a;b,width"},
       "width;height;colour;\"a;b\"\n1;1;red;\"x;,\"\"\n\"\n",
       "a;b,width,prediction,status\n\"x;,\"\"\n\",1,a,0\n"},
      // Numbers are exactly those with a point; texts keep their commas, and a point is no comma.
      {line,
       {"--decimal-comma"},
       "x,t\n\"1,5\",1\n\"0,1\",\"2,2\"\n\"-1,25e1\",3\n7,\"\"\n",
       "prediction,status\n3.1,0\n0.30000000000000004,0\n-24.9,0\n14.1,0\n"},
      {line,
       {"--decimal-comma", "--delimiter", ";"},
       "x\n1,5\n1.5\n1.234,5\n,5\n1,2,3\nNA\n",
       "prediction,status\n3.1,0\n,90027\n,90027\n1.1,0\n,90027\n,90029\n"},
      {line,
       {"--decimal-comma", "--delimiter", ";", "--missing-token", "-9,9"},
       "x;y\n-9,9;2\n",
       "prediction,status\n,90029\n"},
      {three,
       {"--decimal-comma", "--delimiter", ";", "--passthrough", "*", "--no-header"},
       "colour;height;x y;width\n\"red\";1,0;a,b;1,50\n",
       "red,\"1,0\",\"a,b\",\"1,50\",a,0\n"},
      {line, {"--no-header"}, "x\n1\n", "2.1,0\n"},
      {line, {"--passthrough", "*"}, "b,x\n1,2\n", "b,x,prediction,status\n1,2,4.1,0\n"},
      // Blank lines are no rows; in a table of one column they are missing cells.
      {three, {}, "\n \n\r\nwidth,height,colour\n\n1,1,red\n \t\r\n\r\n-1,-1,red\n\n\n   ", scores},
      {line, {}, "\n\nx\n\n1\n", "prediction,status\n,90029\n2.1,0\n"},
  };
  for (const auto& [model, options, cases, out] : rows) {
    const Ran ran = ScoreTable(model, options, cases);
    EXPECT_EQ(ran.out, out) << testing::PrintToString(options) << cases << ran.err;
  }
}

TEST(Tables, ARowThatDoesNotFitIsNamedByItsLine) {
  const std::string header = "width,height,colour\n";
  const struct {
    Arguments options;
    std::string cases;
    std::string told;
  } rows[] = {
      {{}, header + "\n\n1,1,red\n \n1,1\n", "line 6: a row of 2 where the header has 3 cells"},
      {{}, header + "\n\"\"\n", "line 3: a row of 1 where the header has 3 cells"},
      {{},
       header + "1,5,1,5,red\n",
       "line 2: a row of 5 where the header has 3 cells; a comma separates cells here, so that a "
       "number with a decimal comma must be quoted, and --decimal-comma given"},
      {{},
       header + "0,1.5,1.5,red\n",
       "line 2: a row of 4 where the header has 3 cells; does a column of row numbers lack its "
       "name?"},
      {{},
       header + "1.5,1.5,red,\n",
       "line 2: a row of 4 where the header has 3 cells; the row ends with a delimiter"},
      {{"--delimiter", ";"},
       "\n\nwidth;height;colour\n1;1\n",
       "line 4: a row of 2 where the header has 3 cells"},
      {{"--decimal-comma"},
       header + "1,5,1,5,red\n",
       "line 2: a row of 5 where the header has 3 cells; a comma separates cells here, so that a "
       "number with a decimal comma must be quoted, or --delimiter must name another character"},
  };
  for (const auto& [options, cases, told] : rows) {
    const Ran ran = ScoreTable("three.pmml", options, cases);
    EXPECT_EQ(ran.status, 5);
    EXPECT_EQ(ran.err, "svmscore: standard input: " + told + "\n");
  }
}

// One stray quotation mark is an error; two may make rows a cell that nobody reads.
TEST(Tables, ACellThatSwallowedRowsIsToldWithItsLines) {
  const auto remark = [](const std::string& cells) {
    return "the cell" + cells +
           " text that looks like rows; a quotation mark may be lost or added\n";
  };
  const std::string swallowed = "a,1,\"b\nc,2,d\"\n";
  const struct {
    std::string cases;
    std::string told;  // empty: nothing
  } rows[] = {
      {"x,n,m\n1,a,b\n1,\"a,b\n2,a,b\n\n3,a,b\n4,c\",b\n5,a,b\n",
       remark(" from line 3 to line 7 holds")},
      {"n,x,m\r\n\"a,1,b\r\nc\",2,d", remark(" from line 2 to line 3 holds")},
      {"n,x,m\n\"a\nb\",1,c\n" + swallowed + swallowed,
       remark("s from line 4 to line 5, from line 6 to line 7 hold")},
      {"n,x,m\n" + swallowed + swallowed + swallowed + swallowed,
       remark("s from line 2 to line 3, from line 4 to line 5, from line 6 to line 7 and 1 more "
              "hold")},
      // Texts of several lines.
      {"n,x,m\n\"a, b\nc\",1,d\n\"\n\n\",2,e\n\"f,g,h\ni,j,k\",3,l\n", ""},
      {"n,x\n\"a, b\nc\",1\n", ""},
      {"x\n\"1\n2\"\n", ""},
  };
  const TemporaryFolder folder;
  const std::string expected = folder.Write("expected", "prediction\n2.1\n");
  for (const auto& [cases, told] : rows) {
    const std::string path = folder.Write("cases", cases);
    for (const Arguments& arguments :
         {Arguments{"score", Data("line.pmml"), path},
          Arguments{"verify", Data("line.pmml"), "--input", path, "--expected", expected}}) {
      const std::string err = RunProgram(arguments).err;
      if (told.empty()) {
        EXPECT_THAT(err, Not(HasSubstr("looks like rows"))) << cases;
      } else {
        EXPECT_THAT(err, HasSubstr("svmscore: " + path + ": " + told)) << cases;
      }
    }
  }
}

TEST(Tables, ReasonsShowNumbersAsTheTableHasThem) {
  const Ran ran = ScoreTable("line.pmml", {"--decimal-comma", "--delimiter", ";", "--reasons"},
                             "x\n1.5\n1,2,3\n1,5\n1.234,5\n");
  EXPECT_EQ(ran.out,
            "prediction,status,reason\n"
            ",90027,\"x: \"\"1.5\"\" is not a number\"\n"
            ",90027,\"x: \"\"1,2,3\"\" is not a number\"\n"
            "3.1,0,\n"
            ",90027,\"x: \"\"1.234,5\"\" is not a number\"\n");
  EXPECT_THAT(ran.err,
              HasSubstr("\"1.234,5\" is not a number (write it without separators of thousands)"));
  EXPECT_THAT(ran.err, HasSubstr("row 1, x: \"1.5\" is not a number (numbers have a decimal comma "
                                 "here; write it with one, and thousands without points, or leave "
                                 "--decimal-comma out)\n"));
  EXPECT_THAT(ran.err, HasSubstr("\"1,2,3\" is not a number\n"));
}

TEST(Tables, OptionsThatCannotBeMeantAreUsageErrors) {
  const struct {
    Arguments options;
    std::string told;
  } rows[] = {
      {{"--delimiter", ""}, "it is empty; give one character, or the word tab"},
      {{"--delimiter", ";;"}, "\";;\" is more than one character; give one, or the word tab"},
      {{"--delimiter", "\xC2\xA7"}, "\"\xC2\xA7\" is no ASCII character"},
      {{"--delimiter", "\""}, "a quotation mark begins a cell"},
      {{"--delimiter", "\n"}, "a line end ends a row"},
      {{"--delimiter", "."}, "\".\" is a part of numbers and names"},
      {{"--delimiter", "e"}, "\"e\" is a part of numbers and names"},
      {{"--delimiter", "\x01"}, "it is a control character"},
      {{"--passthrough", "x,*"}, "* means all columns of the input"},
  };
  for (const auto& [options, told] : rows) {
    const Ran ran = ScoreTable("line.pmml", options, "x\n1\n");
    EXPECT_EQ(ran.status, 2);
    EXPECT_THAT(ran.err, HasSubstr(told));
  }
}

// One message is enough to mend the table.
TEST(Tables, AHeaderThatDoesNotFitIsShownWithWhatMayBeMeant) {
  const std::string lacks =
      "the header lacks \"width\", \"height\", \"colour\", which the model needs";
  std::string many = "name";
  for (int i = 0; i < 20; ++i) many += ",column" + std::to_string(i) + std::string(100, 'x');
  const struct {
    Arguments options;
    std::string cases;
    std::string told;
  } rows[] = {
      {{},
       "width;height;colour\n",
       ": it seems to be separated by ';': give --delimiter ';'; " + lacks +
           "; it has \"width;height;colour\"\n"},
      {{},
       "width\t\"height\"\tcolour\n",
       "are the cells separated by tabs? Then give --delimiter tab\n"},
      {{}, "\"width\";\"height\"\n", "separated by ';'? Then give --delimiter ';'\n"},
      {{}, "width\theight\tcolour\n", "by tabs: give --delimiter tab;"},
      {{"--delimiter", "|"}, "width,height,colour\n", "by ',': give --delimiter ',';"},
      {{},
       "a b,width height colour\n",
       ": " + lacks + "; it has \"a b\", \"width height colour\"\n"},
      {{}, "width height colour\n", "by ' ': give --delimiter ' ';"},
      {{}, "width  height colour\n", ": its cells seem to be aligned with blanks: write one comma"},
      {{}, "width \theight \tcolour \n", "by tabs: give --delimiter tab;"},
      {{}, "sep=;\nwidth;height;colour\n", "the line \"sep=\" is of no table"},
      {{},
       " Width,height ,color\n",
       "did you mean \"width\" by \" Width\", \"height\" by \"height \", \"colour\" by \"color\"? "
       "The "
       "header lacks \"width\", \"height\", \"colour\", which the model needs; it has \" Width\", "
       "\"height \", \"color\"\n"},
      {{}, "weight,red,n\n", "did you mean \"height\" by \"weight\"? The header lacks \"width\""},
      {{},
       "Width (cm),height [%],id\n",
       "did you mean \"width\" by \"Width (cm)\", \"height\" by \"height [%]\"?"},
      {{}, "\u200Bwidth,height,colour\n", "did you mean \"width\" by \"\\u200Bwidth\"? "},
      {{"--passthrough", "Colour"},
       "width,height,colour\n",
       "did you mean \"colour\" by \"Colour\"? The header lacks \"Colour\", which --passthrough "
       "names"},
      {{"--passthrough", "gr\u00F6\u00DFe"},
       "width,height,colour,gro\u0308\u00DFe\n",
       "by \"gr\u00F6\u00DFe\" (the same letters, composed differently: Unicode normal forms C and "
       "D)?"},
      {{},
       "1,2.5,red\n",
       "hold the names of the columns, and seems to be a row of values; the header"},
      {{}, "width,1,2.5\n", "to be the name and the values of one; is the table transposed? The"},
      {{}, "box,,paint,,\n", "and seems to be a line of merged cells above them; the header"},
      {{}, "Results of May\n1,2,red\n", "and seems to be a title; the header lacks"},
      {{},
       "\"Results, May\",,\nwidth,height,colour\n",
       "and seems to be a title; the header lacks"},
      {{}, "gr\xF6\xDF,\xE4,b\n", "Latin-1 or Windows-1252; save the table in UTF-8"},
  };
  for (const auto& [options, cases, told] : rows) {
    const Ran ran = ScoreTable("three.pmml", options, cases);
    EXPECT_EQ(ran.status, 5);
    EXPECT_THAT(ran.err, HasSubstr(told));
  }
  const std::string err = ScoreTable("three.pmml", {}, many + "\n").err;
  EXPECT_THAT(err, HasSubstr(" and 11 more\n"));
  EXPECT_LT(err.size(), 1000U);
  const TemporaryFolder folder;
  const auto told = [&folder](const Edits& edits, const std::string& cases) {
    return RunProgram({"score", EditedFile(folder, Data("three.pmml"), edits)}, cases).err;
  };
  EXPECT_THAT(told({"*'width'", "'0'"}, "X0,height,colour\n"), HasSubstr("mean \"0\" by \"X0\"?"));
  EXPECT_THAT(told({"*'height'", "'width2'"}, "width,colour\n"), Not(HasSubstr("did you mean")));
  const Ran expected =
      RunProgram({"verify", Data("line.pmml"), "--input", folder.Write("c", "x\n1\n"), "--expected",
                  folder.Write("e", "status;prediction\n0;1\n")});
  EXPECT_EQ(expected.status, 5);
  EXPECT_THAT(expected.err,
              HasSubstr("no column of the header is known; it seems to be separated by ';'"));
}

TEST(Tables, FilesOfAnotherKindAreRecognised) {
  const TemporaryFolder folder;
  const std::string table = "width,height,colour\n1,1,red\n";
  std::string wide;
  for (const char c : table) wide += {c, '\0'};
  const std::string document = ReadFile(Data("three.pmml"));
  const struct {
    std::string file;
    std::string as_table;
    std::string as_model;
  } rows[] = {
      {std::string("PK\x03\x04\x14\0", 6),
       "a ZIP archive, as Excel workbooks (.xlsx) are; save the sheet", "a ZIP archive"},
      {"\xD0\xCF\x11\xE0\xA1", "an Excel workbook of the old kind", "an Excel workbook"},
      {"\xFF\xFE" + wide, "its encoding is UTF-16", ""},
      {wide, "its encoding is UTF-16", ""},
      {" \n[\n  {\"width\": 1}]\n", "no table of text but JSON",
       "not XML: the file is JSON. Give "},
      {"{\"width\": 1}\n", "no table of text but JSON", "not XML: the file is JSON. Give "},
      {"+1 1:0.5 7:-3e2\n", "but LIBSVM's sparse format; write it as CSV", ""},
      {"@RELATION iris\n", "but the ARFF format", ""},
      {"&lt;?xml version=\"1.0\"?&gt;\n", "", "its tags are written as &lt;"},
      {"No style information: \n" + document, "", "the document follows other text: it begins "},
      {"<?xml version=\u201D1.0\u201D?>\n<PMML/>", "", "its quotation marks are typographic ones"},
      {"<PMML a=b></PMML>", "", "Correct the document at this place"},
      {document.substr(0, document.size() / 2), "", "The file ends there, as if it were cut off"},
      {document.substr(0, document.find("</Coe")), "", "The file ends there, as if it were cut"},
      {"<!doctype HTML><p>Not found", "a page of HTML", "a page of HTML"},
      {document, "but XML; if it is the model, that comes before the cases: MODEL CASES", ""},
      {table, "", "the file seems to be a table of cases. The model comes first: MODEL CASES."},
      {"", "", "[260302] this is not XML: the file is empty. "},
      {" \n", "", "the file is empty. "},
      {"This is my model\nweights: 1\n", "", "it begins with \"This is my model\". "},
      {"\x01\x02\n", "", "begins with bytes that are no text. "},
      {"svm_type c_svc\n", "", "a model in LIBSVM's format"},
      {"BZh91AY&SY\x01", "compressed by bzip2; decompress it first", "compressed by bzip2"},
  };
  for (const auto& [file, as_table, as_model] : rows) {
    const std::string path = folder.Write("file", file);
    const std::string good = folder.Write("good", table);
    if (!as_table.empty()) {
      const std::vector<Arguments> commands = {
          {"score", Data("three.pmml"), path},
          {"verify", Data("three.pmml"), "--input", path, "--expected", good},
          {"doctor", Data("three.pmml"), "--input", good, "--expected", path}};
      for (const Arguments& arguments : commands) {
        const Ran ran = RunProgram(arguments);
        EXPECT_EQ(ran.status, 5);
        EXPECT_THAT(ran.err, HasSubstr(path + ": "));
        EXPECT_THAT(ran.err, HasSubstr(as_table));
      }
    }
    if (as_model.empty()) continue;
    for (const char* command : {"score", "describe", "doctor", "verify"}) {
      const Ran ran = RunProgram({command, path});
      EXPECT_EQ(ran.status, 3);
      EXPECT_THAT(ran.err, HasSubstr("[260302] "));
      EXPECT_THAT(ran.err, HasSubstr(as_model));
    }
  }
}

TEST(Tables, VerifyAndDoctorReadThemAlike) {
  const TemporaryFolder folder;
  const std::string cases = folder.Write("cases", "x;t\n\n1,5;a\n0,1;b\n-9,9;c\n");
  const std::string expected =
      folder.Write("expected", "prediction;status\n3,1;0\n\n\"0,3\";0\n;90029\n");
  const Arguments options = {"--delimiter", ";",   "--decimal-comma", "--missing-token", "-9,9",
                             "--input",     cases, "--expected",      expected};
  Arguments verify = {"verify", Data("line.pmml")};
  verify.insert(verify.end(), options.begin(), options.end());
  const Ran ran = RunProgram(verify);
  EXPECT_EQ(ran.status, 0) << ran.err;
  EXPECT_THAT(ran.out, testing::EndsWith("\n5 cells compared, 0 disagree\n"));
  Arguments doctor = {"doctor", Data("line.pmml")};
  doctor.insert(doctor.end(), options.begin(), options.end());
  EXPECT_THAT(RunProgram(doctor).out, HasSubstr("no findings")) << ran.err;
  folder.Write("expected", "prediction;status\n3.2;0\n0,3;0\n;90029\n");
  EXPECT_EQ(RunProgram(verify).status, 1);
  EXPECT_EQ(RunProgram(doctor).status, 1);
}

// What score wrote can be compared, however the cases are written.
TEST(Tables, ExpectedScoresMayBeWrittenAsTheCasesOrAsScores) {
  const std::string german = "x;t\n1,5;a\n0,1;b\n";
  const struct {
    std::string cases;
    std::string expected;
    Arguments options;
    int status;
  } rows[] = {
      {german, "prediction;status\n3,1;0\n0,3;0\n", {"--decimal-comma"}, 0},
      {german, "prediction;status\n3.1;0\n0.3;0\n", {"--decimal-comma"}, 0},
      {german, "prediction,status\n3.1,0\n0.3,0\n", {"--decimal-comma"}, 0},
      {german, "x,prediction\n\"1,5\",3.1\n\"0,1\",0.3\n", {"--decimal-comma"}, 0},
      {german, "\"t\",\"prediction\"\n\"a;b\nc\",3.1\na,0.3\n", {"--decimal-comma"}, 0},
      {german, "prediction,status\n3.2,0\n0.3,0\n", {"--decimal-comma"}, 1},
      {german,
       "prediction\n\"3,1\"\n0.3\n",
       {"--decimal-comma"},
       1},  // one of them groups thousands
      {german, "prediction\n3,1\n0,3\n", {"--decimal-comma"}, 0},
      {"x;t\n1.5;a\n", "status,prediction\n0,3.1\n", {}, 0},
  };
  for (const auto& [cases, expected, options, status] : rows) {
    const TemporaryFolder folder;
    const std::string input = folder.Write("cases", cases);
    const std::string file = folder.Write("expected", expected);
    for (const char* command : {"verify", "doctor"}) {
      Arguments arguments = {command, Data("line.pmml"), "--delimiter", ";", "--input",
                             input,   "--expected",      file};
      arguments.insert(arguments.end(), options.begin(), options.end());
      const Ran ran = RunProgram(arguments);
      EXPECT_EQ(ran.status, status) << command << ' ' << expected << ran.out << ran.err;
    }
  }
}

// A text that looks like a number with a comma stays one, also where it is expected.
TEST(Tables, DecimalCommasAreNotReadInTexts) {
  const TemporaryFolder folder;
  const std::string model =
      EditedFile(folder, Data("three.pmml"), {"*'red'", "'1,5'", "*'b'", "'2,5'"});
  const std::string text = "width;height;colour\n-1;-1;1,5\n";
  const Arguments options = {"--delimiter", ";", "--decimal-comma"};
  Arguments score = {"score", model, "--prediction-only"};
  score.insert(score.end(), options.begin(), options.end());
  EXPECT_EQ(RunProgram(score, text).out, "prediction,status\n\"2,5\",0\n");
  Arguments verify = {"verify",     model,
                      "--input",    folder.Write("c", text),
                      "--expected", folder.Write("e", "prediction\n2,5\n")};
  verify.insert(verify.end(), options.begin(), options.end());
  EXPECT_THAT(RunProgram(verify).out, testing::EndsWith("\n1 cell compared, 0 disagree\n"));
}

TEST(Tables, ADeclaredValueIsNotMissingUnlessATokenThatIsGivenSaysSo) {
  const TemporaryFolder folder;
  const std::string model = EditedFile(folder, Data("three.pmml"), {"*'red'", "'NA'"});
  const std::string cases = "width,height,colour\n-1,-1,NA\nNA,1,NA\n1,1,N/A\n";
  const std::string scores = "prediction,status\nb,0\n,90029\na,0\n";
  const Ran usual = RunProgram({"score", model, "--prediction-only"}, cases);
  EXPECT_EQ(usual.out, scores) << usual.err;
  EXPECT_THAT(usual.err, testing::StartsWith("svmscore: row 2, width: "));
  const Arguments given = {"--missing-policy", "fail", "--missing-token", "NA"};
  Arguments score = {"score", model, "--prediction-only"};
  score.insert(score.end(), given.begin(), given.end());
  const Ran told = RunProgram(score, cases);
  EXPECT_EQ(told.out, "prediction,status\n,90029\n,90029\n,90027\n");
  EXPECT_THAT(told.err, testing::StartsWith(
                            "svmscore: the model lists \"NA\" as a value of \"colour\"; cells of "
                            "that text are missing all the same, because --missing-token NA says "
                            "so\n"));
  const std::string input = folder.Write("cases", cases);
  const std::string expected = folder.Write("expected", scores);
  EXPECT_EQ(RunProgram({"verify", model, "--input", input, "--expected", expected}).status, 0);
  EXPECT_EQ(RunProgram({"doctor", model, "--input", input, "--expected", expected}).status, 0);
}

TEST(Tables, AndDocumentsMayBeCompressed) {
  const TemporaryFolder folder;
  const std::string header = "width,height,colour\n";
  const std::string one = "1,1,red\n";
  const std::string other = "-1,-1,red\n";
  const std::string scores = "prediction,status\na,0\nb,0\n";
  const std::string document = ReadFile(Data("three.pmml"));
  for (const auto& [cases, model] :
       {std::pair{Gzipped(header + one + other), Gzipped(document)},
        {Gzipped(header) + Gzipped(one) + Gzipped(other), Zstandard(document)},
        {Zstandard(header + one) + Zstandard(other), Gzipped(document)}}) {
    EXPECT_EQ(ScoreTable("three.pmml", {}, cases).out, scores);
    const std::string file = folder.Write("three.pmml.compressed", model);
    const std::string input = folder.Write("cases", cases);
    const std::string expected = folder.Write("expected", Gzipped(scores));
    EXPECT_EQ(RunProgram({"score", file, input, "--prediction-only"}).out, scores);
    EXPECT_EQ(RunShell("cat " + file + " | \"$SVMSCORE\" score /dev/stdin " + input +
                       " --prediction-only")
                  .out,
              scores);
    for (const char* command : {"verify", "doctor"}) {
      const Arguments arguments = {command, file, "--input", input, "--expected", expected};
      EXPECT_EQ(RunProgram(arguments).status, 0) << command;
    }
    EXPECT_EQ(RunProgram({"verify", file, "--input", input, "--write", folder.Path("new")}).status,
              0);
    EXPECT_THAT(ReadFile(folder.Path("new")), HasSubstr("<ModelVerification recordCount=\"2\""));
  }
  // The rows before a fault are scored; of a model nothing is left.
  const std::string cut = Gzipped(header + one) + Gzipped(other).substr(0, 15);
  const Ran ran = ScoreTable("three.pmml", {}, cut);
  EXPECT_EQ(ran.status, 5);
  EXPECT_THAT(ran.err, HasSubstr("standard input: the file is compressed by gzip and ends before"));
  const std::string broken = folder.Write("broken", Gzipped(document).substr(0, 500));
  EXPECT_THAT(RunProgram({"score", broken}, one).err,
              HasSubstr("[260301] cannot read " + broken + ": it ends before its gzip stream"));
  EXPECT_THAT(
      RunProgram({"score", folder.Write("big", Gzipped(document)), "--limit", "document-size=1000"},
                 one)
          .err,
      HasSubstr("[260318] the size of the document in bytes exceeds the limit"));
  // Much that was little.
  EXPECT_THAT(ScoreTable("three.pmml", {}, Gzipped(header + std::string(20U << 20U, '1'))).err,
              HasSubstr("the length of a row in bytes exceeds the limit"));
  const std::string many = folder.Write("many", Gzipped(header + one + other));
  EXPECT_THAT(RunProgram({"verify", Data("three.pmml"), "--input", many, "--expected", many,
                          "--limit", "table-size=17"})
                  .err,
              HasSubstr("the size in bytes of a table that is held in memory exceeds the limit"));
}

// A row is answered before the next one comes. Only a hang ends the waiting.
TEST(Tables, RowsAreAnsweredAsTheyCome) {
  for (const char* threads : {"1", "8"}) {
    for (const std::string compress : {"cat", "gzip"}) {
      const Ran ran = RunShell(
          "coproc S { \"$SVMSCORE\" score " + Data("line.pmml") + " --prediction-only --threads " +
          threads + "; }\nfor row in x 1 NA $'\\n7\\n' 2; do { echo \"$row\" | " + compress +
          "; } >&${S[1]}; read -t 3600 -u ${S[0]} answer && echo \"$answer\"; done");
      EXPECT_EQ(ran.out, "prediction,status\n2.1,0\n,90029\n,90029\n14.1,0\n") << compress;
    }
  }
}

}  // namespace
}  // namespace svmscore::app
