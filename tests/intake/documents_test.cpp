// Whole documents: those that need no step, and one in two forms.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "host/message_codes.h"
#include "host/pmml/intake.h"
#include "host/pmml/loader.h"
#include "host/score_case_record.h"
#include "host/score_result.h"
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

// Machines whose probabilities stand in another order, or are those of the other category.
TEST(Documents, ProbabilitiesOfPairsInAnyOrder) {
  Parts parts;
  parts.Classify();
  parts.target = R"(<DataField name="t" optype="categorical" dataType="string">)"
                 R"(<Value value="a"/><Value value="b"/><Value value="c"/></DataField>)";
  parts.model += R"( classificationMethod="OneAgainstOne")";
  const auto machine = [](const std::string& response, const std::string& other, int a, int b) {
    return Replaced(Parts::Machine("targetCategory=\"" + response +
                                   "\" alternateTargetCategory=\"" + other + '"'),
                    "<SupportVectors>",
                    R"(<Extension extender="svmscore"><ResponseCategory response=")" + response +
                        R"(" nonResponse=")" + other + R"("/><ProbabilityParameters A=")" +
                        std::to_string(a) + R"(" B=")" + std::to_string(b) +
                        R"("/></Extension><SupportVectors>)");
  };
  const auto probabilities = [&](const std::string& machines) {
    parts.machines = machines;
    auto loaded = svmscore::LoadModel(svmscore::Plugin(SVMSCORE_PLUGIN_FILE),
                                      svmscore::PmmlDocument::FromText(parts.Text(), "test.pmml"));
    MCZandor_850::InputCaseRecord record(loaded.needed, false, false);
    for (std::size_t i = 0; i < record.Size(); ++i) record.SetNumber(i, 0.25);
    MCZandor_850::ScoreResult* result = nullptr;
    loaded.model->GetScore(&record, result, false);
    const std::unique_ptr<MCZandor_850::ScoreResult> owner(result);
    std::vector<double> all;
    auto* classification = dynamic_cast<MCZandor_850::ScoreClsResult*>(result);
    for (const auto& [category, percent] : classification->GetAllValuePercent()) {
      all.push_back(percent);
    }
    return all;
  };
  const std::string ab = machine("a", "b", 1, -2);
  const std::string ac = machine("a", "c", -1, 0);
  const std::string bc = machine("b", "c", 2, 1);
  const std::vector<double> ordered = probabilities(ab + ac + bc);
  EXPECT_EQ(Read(parts.Text()).Steps(), "");
  EXPECT_EQ(probabilities(bc + ab + ac), ordered);
  EXPECT_EQ(Read(parts.Text()).Steps(), "pairs-ordered 1");
  const std::vector<double> reversed = probabilities(ab + machine("c", "a", 1, 0) + bc);
  ASSERT_EQ(reversed.size(), 3u);
  for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(reversed[i], ordered[i], 1e-14);
  EXPECT_GT(std::abs(ordered[0] - ordered[1]), 0.01);
  // Two machines for one pair.
  parts.machines = ab + ac + ac;
  EXPECT_EQ(Read(parts.Text()).Steps(), "pairs-unordered 1");
  const auto error = Refusal(parts.Text(), svmscore::IntakeMode::kStrict);
  EXPECT_EQ(error.GetErrorCode(), svmscore::code::kBadContent);
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
