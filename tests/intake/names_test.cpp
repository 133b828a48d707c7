// Names, versions and spellings.
#include <gtest/gtest.h>

#include "host/message_codes.h"
#include "tests/intake/reading.h"

namespace svmscore_test {
namespace {

namespace code = svmscore::code;

// Every element but the cells of tables, whose names are small here, as p:Name.
std::string Prefixed(const std::string& text) {
  std::string prefixed;
  for (std::size_t i = 0; i < text.size(); ++i) {
    prefixed += text[i];
    const char last = text[i];
    const bool opens = last == '<' || (last == '/' && i > 0 && text[i - 1] == '<');
    if (opens && i + 1 < text.size() && text[i + 1] >= 'A' && text[i + 1] <= 'Z') prefixed += "p:";
  }
  return Replaced(Replaced(prefixed, "<row>", "<p:row>"), "</row>", "</p:row>");
}

TEST(Names, APrefixChangesNothing) {
  Parts parts;
  parts.Classify();
  parts.local = R"(<LocalTransformations><DerivedField name="d" optype="continuous")"
                R"( dataType="double"><MapValues outputColumn="n" dataType="double">)"
                R"(<FieldColumnPair field="colour" column="c"/><InlineTable>)"
                R"(<row><c>red</c><n>3</n></row></InlineTable></MapValues></DerivedField>)"
                R"(</LocalTransformations>)";
  parts.positions = R"(<FieldRef field="x"/><FieldRef field="d"/>)";
  parts.machines = Replaced(
      parts.machines, "<SupportVectors>",
      R"(<Extension extender="svmscore"><ResponseCategory response="yes" nonResponse="no"/>)"
      R"(<ProbabilityParameters A="-1" B="0"/></Extension><SupportVectors>)");
  const std::string plain = parts.Text();
  const std::string prefixed =
      Replaced(Prefixed(plain), "<p:PMML ", R"(<p:PMML xmlns:p="https://www.dmg.org/PMML-4_4" )");
  const Reading reading = Read(prefixed);
  EXPECT_EQ(reading.steps.size(), 1u);
  EXPECT_EQ(reading.steps[0].name, "namespace-prefix");
  EXPECT_EQ(reading.Show("SupportVectorMachineModel"),
            Read(plain).Show("SupportVectorMachineModel"));
}

TEST(Names, ForeignContentKeepsItsNames) {
  Parts parts;
  parts.root += R"( xmlns="http://www.dmg.org/PMML-4_4" xmlns:o="urn:other")"
                R"( xmlns:q="http://www.dmg.org/PMML-4_4")";
  parts.global = R"(<Extension extender="me"><q:Value/></Extension><o:Target/>)";
  const Reading reading = Read(parts.Text());
  EXPECT_EQ(reading.Steps(), "element-ignored 1");
  EXPECT_NE(reading.Show("q:Value"), "");
  EXPECT_NE(reading.Show("o:Target"), "");
}

// Listed by name among a model's descendants, they would stand in for its own.
TEST(Names, PartsInsideAnExtensionAreNone) {
  Parts parts;
  const std::string expected = Score(parts.Text(), {{"x", "1"}, {"y", "2"}});
  parts.machines = Replaced(
      parts.machines, R"(<Coefficient value="2")",
      R"(<Extension><note><Coefficient value="9"/></note></Extension><Coefficient value="2")");
  parts.vectors = R"(<Extension><VectorInstance id="z"/></Extension>)" + parts.vectors;
  EXPECT_EQ(Read(parts.Text()).Steps(), "extension-content 2");
  EXPECT_EQ(Score(parts.Text(), {{"x", "1"}, {"y", "2"}}), expected);
}

TEST(Version, IsTakenFromAttributeOrNamespace) {
  const struct {
    std::string root;
    std::string steps;
    std::string version;
  } cases[] = {
      {R"(version="3.2")", "", "3.2"},
      {R"(version="4.2.1" xmlns="http://www.dmg.org/PMML-4_2")", "", "4.2.1"},
      {R"(version="4.3" xmlns="http://www.dmg.org/PMML-4_4")", "version-disagreement 1", "4.3"},
      {R"(xmlns="https://www.dmg.org/PMML-3_1")", "version-from-namespace 1", "3.1"},
      {R"(version="next" xmlns="http://www.dmg.org/PMML-4_0")", "version-from-namespace 1", "4.0"},
      {R"(version="" xmlns="")", "namespace-missing 1, version-assumed 1", "4.4"},
      {R"(version="4")", "", "4"},
      {R"(version=" 4.1" xmlns="http://www.dmg.org/PMML-4_1")", "version-spelling 1", "4.1"},
      {R"(version="4.4" xmlns="urn:other")", "namespace-unknown 1", "4.4"},
      {R"(version="4.5" xmlns="http://www.dmg.org/PMML-4_5")", "namespace-unknown 1", "4.5"},
  };
  for (const auto& [root, steps, version] : cases) {
    Parts parts;
    parts.root = root;
    const Reading reading = Read(parts.Text());
    EXPECT_EQ(reading.Steps(), steps) << root;
    EXPECT_NE(reading.Show("PMML").find("version=\"" + version + '"'), std::string::npos) << root;
  }
}

TEST(Version, OfUnknownMajorNumberIsRefused) {
  for (const char* root : {R"(version="5.0")", R"(version="40.4")", R"(version="1.1")",
                           R"(xmlns="http://www.dmg.org/PMML-9_0")"}) {
    Parts parts;
    parts.root = root;
    EXPECT_EQ(Refusal(parts.Text()).GetErrorCode(), code::kUnknownVersion) << root;
  }
}

TEST(Spellings, OfBooleansMethodsAndTypes) {
  Parts parts;
  parts.Classify();
  parts.model += R"( maxWins="1" isScorable="TRUE" classificationMethod="oneAgainstAll")";
  parts.fields = R"(<DataField name="x" optype="continuous" datatype="xs:double"/>)"
                 R"(<DataField name="y" optype="continuous" dataType="xs:int"/>)";
  parts.schema = Replaced(parts.schema, R"(<MiningField name="colour"/>)", "");
  const Reading reading = Read(parts.Text());
  EXPECT_EQ(reading.Steps(), "boolean-spelling 1, method-spelling 1, data-type-spelling 2");
  EXPECT_NE(reading.Show("SupportVectorMachineModel").find(R"(maxWins="true")"), std::string::npos);
  EXPECT_NE(reading.Show("DataField", 1).find(R"(dataType="integer")"), std::string::npos);
  EXPECT_EQ(Score(parts.Text(), {{"x", "4"}, {"y", "0"}}), "yes");
}

// "0" would be taken for a model that may be scored.
TEST(Spellings, NotScorableIsHeard) {
  Parts parts;
  parts.model += R"( isScorable="0")";
  EXPECT_THROW(Score(parts.Text(), {}), MCZandor_850::SSException);
}

}  // namespace
}  // namespace svmscore_test
