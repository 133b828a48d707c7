// What cannot be correct, or is not supported, is refused while a document is loaded, with code,
// element and line.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/transform/call_text.h"
#include "tests/transform/fixture.h"

namespace svmscore::transform {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

struct Bad {
  std::string expression;
  std::string place;  // code and element
  std::string words;
};

// Each is in a derived field of type double, on line 6 of the document.
std::string RefusalOf(const std::string& expression) {
  const std::string fields = DataField("x", "double") + DataField("day", "date", "ordinal");
  return Refusal(Document(fields, DerivedField("d", "double", expression)));
}

void CheckAll(const std::vector<Bad>& table) {
  for (const auto& [expression, place, words] : table) {
    std::string start = place;
    start.insert(start.find(' '), " at element");
    EXPECT_THAT(RefusalOf(expression),
                ::testing::AllOf(StartsWith(start + ", line 6"), HasSubstr(words)))
        << expression;
  }
}

std::string OneBin(const std::string& attributes, const std::string& value, const std::string& in) {
  return "<Discretize field='x'" + attributes + "><DiscretizeBin binValue='" + value + "'>" + in +
         "</DiscretizeBin></Discretize>";
}

TEST(Refusals, NamePlaceAndReason) {
  const std::string interval = "<Interval closure='openOpen' leftMargin='2' ";
  CheckAll(
      {{"", "260313 DerivedField", "no expression"},
       {"<Constant>1</Constant><Constant>1</Constant>", "260313 Constant", "second"},
       {"<Interval/>", "260304 Interval", "Interval in element DerivedField"},
       {"<Magic/>", "260304 Magic", "element Magic"},
       {"<FieldRef/>", "260120 FieldRef", "field"},
       {"<FieldRef field='nowhere'/>", "260311 FieldRef", "nowhere"},
       {"<FieldRef field='x' mapMissingTo='one'/>", "260313 FieldRef", "\"one\""},
       {"<Constant dataType='date'>2023-02-30</Constant>", "260313 Constant", "2023-02-30"},
       {"<Constant dataType='money'>1</Constant>", "260153 Constant", "money"},
       {"<NormContinuous field='x'><LinearNorm orig='1' norm='0'/></NormContinuous>",
        "260313 NormContinuous", "fewer than two"},
       {"<NormContinuous field='x'><LinearNorm orig='1' norm='0'/>"
        "<LinearNorm orig='1' norm='0'/></NormContinuous>",
        "260313 LinearNorm", "not greater"},
       {"<NormContinuous field='x'><LinearNorm orig='a' norm='0'/></NormContinuous>",
        "260153 LinearNorm", "\"a\""},
       {"<NormContinuous field='x' outliers='asIt'/>", "260153 NormContinuous", "asIt"},
       {"<NormDiscrete field='x'/>", "260120 NormDiscrete", "value"},
       {"<NormDiscrete field='x' value='1' method='thermometer'/>", "260304 NormDiscrete",
        "thermometer"},
       {OneBin("", "1", ""), "260313 DiscretizeBin", "no Interval"},
       {OneBin("", "1", "<Interval closure='openOpen'/>"), "260313 Interval", "leftMargin"},
       {OneBin("", "1", interval + "rightMargin='1'/>"), "260313 Interval", "greater"},
       {OneBin("", "1", "<Interval closure='open' leftMargin='2'/>"), "260153 Interval", "open"},
       {"<MapValues/>", "260120 MapValues", "outputColumn"},
       {"<Apply function='abs' invalidValueTreatment='asValue'><FieldRef field='x'/></Apply>",
        "260153 Apply", "asValue"}});
}

TEST(Refusals, OfCallsNameTheFunctionOrItsArgument) {
  const std::vector<std::vector<std::string>> calls = {
      {"sinus(x)", "260314", "sinus"},
      {"-(x)", "260315", "- is given 1 arguments but takes 2"},
      {"if(x)", "260315", "2 to 3"},
      {"avg()", "260315", "1 or more"},
      {"matches('a', '(')", "260313", "not a regular expression"},
      {"replace('a', 'b', '$x')", "260313", "dollar"},
      {"formatNumber(x, '%s')", "260313", "%s"},
      {"formatNumber(x, '%d%d')", "260313", "one conversion"},
      {"formatNumber(x, '%99999d')", "260313", "99999"},
      {"formatDatetime(x, '%Q')", "260313", "%Q"},
      {"dateDaysSinceYear('2023-02-30', 1960)", "260313", "\"2023-02-30\" is not a date"},
      {"dateDaysSinceYear(x, 'then')", "260313", "not a year"}};
  for (const auto& row : calls) CheckAll({{CallToXml(row[0]), row[1] + " Apply", row[2]}});
}

// A constant of a document is converted once, to the final type.
TEST(Refusals, MeetTextsThatAreNotOfTheirType) {
  const std::string interval = "<Interval closure='openOpen' leftMargin='1'/>";
  const auto map = [](const std::string& attributes, const std::string& field,
                      const std::string& row) {
    return "<MapValues outputColumn='o'" + attributes + "><FieldColumnPair field='" + field +
           "' column='k'/>" + Table("k;o", {row}) + "</MapValues>";
  };
  CheckAll(
      {{"<Constant>abc</Constant>", "260313 Constant", "\"abc\""},
       {"<Constant dataType='integer'>1.5</Constant>", "260313 Constant", "1.5"},
       {OneBin("", "abc", interval), "260313 DiscretizeBin",
        "binValue \"abc\" is not of the type double"},
       {OneBin(" dataType='integer'", "2.5", interval), "260313 DiscretizeBin",
        "of the type integer"},
       {OneBin(" dataType='date'", "2024-02-29", interval), "260313 DiscretizeBin",
        "the type double"},
       {"<Discretize field='x' defaultValue='z'/>", "260313 Discretize", "defaultValue"},
       {"<Discretize field='x' mapMissingTo='z'/>", "260313 Discretize", "mapMissingTo"},
       {map("", "x", "1;abc"), "260313 row", "the cell o \"abc\""},
       {map("", "day", "2024-02-30;1"), "260313 row", "the cell k \"2024-02-30\""},
       {map(" defaultValue='z'", "x", "1;1"), "260313 MapValues", "default"},
       {map(" mapMissingTo='z'", "x", "1;1"), "260313 MapValues", "mapMiss"},
       {"<NormDiscrete field='day' value='2024-02-30'/>", "260313 NormDiscrete", "the type date"},
       {"<Apply function='abs' defaultValue='z'><FieldRef field='x'/></Apply>", "260313 Apply",
        "defaultValue \"z\" is not of the type double"},
       {"<Apply function='abs' mapMissingTo='2024-02-29'><FieldRef field='x'/></Apply>",
        "260313 Apply", "mapMissingTo"}});
  for (const std::string& good :
       {map("", "x", "abc;1"), map("", "x", "1; "), map("", "day", "2024-02-29; "),
        std::string("<NormDiscrete field='day' value='2024-02-29T12:00:00'/>"),
        std::string("<NormDiscrete field='x' value='abc'/>"),
        std::string("<Apply function='abs'><Apply function='abs' defaultValue='z'>"
                    "<FieldRef field='x'/></Apply></Apply>")}) {
    EXPECT_EQ(RefusalOf(good), "") << good;
  }
}

TEST(Refusals, CoverFieldsAndContainers) {
  const std::string one = "<Constant>1</Constant>";
  const std::string twice = DerivedField("d", "double", one) + DerivedField("d", "double", one);
  const std::string parameter = "<DefineFunction name='f'><ParameterField name='p'/>";
  // A wrong function is refused even if nothing calls it, and so is a field that nothing needs.
  for (const auto& [transformations, start] :
       Case{{twice, "260310 at element DerivedField, line 5"},
            {"<DerivedField optype='continuous' dataType='double'>" + one + "</DerivedField>",
             "260120 at element DerivedField"},
            {"<DerivedField name='d' dataType='dateDaysSince[1961]'>" + one + "</DerivedField>",
             "260153 at element DerivedField"},
            {"<SomethingNew/>", "260304 at element SomethingNew"},
            {"<DefineFunction name='f'>" + one + "</DefineFunction>",
             "260313 at element DefineFunction, line 4: there is no ParameterField"},
            {parameter + CallToXml("g(p)") + "</DefineFunction>", "260314 at element Apply"}}) {
    EXPECT_THAT(Refusal(Document("", transformations)), StartsWith(start));
  }
  // A field that the model does not need may be of any kind; one that it needs may not.
  const std::string lag = DerivedField("d", "double", "<Lag field='x'/>");
  const auto refusal = [&lag](const std::string& positions) {
    return Refusal(ModelDocument(
        "", "", "<TransformationDictionary>" + lag + "</TransformationDictionary>", positions));
  };
  EXPECT_EQ(refusal(""), "");
  EXPECT_THAT(refusal("<FieldRef field='d'/>"), StartsWith("260304 at element Lag"));
}

TEST(Refusals, SpareExtensions) {
  EXPECT_EQ(Refusal("<PMML version='4.4'><DataDictionary/>"
                    "<TransformationDictionary><Extension><Lag/></Extension><X-note/>"
                    "<DerivedField name='d' optype='continuous' dataType='double' x-a='1'>"
                    "<Extension/><Constant>1</Constant></DerivedField>"
                    "</TransformationDictionary></PMML>"),
            "");
}

// A function f0, f1, ... of a parameter p.
std::string Define(int number, const std::string& call) {
  return "<DefineFunction name='f" + std::to_string(number) + "'><ParameterField name='p'/>" +
         CallToXml(call) + "</DefineFunction>\n";
}

TEST(Refusals, BoundWhatCallsComeTo) {
  const auto doubling = [](int levels) {
    std::string functions = Define(0, "+(p, p)");
    for (int i = 1; i < levels; ++i) {
      const std::string inner = "f" + std::to_string(i - 1) + "(p)";
      functions += Define(i, "+(" + inner + ", " + inner + ")");
    }
    return Refusal(Document("", functions));
  };
  EXPECT_EQ(doubling(10), "");
  EXPECT_THAT(doubling(30), ::testing::AllOf(StartsWith("260313 at element Apply, line 22"),
                                             HasSubstr("the function f17 evaluates more than")));
  // None of these calls is too large.
  std::string functions = Define(0, "+(p, p)");
  for (int i = 1; i < 14; ++i) {
    const std::string inner = "f" + std::to_string(i - 1) + "(p)";
    functions += Define(i, "+(" + inner + ", " + inner + ")");
  }
  std::string fields;
  for (int i = 0; i < 500; ++i) {
    fields += DerivedField("d" + std::to_string(i), "double", CallToXml("f13(1)"));
  }
  EXPECT_THAT(Refusal(Document("", functions + fields)),
              HasSubstr("up to this one evaluate more than 10000000 expressions"));
}

TEST(Refusals, BoundTheNesting) {
  const auto nested = [](int depth) {
    std::string xml = "<FieldRef field='x'/>";
    for (int i = 0; i < depth; ++i) xml = "<Apply function='abs'>" + xml + "</Apply>";
    return xml;
  };
  EXPECT_EQ(RefusalOf(nested(990)), "");
  EXPECT_THAT(RefusalOf(nested(1500)), HasSubstr("nested more than"));
  // Calls of functions count as deep as they nest themselves, in either order of definition.
  for (const bool callers_first : {true, false}) {
    std::string functions;
    for (int i = 0; i < 1500; ++i) {
      const std::string function = Define(i, i == 1499 ? "p" : "f" + std::to_string(i + 1) + "(p)");
      functions = callers_first ? functions + function : function + functions;
    }
    EXPECT_THAT(Refusal(Document("", functions)), HasSubstr("nested more than")) << callers_first;
  }
}

}  // namespace
}  // namespace svmscore::transform
