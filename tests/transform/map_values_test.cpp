// MapValues and its tables.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/transform/fixture.h"

namespace svmscore::transform {
namespace {

const std::string kText = DataField("x", "string");

std::string Pair(const std::string& field, const std::string& column) {
  return "<FieldColumnPair field='" + field + "' column='" + column + "'/>";
}

std::string Map(const std::string& attributes, const std::string& content) {
  return "<MapValues outputColumn='out' " + attributes + ">" + content + "</MapValues>";
}

// The derived field d, mapped from the field x by a table of the columns in and out.
Loaded Mapped(const std::string& field, const std::vector<std::string>& rows,
              const std::string& attributes = "", const std::string& type = "string") {
  const std::string map = Map(attributes, Pair("x", "in") + Table("in;out", rows));
  return Loaded(Document(field, DerivedField("d", type, map)));
}

TEST(MapValues, TellsMissingFromUnmatched) {
  const std::vector<std::string> rows = {"A;3", "B;2", "C"};
  EXPECT_EQ(
      Mapped(kText, rows, "defaultValue='0' mapMissingTo='-1'", "double").DeriveEach("A Z - a C"),
      "3 0 -1 0 missing");
  EXPECT_EQ(Mapped(kText, rows).DeriveEach("Z -"), "missing missing");
}

TEST(MapValues, ComparesKeysInTheFieldsType) {
  const std::vector<std::string> rows = {" 1.0 ;one", "0.1;tenth", "x;never", "-0;zero"};
  EXPECT_EQ(Mapped(DataField("x", "double"), rows).DeriveEach("1 0.10 0 x"),
            "one tenth zero invalid");
  EXPECT_EQ(Mapped(DataField("x", "float"), rows).DeriveEach("0.1"), "tenth");
  EXPECT_EQ(Mapped(kText, rows).DeriveEach("1"), "missing");
  // Two integers that are the same double.
  EXPECT_EQ(
      Mapped(DataField("x", "integer"), {"9223372036854775807;odd", "9223372036854775806;even"})
          .DeriveEach("9223372036854775807 9223372036854775806 9223372036854775805"),
      "odd even missing");
  EXPECT_EQ(Mapped(DataField("x", "date", "ordinal"), {"2024-02-29;leap"}).DeriveEach("2024-02-29"),
            "leap");
}

TEST(MapValues, MatchesAllOfSeveralKeys) {
  const Loaded loaded(
      Document(DataField("a", "string") + DataField("b", "integer"),
               DerivedField("d", "string",
                            Map("mapMissingTo='?' defaultValue='-'",
                                Pair("b", "b") + Pair("a", "a") +
                                    Table("a;b;out", {"x;1;x1", "x;2;x2", "y;1;y1"})))));
  EXPECT_EQ(loaded.Derive("d", {{"a", "x"}, {"b", "2"}}), "x2");
  EXPECT_EQ(loaded.Derive("d", {{"a", "y"}, {"b", "1"}}), "y1");
  EXPECT_EQ(loaded.Derive("d", {{"a", "y"}, {"b", "2"}}), "-");
  EXPECT_EQ(loaded.Derive("d", {{"a", "z"}, {"b", "1"}}), "-");
  EXPECT_EQ(loaded.Derive("d", {{"a", "x"}}), "?");
}

TEST(MapValues, ReadsPrefixedAndSpreadOutCells) {
  const auto run = [](const std::string& column, const std::string& table) {
    return Loaded(Document(kText, DerivedField("d", "string", Map("", Pair("x", column) + table))))
        .DeriveEach("A B");
  };
  const std::string table =
      "<InlineTable><row><data:in xmlns:data='urn:d'>\n   A\n  </data:in><in>B</in>"
      "<out>\n <![CDATA[1 &]]> 2\n</out></row></InlineTable>";
  EXPECT_EQ(run("data:in", table), "1 & 2 missing");
  EXPECT_EQ(run("in", table), "missing 1 & 2");
  // Where no cell has the prefix, the rest of the name is compared.
  EXPECT_EQ(run("data:in", Table("in;out", {"A;1"})), "1 missing");
}

TEST(MapValues, ConvertsToItsTypeAndDoesWithoutATable) {
  EXPECT_EQ(Mapped(kText, {"A;3.0"}, "dataType='double'").DeriveEach("A"), "3");
  const std::string map = Map("defaultValue='1' mapMissingTo='0'", Pair("x", "c"));
  EXPECT_EQ(Loaded(Document(kText, DerivedField("d", "double", map))).DeriveEach("A -"), "1 0");
}

TEST(MapValues, RefusesTablesThatCannotBeMeant) {
  struct Row {
    std::string content;
    std::string refusal;  // its beginning
  };
  const std::string key = Pair("x", "in");
  for (const auto& [content, refusal] : std::vector<Row>{
           {key + "<InlineTable><row><in>1</in><out>a</out></row>\n"
                  "<row><in>1.0</in><out>b</out></row></InlineTable>",
            "260313 at element row, line 6: there are two rows with the key 1.0 in element row "
            "(element row, line 6)"},
           {key + key + key + key + key + key + key + key + key + key + key + key +
                Table("in;out", {"1;a", "1;b"}),
            "260313 at element row, line 5: there are two rows with the key 1, 1, 1, 1, 1, 1, 1, "
            "1, "
            "1, 1 and 2 more in element row"},
           {Pair("x", "no") + Table("in;out", {"1;a"}),
            "260313 at element InlineTable, line 5: no row has the column no"},
           {key + Table("in;other", {"1;a"}),
            "260313 at element InlineTable, line 5: no row has the column out"},
           {Table("in;out", {"1;a"}),
            "260313 at element MapValues, line 5: there is a table, but no FieldColumnPair"},
           {key + "<TableLocator/>",
            "260304 at element TableLocator, line 5: element TableLocator in element MapValues"}}) {
    const std::string field = DerivedField("d", "string", Map("", content));
    EXPECT_EQ(Refusal(Document(DataField("x", "double"), field)).substr(0, refusal.size()),
              refusal);
  }
}

}  // namespace
}  // namespace svmscore::transform
