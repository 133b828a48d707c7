// svmscore calibrate, from a labelled hold-out to a document that scores as it says.
#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <sstream>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "host/text/number_text.h"
#include "tests/app/columns_of.h"
#include "tests/app/edited.h"
#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"

namespace svmscore::app {
namespace {

using nlohmann::json;
using testing::HasSubstr;

std::string Example(const std::string& name) {
  return std::string(EXAMPLES "/") + name;
}

// What the calibrated document scores, and what calibrate reported.
struct Calibrated {
  Ran run;
  json report;
  std::string document;
  Columns scores;
};
Calibrated Calibrate(const TemporaryFolder& folder, const std::string& document,
                     const std::string& holdout, const std::string& actual,
                     Arguments options = {}) {
  const std::string output = folder.Path("calibrated.pmml");
  std::filesystem::remove(output);
  Arguments arguments = {"calibrate", folder.Write("model.pmml", document), "-", "--actual", actual,
                         "--json"};
  arguments.insert(arguments.end(), options.begin(), options.end());
  if (options.empty() || options[0] != "-o") {
    arguments.insert(arguments.end(), {"-o", output});
  }
  Calibrated calibrated;
  calibrated.run = RunProgram(arguments, holdout);
  if (calibrated.run.status != 0) return calibrated;
  calibrated.report = json::parse(calibrated.run.out);
  calibrated.document = ReadFile(output);
  const Ran scored = RunProgram({"score", output, "--columns", "all", "--decisions"}, holdout);
  EXPECT_EQ(scored.status, 0) << scored.err;
  calibrated.scores = ColumnsOf(scored.out);
  return calibrated;
}

// The text without this system's extensions and the blanks before them.
std::string WithoutOwn(std::string text, const std::string& prefix = "") {
  const std::string begin = "<" + prefix + "Extension extender=\"svmscore\"";
  for (std::size_t at = 0; (at = text.find(begin)) != std::string::npos;) {
    const bool note = text.compare(at + begin.size(), 6, " name=") == 0;
    const std::string end = note ? "/>" : "</" + prefix + "Extension>";
    const std::size_t past = text.find(end, at) + end.size();
    at = text.find_last_not_of(" \n", at - 1) + 1;
    text.erase(at, past - at);
  }
  return text;
}

std::string Replaced(std::string text, const std::string& what, const std::string& by) {
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size()) {
    text.replace(at, what.size(), by);
  }
  return text;
}

std::string Wide(const std::string& ascii, bool high_first) {
  std::string wide = high_first ? "\xFE\xFF" : "\xFF\xFE";
  for (const char c : ascii) wide += high_first ? std::string{'\0', c} : std::string{c, '\0'};
  return wide;
}
std::string Narrow(const std::string& wide, bool high_first) {
  std::string ascii;
  for (std::size_t i = high_first ? 3 : 2; i < wide.size(); i += 2) ascii += wide[i];
  return ascii;
}

// The document with its machines in this order.
std::string Reordered(const std::string& text, const std::vector<std::size_t>& order) {
  const std::string begin = "<SupportVectorMachine ";
  const std::string end = "</SupportVectorMachine>";
  std::vector<std::string> machines;
  std::vector<std::string> between;
  std::size_t last = 0;
  for (std::size_t at = 0; (at = text.find(begin, at)) != std::string::npos;) {
    const std::size_t past = text.find(end, at) + end.size();
    between.push_back(text.substr(last, at - last));
    machines.push_back(text.substr(at, past - at));
    last = at = past;
  }
  std::string reordered;
  for (std::size_t i = 0; i < order.size(); ++i) reordered += between[i] + machines[order[i]];
  return reordered + text.substr(last);
}

TEST(Calibrate, ChangesNothingElseInAnyFormOfADocument) {
  const TemporaryFolder folder;
  const std::string document = ReadFile(Example("iris/model.pmml"));
  const std::string holdout = ReadFile(Example("iris/cases.csv"));
  const Calibrated plain = Calibrate(folder, document, holdout, "species");
  ASSERT_EQ(plain.run.status, 0) << plain.run.err;
  EXPECT_EQ(WithoutOwn(plain.document), document);

  for (const bool high_first : {false, true}) {
    SCOPED_TRACE("UTF-16");
    const std::string declared = Replaced(document, "\"UTF-8\"", "\"UTF-16\"");
    const Calibrated wide = Calibrate(folder, Wide(declared, high_first), holdout, "species");
    ASSERT_EQ(wide.run.status, 0) << wide.run.err;
    EXPECT_EQ(WithoutOwn(Narrow(wide.document, high_first)), declared);
    EXPECT_EQ(wide.scores, plain.scores);
  }
  {
    SCOPED_TRACE("Latin-1, a byte-order mark, an entity, comments and CDATA sections");
    const std::string other = Edited(
        document,
        {"'UTF-8'?>", "'ISO-8859-1'?>\n<!DOCTYPE PMML [<!ENTITY many '\xE9\xE9'>]>", "<Application",
         "<!-- <SupportVectorMachine> \xE9 --><Application", "<VectorDictionary",
         "<Extension><![CDATA[<Header/>\xE9]]>&many;</Extension>"
         "<VectorDictionary"});
    for (const std::string& text :
         {Replaced(other, "setosa", "s\xE9tosa&amp;&lt;"), "\xEF\xBB\xBF" + document}) {
      const bool latin = text.find("s\xE9tosa") != std::string::npos;
      const Calibrated changed =
          Calibrate(folder, text, latin ? Replaced(holdout, "setosa", "s\xC3\xA9tosa&<") : holdout,
                    "species");
      ASSERT_EQ(changed.run.status, 0) << changed.run.err;
      EXPECT_EQ(WithoutOwn(changed.document), text);
      EXPECT_EQ(changed.scores.at("confidence"), plain.scores.at("confidence"));
    }
  }
  {
    SCOPED_TRACE("a prefix");
    const std::string prefixed =
        Replaced(Replaced(Replaced(Replaced(document, "</", "</p:"), "<", "<p:"), "<p:/p:", "</p:"),
                 "<p:?xml", "<?xml");
    const std::string bound = Replaced(prefixed, "xmlns=", "xmlns:p=");
    const Calibrated changed = Calibrate(folder, bound, holdout, "species");
    ASSERT_EQ(changed.run.status, 0) << changed.run.err;
    EXPECT_EQ(WithoutOwn(changed.document, "p:"), bound);
    EXPECT_EQ(changed.scores, plain.scores);
  }
  {
    SCOPED_TRACE("machines out of order, and extensions that are there");
    std::string other = Edited(
        document, {"<SupportVectors ",
                   "<Extension extender='else' name='kept'/>\n   <Extension extender='svmscore'>"
                   "<StandardDeviation>1</StandardDeviation></Extension>\n<SupportVectors "});
    other = Reordered(other, {2, 0, 1});
    const Calibrated changed = Calibrate(folder, other, holdout, "species");
    ASSERT_EQ(changed.run.status, 0) << changed.run.err;
    EXPECT_EQ(changed.report.at("moved"), 3);
    EXPECT_EQ(changed.report.at("pairs").at(0).at("machine"), 2);
    EXPECT_EQ(WithoutOwn(changed.document), WithoutOwn(Reordered(other, {1, 2, 0})));
    EXPECT_EQ(changed.scores, plain.scores);
    // Done a second time, only what is written is written again.
    const Calibrated again = Calibrate(folder, changed.document, holdout, "species");
    EXPECT_EQ(again.report.at("moved"), 0);
    EXPECT_EQ(WithoutOwn(again.document), WithoutOwn(changed.document));
    EXPECT_EQ(again.scores, plain.scores);
    EXPECT_EQ(Replaced(again.document, "calibrated by", "").size() + 13, again.document.size());
  }
}

double Number(const std::string& text) {
  return ParseNumber(text).value();
}

TEST(Calibrate, GivesTheSigmoidOfTheDecisionValueToTheLastBit) {
  const TemporaryFolder folder;
  const Calibrated calibrated = Calibrate(folder, ReadFile(Example("tumour/model.pmml")),
                                          ReadFile(Example("tumour/cases.csv")), "diagnosis");
  ASSERT_EQ(calibrated.run.status, 0) << calibrated.run.err;
  const json pair = calibrated.report.at("pairs").at(0);
  const auto& decisions = calibrated.scores.at("decision(malignant|benign)");
  const auto& probabilities = calibrated.scores.at("probability(malignant)");
  for (std::size_t i = 0; i < decisions.size(); ++i) {
    const double x = Number(decisions[i]) * pair.at("A").get<double>() + pair.at("B").get<double>();
    const double p = x > 0.0 ? std::exp(-x) / (std::exp(-x) + 1.0) : 1.0 / (std::exp(x) + 1.0);
    EXPECT_EQ(Number(probabilities[i]), std::clamp(p, 1e-7, 0.9999999)) << i;
  }
  // The figures before are those of the probabilities that the document had.
  const Ran before = RunProgram({"score", Example("tumour/model.pmml"), "--columns", "all"},
                                ReadFile(Example("tumour/cases.csv")));
  const Columns cases = ColumnsOf(ReadFile(Example("tumour/cases.csv")));
  const Columns scores = ColumnsOf(before.out);
  double brier = 0.0;
  for (std::size_t i = 0; i < decisions.size(); ++i) {
    const double y = cases.at("diagnosis")[i] == "malignant" ? 1.0 : 0.0;
    brier += std::pow(Number(scores.at("probability(malignant)")[i]) - y, 2.0);
  }
  EXPECT_NEAR(calibrated.report.at("before").at("brierScore").get<double>(),
              brier / static_cast<double>(decisions.size()), 1e-12);
}

TEST(Calibrate, CoversTheHoldoutByIntervals) {
  const TemporaryFolder folder;
  const std::string document =
      Edited(ReadFile(Example("diabetes/model.pmml")),
             {"*<VectorDictionary",
              "<Targets><Target rescaleFactor='-0.1' rescaleConstant='7' "
              "castInteger='round' min='50'/></Targets><VectorDictionary"});
  const std::string holdout = ReadFile(Example("diabetes/cases.csv"));
  for (const char* confidence : {"0.95", "0.5"}) {
    const Calibrated calibrated =
        Calibrate(folder, document, holdout, "progression", {"--confidence", confidence});
    ASSERT_EQ(calibrated.run.status, 0) << calibrated.run.err;
    const std::vector<std::string> actual = ColumnsOf(holdout).at("progression");
    int covered = 0;
    for (std::size_t i = 0; i < actual.size(); ++i) {
      covered += Number(calibrated.scores.at("ci_lower")[i]) <= Number(actual[i]) &&
                 Number(actual[i]) <= Number(calibrated.scores.at("ci_upper")[i]);
    }
    EXPECT_EQ(covered, calibrated.report.at("rank")) << confidence;
    EXPECT_EQ(covered, std::ceil(Number(confidence) * 101.0 - 1e-9)) << confidence;
  }
}

// Labels in the unit of an output field, or nearly: the prediction is a tenth of them.
TEST(Calibrate, MeasuresDistancesInTheUnitOfTheLabels) {
  const TemporaryFolder folder;
  const std::string holdout = ReadFile(Example("diabetes/cases.csv"));
  const std::string diabetes = ReadFile(Example("diabetes/model.pmml"));
  const auto with_output = [&](const std::string& factor) {
    return Edited(diabetes,
                  {"*<VectorDictionary",
                   "<Output><OutputField name='p'/><OutputField name='q' "
                   "feature='transformedValue' dataType='double'><Apply function='+'>"
                   "<Apply function='*'><FieldRef field='p'/>" +
                       factor +
                       "</Apply><Constant>70</Constant></Apply></OutputField></Output><Targets>"
                       "<Target rescaleFactor='-0.1' rescaleConstant='7' min='160'/></Targets>"
                       "<VectorDictionary"});
  };
  const Calibrated plain = Calibrate(folder, diabetes, holdout, "progression");
  const Calibrated line =
      Calibrate(folder, with_output("<Constant>-10</Constant>"), holdout, "progression");
  ASSERT_EQ(line.run.status, 0) << line.run.err;
  EXPECT_EQ(line.report.at("outputField"), "q");
  EXPECT_EQ(line.report.at("rank"), plain.report.at("rank"));
  EXPECT_NEAR(line.report.at("halfWidth").get<double>(), plain.report.at("halfWidth").get<double>(),
              1e-9);
  EXPECT_NEAR(line.report.at("standardDeviation").get<double>(),
              plain.report.at("standardDeviation").get<double>(), 1e-9);
  for (const char* said :
       {"-10 times the prediction plus 70", "score --columns raw", "for its target"}) {
    EXPECT_THAT(line.report.at("remarks").dump(), HasSubstr(said));
  }
  const Calibrated curve =
      Calibrate(folder, with_output("<FieldRef field='p'/>"), holdout, "progression");
  EXPECT_EQ(curve.run.status, 5);
  EXPECT_THAT(curve.run.err, HasSubstr("the output field q, which is no straight line"));
}

// Three vectors that a case is compared with, on a plane: f = x - y.
const char* const kPlane = R"(<?xml version="1.0"?>
<PMML version="4.4" xmlns="http://www.dmg.org/PMML-4_4"><DataDictionary>
<DataField name="x" optype="continuous" dataType="double"/>
<DataField name="y" optype="continuous" dataType="double"/>
<DataField name="class" optype="categorical" dataType="string"><Value value="no"/><Value value="yes"/></DataField>
</DataDictionary>
<SupportVectorMachineModel functionName="classification"><MiningSchema><MiningField name="x"/><MiningField name="y"/>
<MiningField name="class" usageType="target"/></MiningSchema>
<Output><OutputField name="p" feature="probability" value="yes"/><OutputField name="label"/></Output>
<LinearKernelType/><VectorDictionary><VectorFields><FieldRef field="x"/><FieldRef field="y"/></VectorFields>
<VectorInstance id="a"><Array type="real" n="2">1 0</Array></VectorInstance>
<VectorInstance id="b"><Array type="real" n="2">0 0.1</Array></VectorInstance></VectorDictionary>
<SupportVectorMachine targetCategory="no" alternateTargetCategory="yes"><SupportVectors><SupportVector vectorId="a"/>
<SupportVector vectorId="b"/></SupportVectors><Coefficients><Coefficient value="1"/><Coefficient value="-10"/>
</Coefficients></SupportVectorMachine></SupportVectorMachineModel></PMML>
)";

// 40 rows, of which some are mislabelled.
std::string PlaneCases() {
  std::string table = "x,y,class\n";
  for (int i = 0; i < 40; ++i) {
    table +=
        FormatNumber(i * 0.25 - 5.0) + ",0.5," + ((i < 20) == (i % 7 != 0) ? "no" : "yes") + "\n";
  }
  return table;
}

TEST(Calibrate, SaysWhatItMeets) {
  const TemporaryFolder folder;
  setenv("SOURCE_DATE_EPOCH", "86400", 1);
  const Calibrated calibrated = Calibrate(
      folder, kPlane,
      PlaneCases() + "1,0,\n1,0,NA\n1,0,perhaps\n,0,no\n1,0,yes\n0,0.1000000001,no\n", "class");
  unsetenv("SOURCE_DATE_EPOCH");
  ASSERT_EQ(calibrated.run.status, 0) << calibrated.run.err;
  EXPECT_THAT(calibrated.document, HasSubstr("1970-01-02T00:00:00Z"));
  const json rows = calibrated.report.at("rows");
  EXPECT_EQ(rows, json::parse(R"({"read": 46, "unlabelled": 2, "unknownLabels": 1, "unscored": 1,
                                  "used": 42})"));
  const std::string remarks = calibrated.report.at("remarks").dump();
  for (const char* said : {"perhaps", "every support vector is among the rows"}) {
    EXPECT_THAT(remarks, HasSubstr(said));
  }
  EXPECT_EQ(calibrated.report.at("before").count("brierScore"), 0);
  std::size_t cases = 0;
  for (const json& tenth : calibrated.report.at("after").at("reliability")) {
    cases += tenth.at("cases").get<std::size_t>();
  }
  EXPECT_EQ(cases, 42);
  // By its votes the other category would win: that is no reason to change what fits the cases.
  const Ran doctor = RunProgram(
      {"doctor",
       folder.Write("votes.pmml", Replaced(calibrated.document, "functionName=\"classification\"",
                                           "functionName=\"classification\" maxWins=\"true\""))});
  EXPECT_THAT(doctor.out, HasSubstr("leave it as it is, and set maxWins"));

  const Ran text =
      RunProgram({"calibrate", folder.Path("model.pmml"), "-", "--actual", "class"},
                 Replaced(Replaced(Replaced(PlaneCases(), "no", "?"), "yes", "no"), "?", "yes"));
  EXPECT_EQ(text.status, 0) << text.err;
  for (const char* said : {"the labels may be exchanged", "by cross-validation in 5 parts",
                           "the model gives no probabilities", "no document is written"}) {
    EXPECT_THAT(text.out, HasSubstr(said));
  }
}

// It predicts 3.
const char* const kConstant = R"(<?xml version="1.0"?>
<PMML version="4.4" xmlns="http://www.dmg.org/PMML-4_4"><DataDictionary>
<DataField name="x" optype="continuous" dataType="double"/>
<DataField name="y" optype="continuous" dataType="double"/></DataDictionary>
<SupportVectorMachineModel functionName="regression"><MiningSchema><MiningField name="x"/>
<MiningField name="y" usageType="target"/></MiningSchema><LinearKernelType/><VectorDictionary><VectorFields>
<FieldRef field="x"/></VectorFields><VectorInstance id="a"><Array type="real" n="1">77</Array></VectorInstance>
</VectorDictionary><SupportVectorMachine><SupportVectors><SupportVector vectorId="a"/></SupportVectors>
<Coefficients absoluteValue="3"><Coefficient value="0"/></Coefficients></SupportVectorMachine>
</SupportVectorMachineModel></PMML>
)";

TEST(Calibrate, DoubtsWhatItIsGiven) {
  const TemporaryFolder folder;
  const auto edited = [](const std::string& example, const std::vector<std::string>& edits) {
    std::string text = ReadFile(Example(example));
    for (std::size_t i = 0; i < edits.size(); i += 2) text = Replaced(text, edits[i], edits[i + 1]);
    return text;
  };
  const struct {
    std::string document;
    std::string holdout;
    const char* actual;
    std::vector<const char*> said;
  } doubts[] = {
      {edited("digits/model.pmml", {}),
       edited("digits/cases.csv", {}),
       "digit",
       {"the probabilities become worse"}},
      {edited("broken/model.pmml", {}),
       edited("iris/cases.csv", {}),
       "species",
       {"those of vote shares", "wrong one of their categories: setosa and virginica; their"}},
      {edited("iris/model.pmml", {}),
       edited("iris/cases.csv", {}),
       "species",
       {"those of vote shares", "few cases"}},
      {edited("iris/model.pmml", {" maxWins=\"true\"", ""}),
       edited("iris/cases.csv", {}),
       "species",
       {"those of vote shares", "more than half of the predictions change"}},
      {edited("iris/model.pmml", {}),
       edited("iris/cases.csv", {}) + ",1,1,1,setosa\n",
       "species",
       {"those of vote shares", "rows that cannot be scored: 1;"}},
      {edited("diabetes/model.pmml",
              {"<VectorDictionary",
               "<Targets><Target rescaleFactor='0.01'/></Targets><VectorDictionary"}),
       edited("diabetes/cases.csv", {}),
       "progression",
       {"may have another unit"}},
      {edited("diabetes/model.pmml", {}), edited("diabetes/cases.csv", {}), "progression", {}},
      {kConstant,
       "x,y\n" + Replaced(std::string(25, '.'), ".", "1,3.0000000000000004\n"),
       "y",
       {"next to no width"}},
      // One label beyond all others is not what the rest is measured by.
      {kConstant, "x,y\n1,1e300\n" + Replaced(std::string(25, '.'), ".", "1,4\n1,2\n"), "y", {}},
  };
  for (const auto& [document, holdout, actual, said] : doubts) {
    const Calibrated calibrated = Calibrate(folder, document, holdout, actual);
    ASSERT_EQ(calibrated.run.status, 0) << calibrated.run.err;
    const json remarks = calibrated.report.at("remarks");
    for (const char* sentence : said) EXPECT_THAT(remarks.dump(), HasSubstr(sentence));
    const bool few = remarks.dump().find("few cases") != std::string::npos;
    const bool told = std::find(said.begin(), said.end(), std::string("few cases")) != said.end();
    EXPECT_EQ(remarks.size(), said.size() + (few && !told ? 1 : 0)) << remarks;
  }
}

TEST(Calibrate, WritesRecordsAnewWhereScoresChange) {
  const TemporaryFolder folder;
  const auto with_records = [&](const std::string& document, const std::string& cases) {
    const std::string path = folder.Path("recorded.pmml");
    const Ran written = RunProgram(
        {"verify", folder.Write("m.pmml", document), "--input", "-", "--write", path}, cases);
    EXPECT_EQ(written.status, 0) << written.err;
    return ReadFile(path);
  };
  const auto verified = [&] {
    return RunProgram({"verify", folder.Path("calibrated.pmml")}).status;
  };
  const Calibrated once = Calibrate(folder, kPlane, PlaneCases(), "class");
  const std::string recorded = with_records(once.document, "x,y\n1,0\n,3\n-2,0.5\n");
  const std::string others = PlaneCases() + "9,0,no\n8,0,no\n7,0,no\n";
  const Calibrated again = Calibrate(folder, recorded, others, "class");
  ASSERT_EQ(again.run.status, 0) << again.run.err;
  EXPECT_EQ(again.report.at("verificationRecords"), "rewritten");
  EXPECT_EQ(verified(), 0);
  EXPECT_THAT(again.document, HasSubstr("recordCount=\"3\""));

  // Records that were wrong before are no measure of anything.
  const Calibrated wrong =
      Calibrate(folder, Edited(recorded, {"*<label>(no|yes)<", "<label>both<"}), others, "class");
  EXPECT_EQ(wrong.report.at("verificationRecords"), "dropped");
  EXPECT_EQ(wrong.document.find("ModelVerification"), std::string::npos);
  const Ran told = RunProgram(
      {"calibrate", folder.Path("model.pmml"), "-", "--actual", "class", "--confidence", "0.9"},
      others);
  EXPECT_THAT(told.out, HasSubstr("for they did not agree with the model before\n"));
  EXPECT_THAT(told.out, HasSubstr("note: --confidence has no effect"));

  const std::string holdout = ReadFile(Example("diabetes/cases.csv"));
  const std::string regression = with_records(ReadFile(Example("diabetes/model.pmml")), holdout);
  const Calibrated kept = Calibrate(folder, regression, holdout, "progression");
  EXPECT_EQ(kept.report.at("verificationRecords"), "kept");
  EXPECT_EQ(WithoutOwn(kept.document), WithoutOwn(regression));
  EXPECT_EQ(verified(), 0);
}

TEST(Calibrate, RefusesWhatItCannotDo) {
  const TemporaryFolder folder;
  const std::string plane = kPlane;
  const std::string iris = ReadFile(Example("iris/model.pmml"));
  const std::string iris_cases = ReadFile(Example("iris/cases.csv"));
  const std::string diabetes = ReadFile(Example("diabetes/model.pmml"));
  const std::string diabetes_cases = ReadFile(Example("diabetes/cases.csv"));
  const std::string few = diabetes_cases.substr(0, diabetes_cases.find("\n", 700) + 1);
  std::string all = Edited(iris, {"OneAgainstOne", "OneAgainstAll"});
  for (const auto& [pair, one] : std::map<std::string, std::string>{
           {"targetCategory=\"setosa\" alternateTargetCategory=\"versicolor\"", "setosa"},
           {"targetCategory=\"setosa\" alternateTargetCategory=\"virginica\"", "versicolor"},
           {"targetCategory=\"versicolor\" alternateTargetCategory=\"virginica\"", "virginica"}}) {
    all = Replaced(all, pair, "targetCategory=\"" + one + "\"");
  }
  const std::string machine =
      plane.substr(plane.find("<SupportVectorMachine "), plane.find("</SupportVectorMachineModel") -
                                                             plane.find("<SupportVectorMachine "));
  std::string entity = Replaced(plane, machine, "&machine;");
  entity = Replaced(
      entity, "<PMML",
      "<!DOCTYPE PMML [<!ENTITY machine '" + Replaced(machine, "'", "&#39;") + "'>]>\n<PMML");
  struct Refusal {
    std::string document;
    std::string holdout;
    std::string actual;
    Arguments options;
    int status;
    const char* said;
  };
  const Refusal refusals[] = {
      {all, iris_cases, "species", {}, 3, "one-against-all"},
      {Edited(iris, {"*alternateTargetCategory='virginica'", "alternateTargetCategory='setosa'"}),
       iris_cases,
       "species",
       {},
       3,
       "cannot be calibrated"},
      {entity, PlaneCases(), "class", {}, 3, "the entity \"machine\""},
      {plane,
       Replaced(PlaneCases(), "yes", "no"),
       "class",
       {},
       5,
       "no usable row has the label yes"},
      {plane, "x,y,class\n1,2,maybe\n,2,yes\n", "class", {}, 5, "no row can be used"},
      {plane, "x,y,class\n1,2,maybe\n", "class", {}, 5, R"(are "maybe", categories "no", "yes")"},
      {plane, "x,y,class\n", "class", {}, 5, "no rows below the header"},
      {plane, PlaneCases(), "x", {}, 5, "the column x is an input of the model"},
      {"no document", PlaneCases(), "x", {"-o", folder.Path("no/such.pmml")}, 6, "cannot write"},
      {plane, PlaneCases(), "klass", {}, 5, "no column is named klass"},
      {diabetes, few, "progression", {}, 5, "it takes 19"},
      {diabetes, few, "progression", {"--confidence", "1"}, 2, "1 is not above 0 and below 1"},
      {plane, PlaneCases(), "class", {"-o", folder.Path("model.pmml")}, 2, "which is read"},
      {plane, PlaneCases(), "class", {"-o", "-"}, 2, "name a file"},
  };
  for (const Refusal& refusal : refusals) {
    SCOPED_TRACE(refusal.said);
    const Calibrated refused =
        Calibrate(folder, refusal.document, refusal.holdout, refusal.actual, refusal.options);
    EXPECT_EQ(refused.run.status, refusal.status) << refused.run.out;
    EXPECT_THAT(refused.run.err, HasSubstr(refusal.said));
    EXPECT_FALSE(std::filesystem::exists(folder.Path("calibrated.pmml")));
  }
}

}  // namespace
}  // namespace svmscore::app
