// Names, versions and spellings.
#include <regex>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/intake/document_parts.h"

namespace svmscore_test {
namespace {

TEST(Names, APrefixChangesNothing) {
  Parts parts;
  parts.Classify();
  parts.local =
      "<LocalTransformations><DerivedField name='d' optype='continuous'"
      " dataType='double'><MapValues outputColumn='n' dataType='double'>"
      "<FieldColumnPair field='colour' column='c'/><InlineTable>"
      "<row><c>red</c><n>3</n></row></InlineTable></MapValues></DerivedField>"
      "</LocalTransformations>";
  parts.positions = "<FieldRef field='x'/><FieldRef field='d'/>";
  parts.machines = Replaced(parts.machines, "<SupportVectors>",
                            Sigmoid("yes", "no", -1, 0) + "<SupportVectors>");
  // The cells of tables keep their names.
  const std::string prefixed =
      std::regex_replace(parts.Text(), std::regex("<(/?)([A-Z]|row)"), "<$1p:$2");
  const Reading reading =
      Read(Replaced(prefixed, "<p:PMML ", "<p:PMML xmlns:p='https://www.dmg.org/PMML-4_4' "));
  ASSERT_EQ(reading.findings.size(), 1u);
  EXPECT_EQ(reading.findings[0].Name(), "namespace-prefix");
  EXPECT_EQ(reading.Show("SupportVectorMachineModel"),
            Read(parts.Text()).Show("SupportVectorMachineModel"));
}

TEST(Names, ForeignContentKeepsItsNames) {
  Parts parts;
  parts.root += " xmlns:o='urn:other' xmlns:q='http://www.dmg.org/PMML-4_4'";
  parts.global = "<Extension extender='me'><q:Value/></Extension><o:Target/>";
  const Reading reading = Read(parts.Text());
  EXPECT_EQ(reading.Steps(), "element-ignored");
  EXPECT_NE(reading.Show("q:Value"), "");
  EXPECT_NE(reading.Show("o:Target"), "");
}

// Listed by name among a model's descendants, they would be taken for its own.
TEST(Names, PartsInsideAnExtensionAreNone) {
  Parts parts;
  const double expected = Predict(parts.Text(), At("1", "2"));
  parts.machines = Replaced(
      parts.machines, "<Coefficient value='2'",
      "<Extension><note><Coefficient value='9'/></note></Extension><Coefficient value='2'");
  parts.vectors = "<Extension><VectorInstance id='z'/></Extension>" + parts.vectors;
  EXPECT_EQ(Read(parts.Text()).Steps(), "extension-content 2");
  EXPECT_EQ(Predict(parts.Text(), At("1", "2")), expected);
}

TEST(Version, IsTakenFromAttributeOrNamespace) {
  Parts parts;
  const struct {
    std::string root;
    std::string steps;
    std::string version;
  } cases[] = {
      {Version('3', '2'), "", "3.2"},
      {"version='4.2.1' xmlns='http://www.dmg.org/PMML-4_2'", "", "4.2.1"},
      {"version='3.2' xmlns='http://www.dmg.org/PMML-4_4'", "version-disagreement", "3.2"},
      {"xmlns='https://www.dmg.org/PMML-3_1'", "version-from-namespace", "3.1"},
      {"version='next' xmlns='http://www.dmg.org/PMML-4_0'", "version-from-namespace", "4.0"},
      {"version='' xmlns=''", "namespace-missing, version-assumed", "4.4"},
      {"version='4' xmlns='http://www.dmg.org/PMML-4_4'", "", "4"},
      {"version=' 4.1' xmlns='http://www.dmg.org/PMML-4_1'", "version-spelling", "4.1"},
      {"version='4.4' xmlns='urn:other'", "namespace-unknown", "4.4"},
      {"version='4.5' xmlns='http://www.dmg.org/PMML-4_5'", "namespace-unknown", "4.5"},
  };
  for (const auto& [root, steps, version] : cases) {
    parts.root = root;
    const Reading reading = Read(parts.Text());
    EXPECT_EQ(reading.Steps(), steps) << root;
    EXPECT_NE(reading.Show("PMML").find("version='" + version + '\''), std::string::npos) << root;
  }
  for (const char* root : {"version='5.0'", "version='40.4'", "version='1.1'",
                           "xmlns='http://www.dmg.org/PMML-9_0'"}) {
    parts.root = root;
    const Reading reading = Read(parts.Text());
    EXPECT_THAT(reading.Steps(), testing::EndsWith("version-unknown")) << root;
    EXPECT_THAT(reading.Show("PMML"), testing::HasSubstr("version='4.4'")) << root;
    EXPECT_EQ(Refusal(parts.Text(), svmscore::IntakeMode::kStrict), "260308 PMML:1") << root;
  }
}

TEST(Spellings, OfBooleansMethodsAndTypes) {
  Parts parts;
  parts.Classify();
  parts.model += " maxWins='1' classificationMethod='oneAgainstAll'";
  parts.fields = "<DataField name='x' optype='continuous' datatype='xs:double'/>" +
                 Field("y", "continuous", "xs:int") + Field("colour", "categorical", "string");
  const Reading reading = Read(parts.Text());
  EXPECT_EQ(reading.Steps(), "boolean-spelling, method-spelling, data-type-spelling 2");
  const std::string model = reading.Show("SupportVectorMachineModel");
  EXPECT_EQ(model.substr(0, model.find('>')),
            "<SupportVectorMachineModel classificationMethod='OneAgainstAll' "
            "functionName='classification' maxWins='true'");
  EXPECT_EQ(reading.Show("DataField"),
            "<DataField dataType='double' datatype='xs:double' name='x' optype='continuous'>"
            "</DataField>");
  EXPECT_EQ(reading.Show("DataField", 1),
            "<DataField dataType='integer' name='y' optype='continuous'></DataField>");
}

}  // namespace
}  // namespace svmscore_test
