// FieldRef, NormContinuous, NormDiscrete and Discretize.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/number_text.h"
#include "tests/transform/call_text.h"
#include "tests/transform/fixture.h"

namespace svmscore::transform {
namespace {

using ::testing::ElementsAre;

std::string IntervalOf(const std::string& closure, const std::string& margins) {
  return "<Interval closure=\"" + closure + "\" " + margins + "/>";
}

std::string Bin(const std::string& value, const std::string& interval) {
  return "<DiscretizeBin binValue=\"" + value + "\">" + interval + "</DiscretizeBin>";
}

Loaded Over(const std::string& field, const std::string& type, const std::string& expression) {
  return Loaded(Document(field, DerivedField("d", type, expression)));
}

TEST(NormContinuous, FollowsItsPoints) {
  const Case cases[] = {{{"x", "0"}}, {{"x", "2"}}, {{"x", "3"}},  {{"x", "4"}},
                        {{"x", "7"}}, {{"x", "8"}}, {{"x", "10"}}, {}};
  const auto run = [&](const std::string& attributes) {
    const std::string points =
        "<LinearNorm orig=\"2\" norm=\"10\"/><Extension/><LinearNorm orig=\"4\" norm=\"20\"/>"
        "<LinearNorm orig=\"8\" norm=\"0\"/>";
    return Over(DataField("x", "double"), "double",
                "<NormContinuous field=\"x\" " + attributes + ">" + points + "</NormContinuous>")
        .DeriveAll("d", {std::begin(cases), std::end(cases)});
  };
  EXPECT_THAT(run(""), ElementsAre("0", "10", "15", "20", "5", "0", "-10", "missing"));
  EXPECT_THAT(run("outliers=\"asIs\" mapMissingTo=\"7\""),
              ElementsAre("0", "10", "15", "20", "5", "0", "-10", "7"));
  EXPECT_THAT(run("outliers=\"asExtremeValues\" mapMissingTo=\"-1\""),
              ElementsAre("10", "10", "15", "20", "5", "0", "0", "-1"));
  // A replacement for missing values is none for outliers that became missing.
  EXPECT_THAT(run("outliers=\"asMissingValues\" mapMissingTo=\"-1\""),
              ElementsAre("missing", "10", "15", "20", "5", "0", "missing", "-1"));
}

TEST(NormContinuous, DividesThenMultipliesThenAdds) {
  const Loaded loaded = Over(DataField("x", "double"), "double",
                             "<NormContinuous field=\"x\"><LinearNorm orig=\"0\" norm=\"-1.2\"/>"
                             "<LinearNorm orig=\"0.3\" norm=\"0.7\"/></NormContinuous>");
  for (const double x : {0.1, 0.2, 0.7, 1e-9, -5.3, 123.456}) {
    const auto record = loaded.Record({{"x", svmscore::FormatNumber(x)}});
    const double read = record->GetValue(std::string("x"))->GetDouble();
    const double expected = -1.2 + read / 0.3 * (0.7 + 1.2);
    EXPECT_EQ(loaded.Dictionary()
                  .GetValuesForDerivedVars(record.get(), loaded.Inputs())
                  ->GetValue(std::string("d"))
                  ->GetDouble(),
              expected);
  }
}

TEST(NormContinuous, ReadsNumbersOutOfTexts) {
  const Loaded loaded = Over(DataField("x", "string"), "double",
                             "<NormContinuous field=\"x\"><LinearNorm orig=\"0\" norm=\"0\"/>"
                             "<LinearNorm orig=\"1\" norm=\"2\"/></NormContinuous>");
  EXPECT_THAT(loaded.DeriveAll("d", {{{"x", "0.5"}}, {{"x", "half"}}}),
              ElementsAre("1", "invalid"));
}

TEST(NormDiscrete, ComparesInTheFieldsType) {
  const std::string norm = "<NormDiscrete field=\"x\" value=\"1\" mapMissingTo=\"0.5\"/>";
  EXPECT_THAT(Over(DataField("x", "integer"), "double", norm)
                  .DeriveAll("d", {{{"x", "1"}}, {{"x", "1.0"}}, {{"x", "2"}}, {}}),
              ElementsAre("1", "1", "0", "0.5"));
  EXPECT_THAT(Over(DataField("x", "string"), "double", norm)
                  .DeriveAll("d", {{{"x", "1"}}, {{"x", "1.0"}}, {}}),
              ElementsAre("1", "0", "0.5"));
  EXPECT_THAT(Over(DataField("x", "boolean", "categorical"), "integer", norm)
                  .DeriveAll("d", {{{"x", "true"}}, {{"x", "false"}}}),
              ElementsAre("1", "0"));
  EXPECT_EQ(Over(DataField("x", "string"), "double", "<NormDiscrete field=\"x\" value=\"a\"/>")
                .Derive("d", {}),
            "missing");
}

TEST(NormDiscrete, IsAThermometerOfOrderedValues) {
  const std::string grades = "<Value value=\"low\"/><Value value=\"mid\"/><Value value=\"high\"/>";
  const std::string norm = "<NormDiscrete field=\"x\" value=\"mid\" method=\"thermometer\"/>";
  EXPECT_THAT(Over(DataField("x", "string", "ordinal", grades), "double", norm)
                  .DeriveAll("d", {{{"x", "low"}}, {{"x", "mid"}}, {{"x", "high"}}, {}}),
              ElementsAre("0", "1", "1", "missing"));
  // Without a list the natural order counts.
  EXPECT_THAT(Over(DataField("x", "integer", "ordinal"), "double",
                   "<NormDiscrete field=\"x\" value=\"5\" method=\"thermometer\"/>")
                  .DeriveAll("d", {{{"x", "4"}}, {{"x", "5"}}, {{"x", "10"}}}),
              ElementsAre("0", "1", "1"));
}

TEST(Discretize, TakesTheFirstBinThatHoldsTheValue) {
  const std::string bins =
      Bin("low", IntervalOf("openOpen", "rightMargin=\"0\"")) +
      Bin("zero", IntervalOf("closedClosed", "leftMargin=\"0\" rightMargin=\"0\"")) +
      Bin("unit", IntervalOf("openClosed", "leftMargin=\"0\" rightMargin=\"1\"")) +
      Bin("high", IntervalOf("openOpen", "leftMargin=\"2\""));
  const std::vector<Case> cases = {{{"x", "-1"}},  {{"x", "0"}}, {{"x", "1e-300"}}, {{"x", "1"}},
                                   {{"x", "1.5"}}, {{"x", "2"}}, {{"x", "3"}},      {},
                                   {{"x", "?"}}};
  const auto run = [&](const std::string& attributes, const std::string& content) {
    return Over(DataField("x", "double"), "string",
                "<Discretize field=\"x\" " + attributes + ">" + content + "</Discretize>")
        .DeriveAll("d", cases);
  };
  EXPECT_THAT(run("", bins), ElementsAre("low", "zero", "unit", "unit", "missing", "missing",
                                         "high", "missing", "invalid"));
  EXPECT_THAT(
      run("defaultValue=\"none\" mapMissingTo=\"gone\"", bins),
      ElementsAre("low", "zero", "unit", "unit", "none", "none", "high", "gone", "invalid"));
  // Overlapping and unordered bins.
  const std::string overlapping = Bin("b", IntervalOf("closedOpen", "leftMargin=\"1\"")) +
                                  Bin("a", IntervalOf("openOpen", "leftMargin=\"-5\"")) +
                                  Bin("c", IntervalOf("openOpen", "leftMargin=\"2\""));
  EXPECT_THAT(run("", overlapping),
              ElementsAre("a", "a", "a", "b", "b", "b", "b", "missing", "invalid"));
  // Without bins it tells whether there is a value.
  EXPECT_THAT(run("defaultValue=\"1\" mapMissingTo=\"0\"", ""),
              ElementsAre("1", "1", "1", "1", "1", "1", "1", "0", "invalid"));
}

TEST(Discretize, FindsBinsByTheirOrderAsOneByOne) {
  std::string bins;
  for (int i = 0; i < 40; ++i) {
    const char* closures[] = {"openOpen", "openClosed", "closedOpen", "closedClosed"};
    bins += Bin(
        std::to_string(i),
        IntervalOf(closures[i * 7 % 4], "leftMargin=\"" + std::to_string(i) + "\" rightMargin=\"" +
                                            std::to_string(i + i % 2) + "\""));
  }
  const std::string plain = "<Discretize field=\"x\">" + bins + "</Discretize>";
  // One more bin that reaches over all others, at the end: the search is one by one.
  const std::string slow = "<Discretize field=\"x\">" + bins +
                           Bin("all", IntervalOf("openOpen", "leftMargin=\"-9\"")) +
                           "</Discretize>";
  const Loaded fast_one = Over(DataField("x", "double"), "string", plain);
  const Loaded slow_one = Over(DataField("x", "double"), "string", slow);
  for (double x = -1.0; x < 42.0; x += 0.25) {
    const Case at = {{"x", std::to_string(x)}};
    const std::string expected = slow_one.Derive("d", at);
    EXPECT_EQ(fast_one.Derive("d", at), expected == "all" ? "missing" : expected) << x;
  }
}

TEST(Discretize, ConvertsItsTexts) {
  const std::string bins = Bin("7.4", IntervalOf("openOpen", "leftMargin=\"0\"")) +
                           Bin("-2", IntervalOf("openOpen", "rightMargin=\"0\""));
  EXPECT_THAT(Over(DataField("x", "double"), "double",
                   "<Discretize field=\"x\" defaultValue=\"1\">" + bins + "</Discretize>")
                  .DeriveAll("d", {{{"x", "1"}}, {{"x", "0"}}, {{"x", "-1"}}}),
              ElementsAre("7.4", "1", "-2"));
  EXPECT_EQ(Over(DataField("x", "double"), "string",
                 "<Discretize field=\"x\" dataType=\"integer\">" +
                     Bin("3.0", IntervalOf("openOpen", "leftMargin=\"0\"")) + "</Discretize>")
                .Derive("d", {{"x", "1"}}),
            "3");
}

TEST(FieldRef, MapsMissingValuesInTheFieldsType) {
  const std::string fields = DataField("n", "integer") + DataField("t", "string");
  const Loaded loaded(Document(
      fields, DerivedField("dn", "string", "<FieldRef field=\"n\" mapMissingTo=\"3.0\"/>") +
                  DerivedField("dt", "string", "<FieldRef field=\"t\" mapMissingTo=\"3.0\"/>")));
  EXPECT_THAT(loaded.DeriveAll("dn", {{{"n", "5"}}, {}, {{"n", "five"}}}),
              ElementsAre("5", "3", "invalid"));
  EXPECT_THAT(loaded.DeriveAll("dt", {{{"t", ""}}, {}}), ElementsAre("", "3.0"));
}

TEST(DerivedFields, TellValuesTakenAsTheyAre) {
  const Loaded loaded(
      ModelDocument(
          DataField("x", "string", "", "<Value value=\"a\"/>"),
          "<MiningField name=\"x\" invalidValueTreatment=\"asIs\"/>", "",
          "<LocalTransformations>" +
              DerivedField("d", "string", CallToXml("concat(x, isValid(x), isNotValid(x))")) +
              "</LocalTransformations>",
          "<FieldRef field=\"d\"/>"),
      "LocalTransformations");
  EXPECT_THAT(loaded.DeriveAll("d", {{{"x", "a"}}, {{"x", "b"}}}),
              ElementsAre("atruefalse", "bfalsetrue"));
}

TEST(DerivedFields, SeeTreatedValues) {
  const Loaded loaded(
      ModelDocument(
          DataField("x", "double", "",
                    "<Interval closure=\"closedClosed\" leftMargin=\"-50\" rightMargin=\"150\"/>"
                    "<Value value=\"-999\" property=\"missing\"/>"),
          "<MiningField name=\"x\" invalidValueTreatment=\"asMissing\" "
          "outliers=\"asExtremeValues\" highValue=\"100\"/>",
          "",
          "<LocalTransformations>" + DerivedField("d", "double", "<FieldRef field=\"x\"/>") +
              "</LocalTransformations>",
          "<FieldRef field=\"d\"/>"),
      "LocalTransformations");
  const MCZandor_850::NumericValue twenty(20.0);
  auto* stats = new MCZandor_850::VarStats();
  stats->SetMissingReplacement(&twenty);
  loaded.Inputs()->FindVar("x")->SetVarStats(stats);
  EXPECT_THAT(
      loaded.DeriveAll(
          "d",
          {{{"x", "30"}}, {{"x", "-999"}}, {{"x", "160"}}, {{"x", "120"}}, {{"x", "abc"}}, {}}),
      ElementsAre("30", "20", "20", "100", "20", "20"));
}

}  // namespace
}  // namespace svmscore::transform
