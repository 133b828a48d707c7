// Tables that cannot be read, or not as they are meant: messages that say what to mend.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/edited.h"
#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"

namespace svmscore::app {
namespace {

using testing::HasSubstr;
using testing::Not;

TEST(FaultyTables, ARowThatDoesNotFitIsNamedByItsLine) {
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
TEST(FaultyTables, ACellThatSwallowedRowsIsToldWithItsLines) {
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

// One message is enough to mend the table.
TEST(FaultyTables, AHeaderThatDoesNotFitIsShownWithWhatMayBeMeant) {
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

TEST(FaultyTables, FilesOfAnotherKindAreRecognised) {
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

}  // namespace
}  // namespace svmscore::app
