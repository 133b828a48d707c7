// What cannot be right, or is not supported, is refused while a document is loaded: by code,
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

// The derived field stands on line 5 of the document.
std::string RefusalOf(const std::string& expression) {
  return Refusal(Document(DataField("x", "double"), DerivedField("d", "double", expression)));
}

struct Case {
  std::string expression;
  std::string place;  // code and element
  std::string words;
};

TEST(Refusals, NamePlaceAndReason) {
  const std::string x = " field=\"x\"";
  const std::string bin = "<DiscretizeBin binValue=\"a\">";
  for (const Case& bad : std::vector<Case>{
           {"", "260313 at element DerivedField", "no expression"},
           {"<Constant>1</Constant><Constant>1</Constant>", "260313 at element Constant", "second"},
           {"<Interval/>", "260304 at element Interval", "Interval in element DerivedField"},
           {"<Aggregate field=\"x\" function=\"sum\"/>", "260304 at element Aggregate",
            "Aggregate"},
           {"<Lag field=\"x\"/>", "260304 at element Lag", "element Lag"},
           {"<Magic/>", "260304 at element Magic", "element Magic"},
           {"<FieldRef/>", "260120 at element FieldRef", "field"},
           {"<FieldRef field=\"nowhere\"/>", "260311 at element FieldRef", "nowhere"},
           {"<FieldRef" + x + " mapMissingTo=\"one\"/>", "260313 at element FieldRef", "\"one\""},
           {"<Constant dataType=\"integer\">1.5</Constant>", "260313 at element Constant", "1.5"},
           {"<Constant dataType=\"date\">2023-02-30</Constant>", "260313 at element Constant",
            "2023-02-30"},
           {"<Constant dataType=\"money\">1</Constant>", "260153 at element Constant", "money"},
           {"<NormContinuous" + x + "><LinearNorm orig=\"1\" norm=\"0\"/></NormContinuous>",
            "260313 at element NormContinuous", "fewer than two"},
           {"<NormContinuous" + x +
                "><LinearNorm orig=\"1\" norm=\"0\"/><LinearNorm orig=\"1\" norm=\"0\"/>"
                "</NormContinuous>",
            "260313 at element LinearNorm", "not greater"},
           {"<NormContinuous" + x + "><LinearNorm orig=\"a\" norm=\"0\"/></NormContinuous>",
            "260153 at element LinearNorm", "\"a\""},
           {"<NormContinuous" + x + " outliers=\"asIt\"/>", "260153 at element NormContinuous",
            "asIt"},
           {"<NormDiscrete" + x + "/>", "260120 at element NormDiscrete", "value"},
           {"<NormDiscrete" + x + " value=\"1\" method=\"thermometer\"/>",
            "260304 at element NormDiscrete", "thermometer"},
           {"<Discretize" + x + ">" + bin + "</DiscretizeBin></Discretize>",
            "260313 at element DiscretizeBin", "no Interval"},
           {"<Discretize" + x + ">" + bin +
                "<Interval closure=\"openOpen\"/></DiscretizeBin></Discretize>",
            "260313 at element Interval", "leftMargin"},
           {"<Discretize" + x + ">" + bin +
                "<Interval closure=\"openOpen\" leftMargin=\"2\" rightMargin=\"1\"/>"
                "</DiscretizeBin></Discretize>",
            "260313 at element Interval", "greater"},
           {"<Discretize" + x + ">" + bin +
                "<Interval closure=\"open\" leftMargin=\"2\"/></DiscretizeBin></Discretize>",
            "260153 at element Interval", "open"},
           {"<MapValues/>", "260120 at element MapValues", "outputColumn"},
           {CallToXml("sinus(x)"), "260314 at element Apply", "sinus"},
           {CallToXml("format-datetime(x, '%Y')"), "260314 at element Apply", "format-datetime"},
           {CallToXml("-(x)"), "260315 at element Apply", "- is given 1 arguments and takes 2"},
           {CallToXml("if(x)"), "260315 at element Apply", "2 to 3"},
           {CallToXml("avg()"), "260315 at element Apply", "1 or more"},
           {CallToXml("matches('a', '(')"), "260313 at element Apply", "no regular expression"},
           {CallToXml("replace('a', 'b', '$x')"), "260313 at element Apply", "dollar"},
           {CallToXml("formatNumber(x, '%s')"), "260313 at element Apply", "%s"},
           {CallToXml("formatNumber(x, '%d%d')"), "260313 at element Apply", "one conversion"},
           {CallToXml("formatNumber(x, '%99999d')"), "260313 at element Apply", "99999"},
           {CallToXml("formatDatetime(x, '%Q')"), "260313 at element Apply", "%Q"},
           {CallToXml("dateDaysSinceYear('2023-02-30', 1960)"), "260313 at element Apply",
            "\"2023-02-30\" is no date"},
           {CallToXml("dateDaysSinceYear(x, 'then')"), "260313 at element Apply", "no year"},
           {"<Apply function=\"+\" invalidValueTreatment=\"asValue\">" + CallToXml("1") +
                CallToXml("1") + "</Apply>",
            "260153 at element Apply", "asValue"},
       }) {
    EXPECT_THAT(RefusalOf(bad.expression),
                ::testing::AllOf(StartsWith(bad.place + ", line 5"), HasSubstr(bad.words)))
        << bad.expression;
  }
}

// What a document fixes is converted once, to the type that it ends in.
TEST(Refusals, MeetTextsThatAreNotOfTheirType) {
  const std::string x = " field=\"x\"";
  const std::string bin =
      "<Interval closure=\"openOpen\" leftMargin=\"1\"/></DiscretizeBin></Discretize>";
  const auto map = [](const std::string& attributes, const std::string& field,
                      const std::string& key, const std::string& output) {
    return "<MapValues outputColumn=\"o\"" + attributes + "><FieldColumnPair field=\"" + field +
           "\" column=\"k\"/><InlineTable><row><k>" + key + "</k><o>" + output +
           "</o></row></InlineTable></MapValues>";
  };
  const std::string fields = DataField("x", "double") + DataField("day", "date", "ordinal");
  for (const Case& bad : std::vector<Case>{
           {"<Constant>abc</Constant>", "260313 at element Constant", "\"abc\""},
           {"<Discretize" + x + "><DiscretizeBin binValue=\"abc\">" + bin,
            "260313 at element DiscretizeBin", "binValue \"abc\" is not of the type double"},
           {"<Discretize" + x + " dataType=\"integer\"><DiscretizeBin binValue=\"2.5\">" + bin,
            "260313 at element DiscretizeBin", "of the type integer"},
           {"<Discretize" + x + " dataType=\"date\"><DiscretizeBin binValue=\"2024-02-29\">" + bin,
            "260313 at element DiscretizeBin", "of the type double"},
           {"<Discretize" + x + " defaultValue=\"z\"/>", "260313 at element Discretize",
            "defaultValue"},
           {"<Discretize" + x + " mapMissingTo=\"z\"/>", "260313 at element Discretize",
            "mapMissingTo"},
           {map("", "x", "1", "abc"), "260313 at element row", "the cell o \"abc\""},
           {map("", "day", "2024-02-30", "1"), "260313 at element row",
            "the cell k \"2024-02-30\""},
           {map(" defaultValue=\"z\"", "x", "1", "1"), "260313 at element MapValues", "default"},
           {map(" mapMissingTo=\"z\"", "x", "1", "1"), "260313 at element MapValues", "mapMiss"},
           {"<NormDiscrete field=\"day\" value=\"2024-02-30\"/>", "260313 at element NormDiscrete",
            "of the type date"},
           {"<Apply function=\"abs\" defaultValue=\"z\"><FieldRef" + x + "/></Apply>",
            "260313 at element Apply", "defaultValue \"z\" is not of the type double"},
           {"<Apply function=\"abs\" mapMissingTo=\"2024-02-29\"><FieldRef" + x + "/></Apply>",
            "260313 at element Apply", "mapMissingTo"},
       }) {
    EXPECT_THAT(Refusal(Document(fields, DerivedField("d", "double", bad.expression))),
                ::testing::AllOf(StartsWith(bad.place + ", line 6"), HasSubstr(bad.words)))
        << bad.expression;
  }
  for (const std::string& good :
       {map("", "x", "abc", "1"), map("", "x", "1", " "), map("", "day", "2024-02-29", ""),
        std::string("<NormDiscrete field=\"day\" value=\"2024-02-29T12:00:00\"/>"),
        std::string("<NormDiscrete field=\"x\" value=\"abc\"/>"),
        std::string("<Apply function=\"abs\"><Apply function=\"abs\" defaultValue=\"z\">"
                    "<FieldRef field=\"x\"/></Apply></Apply>")}) {
    EXPECT_EQ(Refusal(Document(fields, DerivedField("d", "double", good))), "") << good;
  }
}

TEST(Refusals, CoverFieldsAndContainers) {
  const std::string one = "<Constant>1</Constant>";
  const std::string twice = DerivedField("d", "double", one) + DerivedField("d", "double", one);
  EXPECT_THAT(Refusal(Document("", twice)), StartsWith("260310 at element DerivedField, line 5"));
  EXPECT_THAT(Refusal(Document("", "<DerivedField optype=\"continuous\" dataType=\"double\">" +
                                       one + "</DerivedField>")),
              StartsWith("260120 at element DerivedField"));
  EXPECT_THAT(Refusal(Document("", "<DerivedField name=\"d\" dataType=\"dateDaysSince[1961]\">" +
                                       one + "</DerivedField>")),
              StartsWith("260153 at element DerivedField"));
  EXPECT_THAT(Refusal(Document("", "<SomethingNew/>")),
              StartsWith("260304 at element SomethingNew"));
  EXPECT_THAT(Refusal(Document("", "<DefineFunction name=\"f\">" + one + "</DefineFunction>")),
              HasSubstr("no ParameterField"));
  // A wrong function is refused although nothing calls it, and so is a field that nothing needs.
  EXPECT_THAT(Refusal(Document("", "<DefineFunction name=\"f\"><ParameterField name=\"p\"/>" +
                                       CallToXml("g(p)") + "</DefineFunction>")),
              StartsWith("260314 at element Apply"));
  EXPECT_THAT(Refusal(ModelDocument("", "",
                                    "<TransformationDictionary>" +
                                        DerivedField("d", "double", "<Lag field=\"x\"/>") +
                                        "</TransformationDictionary>",
                                    "", "")),
              StartsWith("260304 at element Lag"));
}

TEST(Refusals, SpareExtensionsAndPrefixes) {
  EXPECT_EQ(
      Refusal("<p:PMML xmlns:p=\"urn:p\" version=\"4.4\"><DataDictionary/>"
              "<TransformationDictionary><Extension><Lag/></Extension><X-note/>"
              "<p:DerivedField name=\"d\" optype=\"continuous\" dataType=\"double\" x-a=\"1\">"
              "<Extension/><p:Constant>1</p:Constant></p:DerivedField>"
              "</TransformationDictionary></p:PMML>"),
      "");
}

TEST(Refusals, BoundWhatCallsComeTo) {
  const auto doubling = [](int levels) {
    std::string functions;
    for (int i = 0; i < levels; ++i) {
      const std::string inner = i == 0 ? "p" : "f" + std::to_string(i - 1) + "(p)";
      functions += "<DefineFunction name=\"f" + std::to_string(i) +
                   "\"><ParameterField name=\"p\"/>" +
                   CallToXml("+(" + inner + ", " + inner + ")") + "</DefineFunction>\n";
    }
    return Refusal(Document("", functions));
  };
  EXPECT_EQ(doubling(10), "");
  EXPECT_THAT(doubling(30), ::testing::AllOf(StartsWith("260313 at element Apply, line 22"),
                                             HasSubstr("the function f17 comes to more than")));
}

TEST(Refusals, BoundTheNesting) {
  const auto nested = [](int depth) {
    std::string xml;
    for (int i = 0; i < depth; ++i) xml += "<Apply function=\"abs\">";
    xml += "<FieldRef field=\"x\"/>";
    for (int i = 0; i < depth; ++i) xml += "</Apply>";
    return xml;
  };
  EXPECT_EQ(RefusalOf(nested(990)), "");
  EXPECT_THAT(RefusalOf(nested(1500)), HasSubstr("nest more than"));
  // Calls of functions count for as much as they nest themselves, in either order of definition.
  for (const bool callers_first : {true, false}) {
    std::string functions;
    for (int i = 0; i < 1500; ++i) {
      const std::string next = i == 1499 ? "p" : "f" + std::to_string(i + 1) + "(p)";
      const std::string function = "<DefineFunction name=\"f" + std::to_string(i) +
                                   "\"><ParameterField name=\"p\"/>" + CallToXml(next) +
                                   "</DefineFunction>";
      functions = callers_first ? functions + function : function + functions;
    }
    EXPECT_THAT(Refusal(Document("", functions)), HasSubstr("nest more than")) << callers_first;
  }
}

}  // namespace
}  // namespace svmscore::transform
