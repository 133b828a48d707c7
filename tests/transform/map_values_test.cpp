// MapValues and its tables.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/transform/fixture.h"

namespace svmscore::transform {
namespace {

using ::testing::ElementsAre;

std::string Map(const std::string& attributes, const std::string& pairs, const std::string& rows) {
  return "<MapValues outputColumn=\"out\" " + attributes + ">" + pairs + "<InlineTable>" + rows +
         "</InlineTable></MapValues>";
}

std::string Pair(const std::string& field, const std::string& column) {
  return "<FieldColumnPair field=\"" + field + "\" column=\"" + column + "\"/>";
}

std::string Row(const std::string& in, const std::string& out) {
  return "<row><in>" + in + "</in><out>" + out + "</out></row>";
}

Loaded Mapped(const std::string& fields, const std::string& type, const std::string& map) {
  return Loaded(Document(fields, DerivedField("d", type, map)));
}

TEST(MapValues, TellsMissingFromUnmatched) {
  const std::string rows = Row("A", "3") + Row("B", "2") + "<row><in>C</in></row>";
  EXPECT_THAT(Mapped(DataField("g", "string"), "double",
                     Map("defaultValue=\"0\" mapMissingTo=\"-1\"", Pair("g", "in"), rows))
                  .DeriveAll("d", {{{"g", "A"}}, {{"g", "Z"}}, {}, {{"g", "a"}}, {{"g", "C"}}}),
              ElementsAre("3", "0", "-1", "0", "missing"));
  EXPECT_THAT(Mapped(DataField("g", "string"), "double", Map("", Pair("g", "in"), rows))
                  .DeriveAll("d", {{{"g", "Z"}}, {}}),
              ElementsAre("missing", "missing"));
}

TEST(MapValues, ComparesKeysInTheFieldsType) {
  const std::string rows =
      Row(" 1.0 ", "one") + Row("0.1", "tenth") + Row("x", "never") + Row("-0", "zero");
  EXPECT_THAT(Mapped(DataField("g", "double"), "string", Map("", Pair("g", "in"), rows))
                  .DeriveAll("d", {{{"g", "1"}}, {{"g", "0.10"}}, {{"g", "0"}}, {{"g", "x"}}}),
              ElementsAre("one", "tenth", "zero", "invalid"));
  EXPECT_EQ(Mapped(DataField("g", "float"), "string", Map("", Pair("g", "in"), rows))
                .Derive("d", {{"g", "0.1"}}),
            "tenth");
  EXPECT_EQ(Mapped(DataField("g", "string"), "string", Map("", Pair("g", "in"), rows))
                .Derive("d", {{"g", "1"}}),
            "missing");
  // Two integers that no double tells apart.
  const std::string large = Row("9223372036854775807", "odd") + Row("9223372036854775806", "even");
  EXPECT_THAT(Mapped(DataField("g", "integer"), "string", Map("", Pair("g", "in"), large))
                  .DeriveAll("d", {{{"g", "9223372036854775807"}},
                                   {{"g", "9223372036854775806"}},
                                   {{"g", "9223372036854775805"}}}),
              ElementsAre("odd", "even", "missing"));
  EXPECT_EQ(Mapped(DataField("g", "date", "ordinal"), "string",
                   Map("", Pair("g", "in"), Row("2024-02-29", "leap")))
                .Derive("d", {{"g", "2024-02-29"}}),
            "leap");
}

TEST(MapValues, MatchesAllOfSeveralKeys) {
  const auto row = [](const char* a, const char* b, const char* out) {
    return std::string("<row><a>") + a + "</a><b>" + b + "</b><out>" + out + "</out></row>";
  };
  const std::string rows = row("x", "1", "x1") + row("x", "2", "x2") + row("y", "1", "y1");
  const Loaded loaded =
      Mapped(DataField("a", "string") + DataField("b", "integer"), "string",
             Map("mapMissingTo=\"?\" defaultValue=\"-\"", Pair("b", "b") + Pair("a", "a"), rows));
  EXPECT_THAT(loaded.DeriveAll("d", {{{"a", "x"}, {"b", "2"}},
                                     {{"a", "y"}, {"b", "1"}},
                                     {{"a", "y"}, {"b", "2"}},
                                     {{"a", "z"}, {"b", "1"}},
                                     {{"a", "x"}}}),
              ElementsAre("x2", "y1", "-", "-", "?"));
}

TEST(MapValues, ReadsPrefixedAndSpreadOutCells) {
  const std::string rows =
      "<row><data:in xmlns:data=\"urn:d\">\n   A\n  </data:in><in>B</in>"
      "<out>\n <![CDATA[1 &]]> 2\n</out></row>";
  EXPECT_EQ(Mapped(DataField("g", "string"), "string", Map("", Pair("g", "data:in"), rows))
                .Derive("d", {{"g", "A"}}),
            "1 & 2");
  EXPECT_EQ(Mapped(DataField("g", "string"), "string", Map("", Pair("g", "in"), rows))
                .Derive("d", {{"g", "B"}}),
            "1 & 2");
  // Where no cell has the prefix, the rest of the name counts.
  EXPECT_EQ(Mapped(DataField("g", "string"), "string", Map("", Pair("g", "data:in"), Row("A", "1")))
                .Derive("d", {{"g", "A"}}),
            "1");
}

TEST(MapValues, ConvertsTwice) {
  EXPECT_EQ(Mapped(DataField("g", "string"), "string",
                   Map("dataType=\"double\"", Pair("g", "in"), Row("A", "3.0")))
                .Derive("d", {{"g", "A"}}),
            "3");
  EXPECT_EQ(Mapped(DataField("g", "string"), "double", Map("", Pair("g", "in"), Row("A", "0.1")))
                .Derive("d", {{"g", "A"}}),
            "0.1");
}

TEST(MapValues, DoesWithoutATable) {
  const std::string map =
      "<MapValues outputColumn=\"none\" defaultValue=\"1\" mapMissingTo=\"0\">" + Pair("g", "c") +
      "</MapValues>";
  EXPECT_THAT(Mapped(DataField("g", "string"), "double", map).DeriveAll("d", {{{"g", "A"}}, {}}),
              ElementsAre("1", "0"));
}

TEST(MapValues, RefusesTablesThatCannotBeMeant) {
  const auto refusal = [](const std::string& map) {
    return Refusal(Document(DataField("g", "double"), DerivedField("d", "string", map)));
  };
  EXPECT_EQ(refusal(Map("", Pair("g", "in"), Row("1", "a") + "\n" + Row("1.0", "b"))),
            "260313 at element row, line 6: there are two rows of the key 1.0 in element row "
            "(element row, line 6)");
  EXPECT_THAT(
      refusal(Map("", Pair("g", "no"), Row("1", "a"))),
      ::testing::StartsWith("260313 at element InlineTable, line 5: no row has the column no"));
  EXPECT_THAT(refusal("<MapValues outputColumn=\"no\">" + Pair("g", "in") + "<InlineTable>" +
                      Row("1", "a") + "</InlineTable></MapValues>"),
              ::testing::HasSubstr("no row has the column no"));
  EXPECT_THAT(refusal(Map("", "", Row("1", "a"))), ::testing::HasSubstr("no FieldColumnPair"));
  EXPECT_THAT(
      refusal("<MapValues outputColumn=\"o\">" + Pair("g", "in") + "<TableLocator/></MapValues>"),
      ::testing::StartsWith(
          "260304 at element TableLocator, line 5: element TableLocator in element MapValues"));
}

}  // namespace
}  // namespace svmscore::transform
