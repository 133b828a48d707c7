// Whole documents: those that need no step, and one in two forms.
#include <gtest/gtest.h>

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

// Both vectors together have the value 0.5 x - 3.3 y; given by one coefficient a field the machines
// have the same.
TEST(Documents, ThreeClassesInBothRepresentations) {
  Parts parts;
  parts.Classify();
  parts.target = R"(<DataField name="t" optype="categorical" dataType="string">)"
                 R"(<Value value="low"/><Value value="mid"/><Value value="high"/></DataField>)";
  parts.model += R"( maxWins="true")";
  parts.machines = Parts::Machine(R"(targetCategory="low" alternateTargetCategory="mid")") +
                   Parts::Machine(R"(targetCategory="high" alternateTargetCategory="low")") +
                   Parts::Machine(R"(targetCategory="mid" alternateTargetCategory="high")");
  Parts linear = parts;
  linear.model += R"( svmRepresentation="Coefficients")";
  linear.vectors.clear();
  const std::string support = R"(<SupportVectors><SupportVector vectorId="a"/>)"
                              R"(<SupportVector vectorId="b"/></SupportVectors>)";
  linear.machines =
      Replaced(Replaced(parts.machines, support, ""), R"(value="2"/><Coefficient value="-3")",
               R"(value="0.5"/><Coefficient value="-3.3")");
  const std::string absolute = "absoluteValue=\"0.5\"";
  for (Parts* form : {&parts, &linear}) {
    form->machines.replace(form->machines.rfind(absolute), absolute.size(), "absoluteValue=\"-9\"");
    EXPECT_EQ(Score(form->Text(), {{"x", "1"}, {"y", "0"}}), "high");
    EXPECT_EQ(Score(form->Text(), {{"x", "0"}, {"y", "1"}}), "low") << "one vote each";
  }
}

}  // namespace
}  // namespace svmscore_test
