// What a model tells of itself for explanations: entries, vectors as cases, and when it has none.
#include <gtest/gtest.h>

#include "tests/model/model_fixture.h"

namespace {

using namespace svmscore_test;  // NOLINT

// Positions from 1, and entries.
using Vectors = std::vector<std::pair<std::vector<int>, std::vector<double>>>;

// Fields x0, colour=red and y0, which no dictionary knows.
std::unique_ptr<SVMModel> ModelOf(SVMConst::KernelFunctionType kernel, const Vectors& vectors,
                                  bool whole = true) {
  Classifier classifier(2);
  classifier.dictionary->AddVar(NumberVar("x0"));
  classifier.dictionary->AddVar(TextVar("colour", {"red", "blue"}));
  classifier.data->AddFieldRef("x0", "");
  classifier.data->AddCategoricalPredictor("colour", "red", 1.0);
  classifier.data->AddFieldRef("y0", "");
  classifier.data->SetSVMKernelType(kernel);
  for (const bool again : {false, true}) {
    auto* machine = new Machine;
    for (std::size_t v = 0; v < vectors.size(); ++v) {
      const std::string id = Numbered("v", v);
      classifier.data->AddVectorInstance(id, vectors[v].first, vectors[v].second);
      machine->coefficients.push_back(again ? 1.0 : -1.0);
      machine->support_vectors.push_back(classifier.data->GetVectorInstance(id));
    }
    if (!whole) machine->support_vectors.pop_back();
    classifier.data->AddSupportVectorMachine(machine);
  }
  return classifier.Model();
}

TEST(ExplainableModel, NamesItsEntries) {
  const auto model = ModelOf(SVMConst::kRadialBasis, {{{1}, {2.0}}});
  EXPECT_EQ("x0", model->EntryName(0));
  EXPECT_EQ("colour=red", model->EntryName(1));
  EXPECT_EQ("y0", model->EntryName(2));
  EXPECT_EQ("", model->EntryName(3));
  ASSERT_NE(nullptr, model->EntryVariable(1));
  EXPECT_EQ("colour", model->EntryVariable(1)->GetName());
  EXPECT_EQ(nullptr, model->EntryVariable(2));
  EXPECT_EQ(nullptr, model->EntryVariable(3));
}

TEST(ExplainableModel, GivesItsVectorsAsCases) {
  std::size_t count = 7;
  // The second is the first, written otherwise; the others but the third are not what a case can
  // be.
  const Vectors vectors = {{{1, 3}, {2.0, 5.0}}, {{1, 2, 3}, {2.0, 0.0, 5.0}},
                           {{2}, {-1.0}},        {{2, 1}, {1.0, 1.0}},
                           {{3}, {kNaN}},        {{4}, {1.0}}};
  const std::vector<double> cases = ModelOf(SVMConst::kRadialBasis, vectors)->VectorsAsCases(count);
  EXPECT_EQ(3u, count);
  EXPECT_EQ((std::vector<double>{2.0, 2.0, 0.0, 0.0, 0.0, -1.0, 5.0, 5.0, 0.0}), cases);
  const auto counted = [](SVMConst::KernelFunctionType kernel, Vectors used) {
    std::size_t found = 7;
    const std::vector<double> entries = ModelOf(kernel, used)->VectorsAsCases(found);
    EXPECT_EQ(3 * found, entries.size());
    return found;
  };
  const Vectors two = {{{1}, {2.0}}, {{2}, {1.0}}};
  EXPECT_EQ(0u, counted(SVMConst::kLinear, {two[0]}));  // weights
  EXPECT_EQ(2u, counted(SVMConst::kLinear, two));
  EXPECT_EQ(1u, counted(SVMConst::kPolynomial, {two[0]}));
}

TEST(ExplainableModel, ExplainsNothingWhereItCannotScore) {
  const std::vector<double> background(3);
  const svmscore::ExplainerSetUp setup{{{0}, {1}, {2}}, {background.data(), 1, 1}};
  const auto broken = ModelOf(SVMConst::kRadialBasis, {{{1}, {2.0}}}, false);
  EXPECT_EQ(nullptr, broken->MakeExplainer(setup));
  EXPECT_EQ(nullptr, SVMModel().MakeExplainer(setup));
  // One without vectors scores its offset.
  const auto empty = ModelOf(SVMConst::kRadialBasis, {});
  const auto explainer = empty->MakeExplainer(setup);
  std::vector<double> values(6, 1.0);
  svmscore::Explanations out;
  out.values = values.data();
  explainer->Explain({background.data(), 1, 1}, out);
  EXPECT_EQ(std::vector<double>(6, 0.0), values);
  EXPECT_EQ(0.0, explainer->Scale(1));
}

}  // namespace
