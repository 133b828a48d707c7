// svmscore report, from a document and a table to a page.
#include <sstream>

#include <gmock/gmock.h>

#include "tests/app/edited.h"
#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"

namespace svmscore::app {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

std::string ExampleFile(const std::string& name) {
  return std::string(EXAMPLES "/") + name;
}

Ran Report(Arguments arguments, const std::string& input = {}) {
  arguments.insert(arguments.begin(), "report");
  arguments.insert(arguments.end(), {"-o", "-"});
  return RunProgram(arguments, input);
}

Ran ReportExample(const std::string& name, const std::string& actual) {
  return Report({ExampleFile(name + "/model.pmml"), "--input", ExampleFile(name + "/cases.csv"),
                 "--actual", actual});
}

TEST(Report, ShowsWhatTheModelIsAndHowItScores) {
  const Ran iris = ReportExample("iris", "species");
  EXPECT_EQ(iris.status, 0) << iris.err;
  const Ran sum = RunShell("sha256sum '" + ExampleFile("iris/model.pmml") + "'");
  EXPECT_THAT(iris.out, HasSubstr("<code>" + sum.out.substr(0, 64) + "</code>"));
  EXPECT_THAT(iris.out, AllOf(HasSubstr("radial basis"), HasSubstr("<h1>Report on"),
                              HasSubstr("50 scored cases of <bdi>cases.csv</bdi>"),
                              HasSubstr("<b>96.0\u00A0%</b>"), HasSubstr("Reliability diagram"),
                              HasSubstr("4.3 to 7.9"), HasSubstr("No findings")));
  const Ran diabetes = ReportExample("diabetes", "progression");
  EXPECT_THAT(diabetes.out, AllOf(HasSubstr("<b>99.0\u00A0%</b> <span>of cases lie in their "
                                            "interval"),
                                  HasSubstr("Residuals"), Not(HasSubstr("Confusion"))));
}

// Calibrate has the same figures by another way.
TEST(Report, TellsTheFiguresOfCalibrate) {
  const Ran calibrate = RunProgram({"calibrate", ExampleFile("digits/model.pmml"),
                                    ExampleFile("digits/cases.csv"), "--actual", "digit"});
  const Ran report = ReportExample("digits", "digit");
  for (const std::string name : {"Brier score", "log loss", "expected calibration error"}) {
    const std::size_t at = calibrate.out.find("\n" + name);
    ASSERT_NE(at, std::string::npos) << calibrate.out;
    std::istringstream line(calibrate.out.substr(at + 31, 10));
    std::string figure;
    line >> figure;
    EXPECT_THAT(report.out, HasSubstr("<b>" + figure + "</b> <span>" + name));
  }
}

TEST(Report, LoadsAndRunsNothing) {
  const std::string page = ReportExample("tumour", "diagnosis").out;
  EXPECT_THAT(page, HasSubstr("default-src 'none'; style-src 'unsafe-inline'"));
  for (const char* never :
       {"<script", "http://", "https://", "url(\"", "src=", "@import", "<link", "javascript:"}) {
    EXPECT_THAT(page, Not(HasSubstr(never)));
  }
}

TEST(Report, HasTheSameBytesEachTime) {
  const std::string once = ReportExample("digits", "digit").out;
  EXPECT_EQ(once, ReportExample("digits", "digit").out);
  const std::string iris = "\"$SVMSCORE\" report '" + ExampleFile("iris/model.pmml") +
                           "' --input '" + ExampleFile("iris/cases.csv") +
                           "' --actual species -o -";
  EXPECT_EQ(RunShell(iris).out, RunShell("SVMSCORE_ISA=sse2 " + iris).out);
  EXPECT_THAT(once, Not(HasSubstr("made 20")));
  const Ran dated = RunShell("SOURCE_DATE_EPOCH=86400 \"$SVMSCORE\" report '" +
                             ExampleFile("iris/model.pmml") + "' -o -");
  EXPECT_THAT(dated.out, HasSubstr("made 1970-01-02T00:00:00Z"));
  const Ran wrong = RunShell("SOURCE_DATE_EPOCH=x \"$SVMSCORE\" report '" +
                             ExampleFile("iris/model.pmml") + "' -o -");
  EXPECT_EQ(wrong.status, 2);
}

TEST(Report, SaysWhatToGiveAndWhatIsWrong) {
  const Ran bare = Report({ExampleFile("iris/model.pmml")});
  EXPECT_THAT(bare.out, HasSubstr("Give <code>--input CASES</code>"));
  const Ran unlabelled =
      Report({ExampleFile("iris/model.pmml"), "--input", ExampleFile("iris/cases.csv")});
  EXPECT_THAT(unlabelled.out, HasSubstr("Give <code>--actual COLUMN</code>"));
  const Ran broken = Report({ExampleFile("broken/model.pmml")});
  EXPECT_EQ(broken.status, 0);
  EXPECT_THAT(broken.out, HasSubstr("<b>Remedy:</b>"));

  const TemporaryFolder folder;
  const std::string refused = EditedFile(folder, ExampleFile("iris/model.pmml"),
                                         {"maxWins='true'", "maxWins='true' isScorable='0'"});
  EXPECT_THAT(Report({refused, "--input", ExampleFile("iris/cases.csv")}).out,
              HasSubstr("Scoring with this model is refused"));

  const std::string unknown = folder.Write(
      "unknown.csv", "sepal_length,sepal_width,petal_length,petal_width,y\n5,3,1,0.2,rose\n");
  EXPECT_THAT(Report({ExampleFile("iris/model.pmml"), "--input", unknown, "--actual", "y"}).out,
              HasSubstr("No scored case has a label that counts"));

  const std::string empty = folder.Write("empty.csv",
                                         "sepal_length,sepal_width,petal_length,"
                                         "petal_width\n,,,\n");
  EXPECT_THAT(Report({ExampleFile("iris/model.pmml"), "--input", empty}).out,
              HasSubstr("None of the 1 case of <bdi>empty.csv</bdi> is scored: 1 with a missing"));
}

TEST(Report, ExplainsAgainstWhatIsGiven) {
  const std::string model = ExampleFile("iris/model.pmml");
  const std::string cases = ExampleFile("iris/cases.csv");
  EXPECT_THAT(Report({model}).out,
              AllOf(HasSubstr("The background is the 34 distinct support vectors of"),
                    HasSubstr("A support vector: "), HasSubstr("No cases were given")));
  EXPECT_THAT(Report({model, "--input", cases, "--background", cases}).out,
              AllOf(HasSubstr("The background is the 50 usable rows of"), HasSubstr("surest for")));
  EXPECT_THAT(Report({ExampleFile("tumour/model.pmml")}).out,
              HasSubstr("The background is 50 drawn of the "));
  const TemporaryFolder folder;
  std::string rows = "sepal_length,sepal_width,petal_length,petal_width\n,,,\n";
  const std::string none = folder.Write("none.csv", rows);
  const Ran unusable = Report({model, "--background", none});
  EXPECT_EQ(unusable.status, 5);
  EXPECT_THAT(unusable.err, HasSubstr(none + ": none of 1 rows can be scored, 1 with a missing"));
  for (int i = 0; i < 60; ++i) rows += "5,3," + std::to_string(i % 6) + ",1\n";
  const Ran some = Report({model, "--background", folder.Write("some.csv", rows)});
  EXPECT_THAT(some.out, HasSubstr("is 50 drawn of the 61 rows of the background that was given (1 "
                                  "cannot be scored)"));
  EXPECT_THAT(some.err, HasSubstr("some.csv: 1 of 61 rows cannot be scored"));
  const Ran other = Report({model, "--background", ExampleFile("tumour/cases.csv")});
  EXPECT_EQ(other.status, 5);
  EXPECT_EQ(Report({model, "--input", "-", "--background", "-"}).status, 2);
}

TEST(Report, RefusesWhatDoesNotFit) {
  const std::string model = ExampleFile("iris/model.pmml");
  const std::string cases = ExampleFile("iris/cases.csv");
  EXPECT_EQ(RunProgram({"report", model}).status, 2);
  EXPECT_EQ(Report({model, "--actual", "species"}).status, 2);
  EXPECT_EQ(Report({model, "--input", cases, "--actual", "nothing"}).status, 5);
  EXPECT_EQ(Report({model, "--input", cases, "--actual", "petal_width"}).status, 5);
  EXPECT_EQ(Report({model, "--input", ExampleFile("tumour/cases.csv")}).status, 5);
  EXPECT_EQ(Report({cases}).status, 3);
  EXPECT_EQ(RunProgram({"report", model, "-o", "/nowhere/page.html"}).status, 6);
  const TemporaryFolder folder;
  const std::string own = folder.Write("own.pmml", ReadFile(model));
  EXPECT_EQ(RunProgram({"report", own, "-o", own}).status, 2);
  EXPECT_EQ(ReadFile(own), ReadFile(model));
}

TEST(Report, FindsWhatLabelsTell) {
  const TemporaryFolder folder;
  const std::string file = EditedFile(folder, ExampleFile("diabetes/model.pmml"),
                                      {"<StandardDeviation>44.", "<StandardDeviation>4."});
  EXPECT_THAT(
      Report({file, "--input", ExampleFile("diabetes/cases.csv"), "--actual", "progression"}).out,
      HasSubstr("intervals-off"));
}

// As some exporters do for a standardised target.
TEST(Report, ComparesNoLabelsOfAnotherUnit) {
  const TemporaryFolder folder;
  const auto report = [&](const std::string& factor) {
    const std::string file =
        EditedFile(folder, ExampleFile("diabetes/model.pmml"),
                   {"</MiningSchema>",
                    "</MiningSchema><Output><OutputField name='p' "
                    "feature='predictedValue'/><OutputField name='real' "
                    "feature='transformedValue' dataType='double' optype='continuous'>"
                    "<FieldRef field='p'/></OutputField></Output><Targets><Target "
                    "field='progression' rescaleFactor='" +
                        factor + "'/></Targets>"});
    return Report({file, "--input", ExampleFile("diabetes/cases.csv"), "--actual", "progression"})
        .out;
  };
  EXPECT_THAT(report("0.001"), AllOf(HasSubstr("its output field <bdi>real</bdi> computes"),
                                     Not(HasSubstr("Residuals")), Not(HasSubstr("in truth"))));
  EXPECT_THAT(report("1"), HasSubstr("Residuals"));
}

// The bytes on the disk are what a checksum is compared with, compressed or not.
TEST(Report, ReadsPipesAndCompressedFiles) {
  const std::string model = ExampleFile("iris/model.pmml");
  const TemporaryFolder folder;
  const std::string packed = folder.Path("m.pmml.gz");
  RunShell("gzip -nc '" + model + "' > '" + packed + "'");
  const Ran sum = RunShell("sha256sum '" + packed + "'");
  EXPECT_THAT(Report({packed}).out, HasSubstr(sum.out.substr(0, 64)));
  const Ran piped = Report({model, "--input", "-", "--actual", "species"},
                           ReadFile(ExampleFile("iris/cases.csv")));
  EXPECT_THAT(piped.out, HasSubstr("<b>96.0\u00A0%</b>"));
}

// A document whose size says nothing about the size of its page.
std::string ManyCategories(int categories) {
  std::string values;
  std::string machines;
  for (int k = 0; k < categories; ++k) {
    const std::string name = std::to_string(k) + "<b>";
    const std::string escaped = std::to_string(k) + "&lt;b&gt;";
    values += "<Value value=\"" + escaped + "\"/>";
    machines += "<SupportVectorMachine targetCategory=\"" + escaped +
                "\"><SupportVectors numberOfSupportVectors=\"1\"><SupportVector vectorId=\"v\"/>"
                "</SupportVectors><Coefficients absoluteValue=\"" +
                std::to_string(k % 97) +
                "\"><Coefficient value=\"1\"/></Coefficients>"
                "</SupportVectorMachine>\n";
  }
  return "<PMML xmlns=\"http://www.dmg.org/PMML-4_4\" version=\"4.4\"><Header/><DataDictionary>"
         "<DataField name=\"x\" optype=\"continuous\" dataType=\"double\"/><DataField name=\"y\" "
         "optype=\"categorical\" dataType=\"string\">" +
         values +
         "</DataField></DataDictionary><SupportVectorMachineModel functionName=\"classification\" "
         "classificationMethod=\"OneAgainstAll\"><MiningSchema><MiningField name=\"x\"/>"
         "<MiningField name=\"y\" usageType=\"target\"/></MiningSchema><LinearKernelType/>"
         "<VectorDictionary><VectorFields><FieldRef field=\"x\"/></VectorFields><VectorInstance "
         "id=\"v\"><Array type=\"real\">1</Array></VectorInstance></VectorDictionary>" +
         machines + "</SupportVectorMachineModel></PMML>\n";
}

TEST(Report, PagesOfLongNamesAreBounded) {
  std::string fields;
  std::string active;
  const std::string quotes(5994, '\'');  // &#39; on a page
  for (int i = 0; i < 40; ++i) {
    const std::string name = "\"" + std::to_string(i) + quotes + "\"";
    fields += "<DataField name=" + name + " optype=\"categorical\" dataType=\"string\">";
    for (int v = 0; v < 9; ++v) fields += "<Value value=\"" + std::to_string(v) + quotes + "\"/>";
    fields += "</DataField>";
    active += "<MiningField name=" + name + "/>";
  }
  std::string document = ManyCategories(4);
  document.insert(document.find("<DataField"), fields);
  document.insert(document.find("<MiningField"), active);
  const TemporaryFolder folder;
  const Ran ran = Report({folder.Write("long.pmml", document)});
  EXPECT_EQ(ran.status, 0) << ran.err;
  EXPECT_THAT(ran.out, HasSubstr(">38&#39;"));
  EXPECT_LT(ran.out.size(), 2000000U);
}

TEST(Report, PagesOfLargeModelsAndTablesAreBounded) {
  const TemporaryFolder folder;
  std::string cases = "x,y\n";
  for (int i = 0; i < 200000; ++i) cases += std::to_string(i % 1000) + ",1<b>\n";
  const std::string table = folder.Write("cases.csv", cases);
  const Ran ran =
      Report({folder.Write("many.pmml", ManyCategories(3000)), "--input", table, "--actual", "y"});
  EXPECT_EQ(ran.status, 0) << ran.err;
  EXPECT_LT(ran.out.size(), 2000000U);
  EXPECT_THAT(ran.out, AllOf(HasSubstr("The first 12 of 3000 machines are shown"),
                             HasSubstr("of 200\u202F000 rows"), Not(HasSubstr("<b>\""))));
  EXPECT_LT(ran.peak_kib, 1000000);
}

}  // namespace
}  // namespace svmscore::app
