// svmscore calibrate, from a labelled hold-out to a document that scores as it says.
#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <sstream>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "host/text/number_text.h"
#include "tests/app/edited.h"
#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"
#include "tests/calibrate/calibrated.h"

namespace svmscore::app {
namespace {

using nlohmann::json;
using testing::HasSubstr;

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

}  // namespace
}  // namespace svmscore::app
