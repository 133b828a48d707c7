// Whole documents: those that need no step, and one in two forms.
#include <gtest/gtest.h>

#include <regex>

#include "host/pmml/intake.h"
#include "tests/intake/reading.h"

namespace svmscore_test {
namespace {

TEST(Documents, ThisProjectsOwnNeedNoStep) {
  for (const char* name : {"diabetes", "digits", "iris", "tumour"}) {
    auto document =
        svmscore::PmmlDocument::FromFile(std::string(EXAMPLES_FOLDER "/") + name + "/model.pmml");
    EXPECT_TRUE(svmscore::MakeReadable(document, svmscore::IntakeMode::kStrict).empty()) << name;
  }
  EXPECT_EQ(Read(Parts().Text()).Steps(), "");
  Parts parts;
  parts.Classify();
  EXPECT_EQ(Read(parts.Text()).Steps(), "");
}

// A document that was made readable is readable.
TEST(Documents, ASecondReadingChangesNothing) {
  Parts parts;
  parts.Classify();
  parts.root = R"(version="3.2")";
  parts.model += R"( alternateBinaryTargetCategory="no" svmRepresentation="Coefficients")";
  parts.positions = R"(<FieldRef field="x" mapMissingTo="1"/>)"
                    R"(<CategoricalPredictor name="colour" value="red" coefficient="3"/>)";
  parts.vectors = R"(<VectorInstance id="a"><REAL-SparseArray defaultValue="4"/></VectorInstance>)";
  parts.machines = R"(<SupportVectorMachine targetCategory="yes"><Coefficients>)"
                   R"(<Coefficient value="1"/><Coefficient value="2"/></Coefficients>)"
                   R"(</SupportVectorMachine>)";
  Reading reading = Read(parts.Text());
  EXPECT_EQ(reading.steps.size(), 5u) << reading.Steps();
  EXPECT_TRUE(svmscore::MakeReadable(reading.document, svmscore::IntakeMode::kStrict).empty());
}

std::string Machine(const char* labels, const char* absolute, const std::string& support,
                    std::initializer_list<const char*> values) {
  std::string text = "<SupportVectorMachine " + std::string(labels) + '>' + support +
                     "<Coefficients absoluteValue=\"" + absolute + "\">";
  for (const char* value : values) text += "<Coefficient value=\"" + std::string(value) + "\"/>";
  return text + "</Coefficients></SupportVectorMachine>";
}

std::string Support(std::initializer_list<const char*> ids) {
  std::string text = "<SupportVectors>";
  for (const char* id : ids) text += "<SupportVector vectorId=\"" + std::string(id) + "\"/>";
  return text + "</SupportVectors>";
}

// Three classes by size, grade and colour, with global and local derived fields, dense and sparse
// vectors; and the same machines given by one coefficient a field.
TEST(Documents, ThreeClassesInBothRepresentations) {
  const char* const labels[] = {R"(targetCategory="low" alternateTargetCategory="mid")",
                                R"(targetCategory="low" alternateTargetCategory="high")",
                                R"(targetCategory="mid" alternateTargetCategory="high")"};
  Parts parts;
  parts.fields = R"(<DataField name="size" optype="continuous" dataType="double"/>)"
                 R"(<DataField name="colour" optype="categorical" dataType="string">)"
                 R"(<Value value="red"/><Value value="green"/><Value value="blue"/></DataField>)"
                 R"(<DataField name="grade" optype="categorical" dataType="string"/>)";
  parts.target = R"(<DataField name="class" optype="categorical" dataType="string">)"
                 R"(<Value value="low"/><Value value="mid"/><Value value="high"/></DataField>)";
  parts.global =
      R"(<TransformationDictionary><DerivedField name="grade_num" optype="continuous")"
      R"( dataType="double"><MapValues outputColumn="num" dataType="double" defaultValue="0")"
      R"( mapMissingTo="-1"><FieldColumnPair field="grade" column="code"/><InlineTable>)"
      R"(<row><code>A</code><num>3</num></row><row><code>B</code><num>2</num></row>)"
      R"(<row><code>C</code><num>1</num></row></InlineTable></MapValues></DerivedField>)"
      R"(</TransformationDictionary>)";
  parts.model =
      R"(functionName="classification" classificationMethod="OneAgainstOne" maxWins="true")";
  parts.schema = R"(<MiningField name="size" missingValueReplacement="2.5"/>)"
                 R"(<MiningField name="colour" invalidValueTreatment="asMissing"/>)"
                 R"(<MiningField name="grade"/><MiningField name="class" usageType="target"/>)";
  parts.local = R"(<LocalTransformations>)"
                R"(<DerivedField name="is_red" optype="continuous" dataType="double">)"
                R"(<NormDiscrete field="colour" value="red" mapMissingTo="0.5"/></DerivedField>)"
                R"(<DerivedField name="is_blue" optype="continuous" dataType="double">)"
                R"(<NormDiscrete field="colour" value="blue" mapMissingTo="0.5"/></DerivedField>)"
                R"(</LocalTransformations>)";
  parts.positions = R"(<FieldRef field="size"/><FieldRef field="grade_num"/>)"
                    R"(<FieldRef field="is_red"/><FieldRef field="is_blue"/>)";
  parts.vectors = R"(<VectorInstance id="p"><Array n="4">1 1 1 0</Array></VectorInstance>)"
                  R"(<VectorInstance id="q"><Array n="4">3 2 0 1</Array></VectorInstance>)"
                  R"(<VectorInstance id="r"><Array n="4">5 3 0 0</Array></VectorInstance>)"
                  R"(<VectorInstance id="s"><REAL-SparseArray n="4"><Indices>1 4</Indices>)"
                  R"(<REAL-Entries>4 1</REAL-Entries></REAL-SparseArray></VectorInstance>)";
  parts.machines = Machine(labels[0], "0.9", Support({"p", "q"}), {"0.55", "-0.35"}) +
                   Machine(labels[1], "1.65", Support({"p", "r"}), {"0.4", "-0.2"}) +
                   Machine(labels[2], "2.1", Support({"q", "s", "r"}), {"0.3", "0.1", "-0.45"});
  Parts linear = parts;
  linear.model += R"( svmRepresentation="Coefficients")";
  linear.vectors.clear();
  linear.machines = Machine(labels[0], "0.9", "", {"-0.5", "-0.15", "0.55", "-0.35"}) +
                    Machine(labels[1], "1.65", "", {"-0.6", "-0.2", "0.4", "0"}) +
                    Machine(labels[2], "2.1", "", {"-0.95", "-0.75", "0", "0.4"});
  for (const Parts& form : {parts, linear}) {
    const std::string text = form.Text();
    EXPECT_EQ(Score(text, {{"size", "1.5"}, {"colour", "red"}, {"grade", "A"}}), "low");
    EXPECT_EQ(Score(text, {{"colour", "blue"}, {"grade", "B"}}), "high");
    EXPECT_EQ(Score(text, {{"size", "2.1"}, {"colour", "purple"}, {"grade", "Z"}}), "mid");
    EXPECT_EQ(Score(text, {{"size", "1.5"}, {"colour", "green"}, {"grade", "B"}}), "low");
    EXPECT_EQ(Score(text, {{"colour", "blue"}}), "mid");
  }
}

}  // namespace
}  // namespace svmscore_test
