// Whole documents: the derived fields of two small models, with values worked out by hand.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "host/number_text.h"
#include "tests/transform/fixture.h"

namespace svmscore::transform {
namespace {

TEST(Examples, NormaliseTemperatureAndLoad) {
  const Loaded loaded(
      ModelDocument(
          DataField("temp", "double", "",
                    "<Interval closure=\"closedClosed\" leftMargin=\"-50\" rightMargin=\"150\"/>"
                    "<Value value=\"-999\" property=\"missing\"/>") +
              DataField("load", "double"),
          "<MiningField name=\"temp\" invalidValueTreatment=\"asMissing\"/>"
          "<MiningField name=\"load\" outliers=\"asExtremeValues\" lowValue=\"0\" "
          "highValue=\"200\"/>",
          "",
          "<LocalTransformations>" +
              DerivedField(
                  "n_temp", "double",
                  "<NormContinuous field=\"temp\" outliers=\"asExtremeValues\">"
                  "<LinearNorm orig=\"0\" norm=\"0\"/><LinearNorm orig=\"20\" norm=\"0.4\"/>"
                  "<LinearNorm orig=\"60\" norm=\"1\"/></NormContinuous>") +
              DerivedField("n_load", "double",
                           "<NormContinuous field=\"load\"><LinearNorm orig=\"0\" norm=\"-1.2\"/>"
                           "<LinearNorm orig=\"60\" norm=\"0\"/></NormContinuous>") +
              "</LocalTransformations>",
          "<FieldRef field=\"n_temp\"/><FieldRef field=\"n_load\"/>"),
      "LocalTransformations");
  const MCZandor_850::NumericValue twenty(20.0);
  auto* stats = new MCZandor_850::VarStats();
  stats->SetMissingReplacement(&twenty);
  loaded.Inputs()->FindVar("temp")->SetVarStats(stats);
  const auto near = [&](const Case& values, const std::string& name, double expected) {
    EXPECT_NEAR(*ParseNumber(loaded.Derive(name, values)), expected, 1e-14) << name;
  };
  near({{"temp", "30"}, {"load", "85"}}, "n_temp", 0.55);
  near({{"temp", "30"}, {"load", "85"}}, "n_load", 0.5);
  near({{"temp", "-999"}, {"load", "20"}}, "n_temp", 0.4);
  near({{"temp", "-999"}, {"load", "20"}}, "n_load", -0.8);
  near({{"temp", "abc"}, {"load", "250"}}, "n_temp", 0.4);
  near({{"temp", "abc"}, {"load", "250"}}, "n_load", 2.8);
  EXPECT_EQ(loaded.Derive("n_load", {{"load", "abc"}}), "invalid");
  EXPECT_EQ(loaded.Derive("n_load", {}), "missing");
}

TEST(Examples, EncodeColourAndGrade) {
  const std::string rows =
      "<row><code>A</code><num>3</num></row><row><code>B</code><num>2</num></row>"
      "<row><code>C</code><num>1</num></row>";
  const Loaded loaded(Document(
      DataField("colour", "string") + DataField("grade", "string"),
      DerivedField("grade_num", "double",
                   "<MapValues outputColumn=\"num\" dataType=\"double\" defaultValue=\"0\" "
                   "mapMissingTo=\"-1\"><FieldColumnPair field=\"grade\" column=\"code\"/>"
                   "<InlineTable>" +
                       rows + "</InlineTable></MapValues>") +
          DerivedField("is_red", "double",
                       "<NormDiscrete field=\"colour\" value=\"red\" mapMissingTo=\"0.5\"/>")));
  const auto row = [&](const Case& values) {
    return loaded.Derive("grade_num", values) + " " + loaded.Derive("is_red", values);
  };
  EXPECT_EQ(row({{"colour", "red"}, {"grade", "A"}}), "3 1");
  EXPECT_EQ(row({{"grade", "Z"}}), "0 0.5");
  EXPECT_EQ(row({{"colour", "blue"}}), "-1 0");
}

}  // namespace
}  // namespace svmscore::transform
