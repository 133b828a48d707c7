// FieldRef, NormContinuous, NormDiscrete and Discretize.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/text/number_text.h"
#include "tests/transform/call_text.h"
#include "tests/transform/fixture.h"

namespace svmscore::transform {
namespace {

std::string Bin(const std::string& value, const std::string& closure, const std::string& margins) {
  return "<DiscretizeBin binValue='" + value + "'><Interval closure='" + closure + "' " + margins +
         "/></DiscretizeBin>";
}

// The derived field d over the field x.
Loaded Over(const std::string& field, const std::string& type, const std::string& expression) {
  return Loaded(Document(field, DerivedField("d", type, expression)));
}

// Until an input changes, the same values are returned, and they are computed only once.
TEST(DerivedValues, AreKeptWithTheRecord) {
  const Loaded loaded = Over(DataField("x", "double"), "double",
                             "<NormContinuous field='x'><LinearNorm orig='0' norm='0'/>"
                             "<LinearNorm orig='1' norm='10'/></NormContinuous>");
  const auto record = loaded.Record({{"x", "2"}});
  const auto derive = [&] {
    return loaded.Dictionary().GetValuesForDerivedVars(record.get(), loaded.Inputs());
  };
  const auto first = derive();
  const MCZandor_850::ScoreValue* value = first->GetValue("d");
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(value->GetDouble(), 20.0);
  EXPECT_EQ(derive()->GetValue("d"), value);
  record->SetText(0, "3");
  EXPECT_EQ(derive()->GetValue("d")->GetDouble(), 30.0);
  record->SetNumber(0, 4);
  EXPECT_EQ(derive()->GetValue("d")->GetDouble(), 40.0);
  record->SetMissing(0);
  EXPECT_EQ(derive()->GetValue("d"), nullptr);
}

TEST(NormContinuous, FollowsItsPoints) {
  const auto run = [&](const std::string& attributes) {
    return Over(DataField("x", "double"), "double",
                "<NormContinuous field='x' " + attributes +
                    "><LinearNorm orig='2' norm='10'/><Extension/><LinearNorm orig='4' norm='20'/>"
                    "<LinearNorm orig='8' norm='0'/></NormContinuous>")
        .DeriveEach("0 2 3 4 7 8 10 -");
  };
  EXPECT_EQ(run(""), "0 10 15 20 5 0 -10 missing");
  EXPECT_EQ(run("outliers='asIs' mapMissingTo='7'"), "0 10 15 20 5 0 -10 7");
  EXPECT_EQ(run("outliers='asExtremeValues' mapMissingTo='-1'"), "10 10 15 20 5 0 0 -1");
  // A replacement for missing values is not used for outliers that became missing.
  EXPECT_EQ(run("outliers='asMissingValues' mapMissingTo='-1'"), "missing 10 15 20 5 0 missing -1");
}

TEST(NormContinuous, DividesThenMultipliesThenAdds) {
  const Loaded loaded = Over(DataField("x", "double"), "double",
                             "<NormContinuous field='x'><LinearNorm orig='0' norm='-1.2'/>"
                             "<LinearNorm orig='0.3' norm='0.7'/></NormContinuous>");
  for (const double x : {0.1, 0.2, 0.7, 1e-9, -5.3, 123.456}) {
    EXPECT_EQ(loaded.DeriveEach(FormatNumber(x)), FormatNumber(-1.2 + x / 0.3 * (0.7 + 1.2)));
  }
}

TEST(NormContinuous, GoesBetweenPointsThatAreFarApart) {
  const auto run = [](const std::string& points) {
    return Over(DataField("x", "double"), "double",
                "<NormContinuous field='x'>" + points + "</NormContinuous>")
        .DeriveEach("-1e308 0 0.5e308 1e308 1.5e308");
  };
  EXPECT_EQ(run("<LinearNorm orig='-1e308' norm='0'/><LinearNorm orig='1e308' norm='1'/>"),
            "0 0.5 0.75 1 1.25");
  EXPECT_EQ(run("<LinearNorm orig='-1e308' norm='-1e308'/><LinearNorm orig='1e308' norm='1e308'/>"),
            "-1e+308 0 5e+307 1e+308 1.5e+308");
  EXPECT_EQ(run("<LinearNorm orig='0' norm='0'/><LinearNorm orig='1' norm='2'/>"),
            "invalid 0 1e+308 invalid invalid");
}

TEST(NormContinuous, ReadsNumbersOutOfTexts) {
  EXPECT_EQ(Over(DataField("x", "string"), "double",
                 "<NormContinuous field='x'><LinearNorm orig='0' norm='0'/>"
                 "<LinearNorm orig='1' norm='2'/></NormContinuous>")
                .DeriveEach("0.5 half"),
            "1 invalid");
}

TEST(NormDiscrete, ComparesInTheFieldsType) {
  const auto run = [](const std::string& field, const std::string& texts) {
    return Over(field, "double", "<NormDiscrete field='x' value='1' mapMissingTo='0.5'/>")
        .DeriveEach(texts);
  };
  EXPECT_EQ(run(DataField("x", "integer"), "1 1.0 2 -"), "1 1 0 0.5");
  EXPECT_EQ(run(DataField("x", "string"), "1 1.0 -"), "1 0 0.5");
  EXPECT_EQ(run(DataField("x", "boolean", "categorical"), "true false"), "1 0");
}

TEST(NormDiscrete, IsAThermometerOfOrderedValues) {
  const std::string grades = "<Value value='low'/><Value value='mid'/><Value value='high'/>";
  EXPECT_EQ(Over(DataField("x", "string", "ordinal", grades), "double",
                 "<NormDiscrete field='x' value='mid' method='thermometer'/>")
                .DeriveEach("low mid high -"),
            "0 1 1 missing");
  // Without a list the natural order is used.
  EXPECT_EQ(Over(DataField("x", "integer", "ordinal"), "double",
                 "<NormDiscrete field='x' value='5' method='thermometer'/>")
                .DeriveEach("4 5 10"),
            "0 1 1");
}

TEST(Discretize, TakesTheFirstBinThatHoldsTheValue) {
  const auto run = [](const std::string& attributes, const std::string& bins) {
    return Over(DataField("x", "double"), "string",
                "<Discretize field='x' " + attributes + ">" + bins + "</Discretize>")
        .DeriveEach("-1 0 1e-300 1 1.5 2 3 - ?");
  };
  const std::string bins = Bin("low", "openOpen", "rightMargin='0'") +
                           Bin("zero", "closedClosed", "leftMargin='0' rightMargin='0'") +
                           Bin("unit", "openClosed", "leftMargin='0' rightMargin='1'") +
                           Bin("high", "openOpen", "leftMargin='2'");
  EXPECT_EQ(run("", bins), "low zero unit unit missing missing high missing invalid");
  EXPECT_EQ(run("defaultValue='none' mapMissingTo='gone'", bins),
            "low zero unit unit none none high gone invalid");
  EXPECT_EQ(
      run("", Bin("b", "closedOpen", "leftMargin='1'") + Bin("a", "openOpen", "leftMargin='-5'") +
                  Bin("c", "openOpen", "leftMargin='2'")),
      "a a a b b b b missing invalid")
      << "bins that overlap";
  EXPECT_EQ(run("defaultValue='1' mapMissingTo='0'", ""), "1 1 1 1 1 1 1 0 invalid") << "no bins";
}

TEST(Discretize, FindsBinsByTheirOrderAsOneByOne) {
  const char* closures[] = {"openOpen", "openClosed", "closedOpen", "closedClosed"};
  std::string bins;
  for (int i = 0; i < 40; ++i) {
    bins += Bin(
        std::to_string(i), closures[i * 7 % 4],
        "leftMargin='" + std::to_string(i) + "' rightMargin='" + std::to_string(i + i % 2) + "'");
  }
  const auto discretize = [](const std::string& all) {
    return Over(DataField("x", "double"), "string",
                "<Discretize field='x'>" + all + "</Discretize>");
  };
  const Loaded fast = discretize(bins);
  // One more bin at the end that overlaps all others, so that bins are searched one by one.
  const Loaded slow = discretize(bins + Bin("missing", "openOpen", "leftMargin='-9'"));
  for (double x = -1.0; x < 42.0; x += 0.25) {
    const std::string at = std::to_string(x);
    EXPECT_EQ(fast.DeriveEach(at), slow.DeriveEach(at)) << x;
  }
}

TEST(Discretize, ConvertsItsTexts) {
  EXPECT_EQ(Over(DataField("x", "double"), "double",
                 "<Discretize field='x' defaultValue='1'>" +
                     Bin("7.4", "openOpen", "leftMargin='0'") + "</Discretize>")
                .DeriveEach("1 0"),
            "7.4 1");
  EXPECT_EQ(Over(DataField("x", "double"), "string",
                 "<Discretize field='x' dataType='integer'>" +
                     Bin("3.0", "openOpen", "leftMargin='0'") + "</Discretize>")
                .DeriveEach("1"),
            "3");
}

TEST(FieldRef, MapsMissingValuesInTheFieldsType) {
  const std::string map = "<FieldRef field='x' mapMissingTo='3.0'/>";
  EXPECT_EQ(Over(DataField("x", "integer"), "string", map).DeriveEach("5 - five"), "5 3 invalid");
  const Loaded text = Over(DataField("x", "string"), "string", map);
  EXPECT_EQ(text.DeriveEach("-"), "3.0");
  EXPECT_EQ(text.Derive("d", {{"x", ""}}), "");
}

TEST(DerivedFields, HoldTextsOfACaseToSixtyFourMebibytes) {
  std::string fields = DerivedField("d0", "string", "<FieldRef field='x'/>");
  const auto field = [](int i) { return "d" + std::to_string(i); };
  for (int i = 1; i <= 40; ++i) {
    const std::string before = field(i - 1);
    fields += DerivedField(field(i), "string", CallToXml("concat(" + before + ", " + before + ")"));
  }
  // Copies count as well.
  for (int i = 0; i < 4; ++i) {
    fields += DerivedField("copy" + std::to_string(i), "string", "<FieldRef field='d14'/>");
  }
  const Loaded loaded(Document(DataField("x", "string"), fields));
  const Case kilobyte = {{"x", std::string(1000, 'x')}};
  EXPECT_EQ(loaded.Derive("d14", kilobyte).size(), 16384000U);
  EXPECT_EQ(loaded.Derive("d15", kilobyte).size(), 32768000U);
  EXPECT_EQ(loaded.Derive("d40", kilobyte), "invalid");
  EXPECT_EQ(loaded.Derive("copy3", kilobyte), "invalid");
  EXPECT_EQ(loaded.Derive("d10", {{"x", "y"}}), std::string(1024, 'y'));
}

TEST(DerivedFields, TellValuesTakenAsTheyAre) {
  const std::string field =
      DerivedField("d", "string", CallToXml("concat(x, isValid(x), isNotValid(x))"));
  EXPECT_EQ(Loaded(ModelDocument(DataField("x", "string", "", "<Value value='a'/>"),
                                 "<MiningField name='x' invalidValueTreatment='asIs'/>",
                                 "<LocalTransformations>" + field + "</LocalTransformations>",
                                 "<FieldRef field='d'/>"))
                .DeriveEach("a b"),
            "atruefalse bfalsetrue");
}

}  // namespace
}  // namespace svmscore::transform
