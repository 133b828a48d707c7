// What the C interface tells of models: the facts, and the JSON of the program.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/app/edited.h"
#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"
#include "tests/capi/columns.h"
#include "tests/process/case_set.h"

namespace svmscore_test {
namespace {

using svmscore::app::RunProgram;

// Takes the text over.
std::string Taken(int kind, char* json, std::size_t length) {
  EXPECT_EQ(kind, SVMSCORE_OK);
  std::string text = json == nullptr ? "" : std::string(json, length);
  svmscore_text_free(json);
  return text;
}

svmscore_model_facts FactsOf(const Model& model) {
  svmscore_model_facts facts = SVMSCORE_INIT(svmscore_model_facts);
  EXPECT_EQ(svmscore_model_get_facts(model.get(), &facts, nullptr), SVMSCORE_OK);
  return facts;
}

TEST(CModels, AreDescribedAndExaminedAsByTheProgram) {
  for (const std::string& document : Documents()) {
    const Model model = LoadFile(document);
    char* json = nullptr;
    std::size_t length = 0;
    int kind = svmscore_describe(model.get(), &json, &length, nullptr);
    EXPECT_EQ(Taken(kind, json, length), RunProgram({"describe", "--json", document}).out);
    kind = svmscore_doctor_file(document.data(), document.size(), nullptr, nullptr, &json, &length,
                                nullptr);
    EXPECT_EQ(Taken(kind, json, length), RunProgram({"doctor", "--json", document}).out);
  }
  // Of what cannot be read too.
  char* json = nullptr;
  std::size_t length = 0;
  const int kind = svmscore_doctor_memory("<PMML", 5, nullptr, nullptr, &json, &length, nullptr);
  const auto report = nlohmann::json::parse(Taken(kind, json, length));
  EXPECT_EQ(report["file"], "document");
  EXPECT_EQ(report["changesScores"], true);
}

TEST(CModels, HaveFacts) {
  const Model iris = LoadFile(PROJECT_FOLDER "/examples/iris/model.pmml");
  svmscore_model_facts facts = FactsOf(iris);
  EXPECT_EQ(facts.function, SVMSCORE_CLASSIFICATION);
  EXPECT_EQ(facts.method, SVMSCORE_METHOD_ONE_AGAINST_ONE);
  EXPECT_EQ(facts.percentages, SVMSCORE_PERCENTAGES_VOTES);
  EXPECT_EQ(StringOf(facts.target) + " " + StringOf(facts.target_type), "species string");
  EXPECT_EQ(facts.category_count, 3U);
  EXPECT_EQ(facts.needed_count, 4U);
  ASSERT_EQ(facts.machine_count, 3U);
  const auto sum = svmscore::app::RunShell("sha256sum '" PROJECT_FOLDER
                                           "/examples/iris/model.pmml' | cut -c1-64");
  EXPECT_EQ(StringOf(facts.sha256) + "\n", sum.out);
  svmscore_machine machine = SVMSCORE_INIT(svmscore_machine);
  ASSERT_EQ(svmscore_model_get_machine(iris.get(), 2, &machine, nullptr), SVMSCORE_OK);
  EXPECT_EQ(StringOf(machine.target) + "|" + StringOf(machine.alternate), "versicolor|virginica");
  EXPECT_EQ(machine.target_index, 1);

  const Model diabetes = LoadFile(PROJECT_FOLDER "/examples/diabetes/model.pmml");
  facts = FactsOf(diabetes);
  EXPECT_EQ(facts.function, SVMSCORE_REGRESSION);
  EXPECT_EQ(facts.interval, 1);
  svmscore_input input = SVMSCORE_INIT(svmscore_input);
  ASSERT_EQ(svmscore_model_get_input(diabetes.get(), 1, &input, nullptr), SVMSCORE_OK);
  EXPECT_EQ(StringOf(input.name) + " " + StringOf(input.type) + " " + StringOf(input.op_type),
            "sex string categorical");
  ASSERT_EQ(input.category_count, 2U);
  EXPECT_EQ(StringOf(input.categories[0]), "1");
  EXPECT_EQ(FactsOf(LoadFile(PROJECT_FOLDER "/examples/tumour/model.pmml")).percentages,
            SVMSCORE_PERCENTAGES_CALIBRATED);
}

TEST(CModels, MayBeCompressed) {
  const std::string plain = PROJECT_FOLDER "/examples/iris/model.pmml";
  const svmscore::app::TemporaryFolder folder;
  ASSERT_EQ(svmscore::app::RunShell("gzip -c '" + plain + "' >'" + folder.Path("gz") + "'").status,
            0);
  EXPECT_EQ(FactsOf(LoadFile(folder.Path("gz"))).machine_count, 3U);
}

nlohmann::json Verify(const Model& model, const Columns& cases, const Rows& expected) {
  const Columns columns(expected, Form::kNumbers);
  svmscore_expectation expectation = SVMSCORE_INIT(svmscore_expectation);
  expectation.cases = cases.views.data();
  expectation.case_column_count = cases.views.size();
  expectation.expected = columns.views.data();
  expectation.expected_column_count = columns.views.size();
  expectation.row_count = cases.rows;
  char* json = nullptr;
  std::size_t length = 0;
  const int kind = svmscore_verify(model.get(), &expectation, &json, &length, nullptr);
  return nlohmann::json::parse(Taken(kind, json, length));
}

TEST(CModels, AreVerified) {
  const std::string document = PROJECT_FOLDER "/examples/iris/model.pmml";
  const Model model = LoadFile(document);
  const Columns cases(RowsOf(svmscore::app::ReadFile(PROJECT_FOLDER "/examples/iris/cases.csv")),
                      Form::kNumbers);
  Rows rows = Score(NewScorer(model.get()).get(), cases);
  auto report = Verify(model, cases, rows);
  EXPECT_EQ(report["agrees"], true);
  EXPECT_EQ(report["compared"], cases.rows * rows[0].size());
  EXPECT_EQ(report["agreement"]["accuracy"], 1.0);
  rows[3][0] = "setosa";
  rows[4][1] = "0.5";
  report = Verify(model, cases, rows);
  EXPECT_EQ(report["agrees"], false);
  ASSERT_EQ(report["differences"].size(), 2U);
  const bool first_is_number = report["differences"][0]["column"] == "confidence";
  const auto& label = report["differences"][first_is_number ? 1 : 0];
  EXPECT_EQ(label["record"], 3);
  EXPECT_EQ(label["expected"], "setosa");
  EXPECT_EQ(label["deviation"], nullptr);
  // The model has no verification records of its own.
  char* json = nullptr;
  svmscore_error* error = nullptr;
  EXPECT_EQ(svmscore_verify(model.get(), nullptr, &json, nullptr, &error), SVMSCORE_DOCUMENT);
  EXPECT_THAT(FailureOf(error).sentence, testing::HasSubstr("no verification records"));
}

// A residual needs the target's column, which the model does not read.
TEST(CModels, AreVerifiedWithColumnsForOutput) {
  const svmscore::app::TemporaryFolder folder;
  const Model model = LoadFile(svmscore::app::EditedFile(
      folder, PROJECT_FOLDER "/tests/app/data/line.pmml",
      {"</MiningSchema>",
       "</MiningSchema><Output><OutputField name='rest' feature='residual'/></Output>"}));
  const Columns cases({{"x", "y"}, {"1", "10"}}, Form::kNumbers);
  const auto report = Verify(model, cases, {{"rest"}, {"7.9"}});
  EXPECT_EQ(report["agrees"], true) << report;
}

}  // namespace
}  // namespace svmscore_test
