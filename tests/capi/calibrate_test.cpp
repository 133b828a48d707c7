// Calibrating, and examining probabilities and intervals, by the C interface.
#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/app/edited.h"
#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"
#include "tests/capi/columns.h"

namespace svmscore_test {
namespace {

using testing::HasSubstr;

const std::string kExamples = PROJECT_FOLDER "/examples/";

std::string TakenText(char* text, std::size_t length) {
  if (text == nullptr) return {};
  std::string taken(text, length);
  svmscore_text_free(text);
  return taken;
}

// A table whose column `label` says what the cases really are.
struct Known {
  Known(const std::string& example, const std::string& label, Form form, std::size_t most = 100000)
      : Known(svmscore_test::RowsOf(svmscore::app::ReadFile(kExamples + example + "/cases.csv")),
              label, form, most) {}
  Known(Rows rows, const std::string& label, Form form, std::size_t most) {
    const auto at = static_cast<std::size_t>(std::find(rows[0].begin(), rows[0].end(), label) -
                                             rows[0].begin());
    if (rows.size() > most + 1) rows.resize(most + 1);
    Rows labelled;
    for (const auto& row : rows) labelled.push_back({row[at]});
    // The column of the table is there as well, and ignored.
    cases = std::make_unique<Columns>(rows, form);
    labels = std::make_unique<Columns>(labelled, form);
    holdout.cases = cases->views.data();
    holdout.case_column_count = cases->views.size();
    holdout.actual = labels->views.data();
    holdout.row_count = cases->rows;
  }

  std::unique_ptr<Columns> cases, labels;
  svmscore_holdout holdout = SVMSCORE_INIT(svmscore_holdout);
};

struct Done {
  std::string document, report;
  Failure failure;
};
Done Calibrate(const std::string& path, const svmscore_holdout* holdout, bool from_memory) {
  char* document = nullptr;
  char* report = nullptr;
  std::size_t size = 0, length = 0;
  svmscore_error* error = nullptr;
  if (from_memory) {
    const std::string text = svmscore::app::ReadFile(path);
    svmscore_calibrate_memory(text.data(), text.size(), nullptr, holdout, &document, &size, &report,
                              &length, &error);
  } else {
    svmscore_calibrate_file(path.c_str(), SVMSCORE_NUL_ENDED, nullptr, holdout, &document, &size,
                            &report, &length, &error);
  }
  return {TakenText(document, size), TakenText(report, length), FailureOf(error)};
}

TEST(CCalibration, GivesWhatTheProgramWrites) {
  setenv("SOURCE_DATE_EPOCH", "86400", 1);
  const svmscore::app::TemporaryFolder folder;
  for (const auto& [example, label] :
       {std::pair{"tumour", "diagnosis"}, {"iris", "species"}, {"diabetes", "progression"}}) {
    const std::string model = kExamples + example + "/model.pmml";
    const auto ran = svmscore::app::RunProgram(
        {"calibrate", model, kExamples + example + "/cases.csv", "--actual", label, "--json", "-o",
         folder.Path("calibrated.pmml")});
    ASSERT_EQ(ran.status, 0) << ran.err;
    for (const Form form : {Form::kTexts, Form::kNumbers, Form::kDictionary}) {
      const Known known(example, label, form);
      const Done done = Calibrate(model, &known.holdout, form == Form::kNumbers);
      EXPECT_EQ(done.failure.message, "");
      EXPECT_EQ(done.report, ran.out);
      EXPECT_EQ(done.document, svmscore::app::ReadFile(folder.Path("calibrated.pmml")));
    }
  }
  unsetenv("SOURCE_DATE_EPOCH");
}

TEST(CCalibration, SaysWhatDoesNotDo) {
  const std::string iris = kExamples + "iris/model.pmml";
  const std::string diabetes = kExamples + "diabetes/model.pmml";
  const Known few("diabetes", "progression", Form::kNumbers, 18);
  const Known one("iris", "species", Form::kTexts, 1);
  const Known flowers("iris", "species", Form::kTexts);
  const Known wrong("diabetes", "age", Form::kNumbers);
  Known sure("diabetes", "progression", Form::kNumbers);
  sure.holdout.confidence = 1.0;
  Known open("diabetes", "progression", Form::kNumbers);
  open.holdout.actual = nullptr;
  Known shorter("diabetes", "progression", Form::kNumbers);
  const_cast<svmscore_column*>(shorter.holdout.actual)->length -= 1;
  const struct {
    const std::string& model;
    const svmscore_holdout* holdout;
    int kind;
    const char* words;
  } cases[] = {
      {diabetes, &few.holdout, SVMSCORE_TABLE, "18 usable cases are too few"},
      {iris, &one.holdout, SVMSCORE_TABLE, "no usable row has the label"},
      {diabetes, &flowers.holdout, SVMSCORE_TABLE, "age"},
      {iris, &wrong.holdout, SVMSCORE_TABLE, "sepal_length"},
      {diabetes, &sure.holdout, SVMSCORE_ARGUMENT, "above 0 and below 1"},
      {diabetes, &open.holdout, SVMSCORE_ARGUMENT, "holdout.actual is null"},
      {diabetes, &shorter.holdout, SVMSCORE_TABLE, "rows"},
      {diabetes, nullptr, SVMSCORE_ARGUMENT, "holdout is null"},
      {kExamples + "none.pmml", &few.holdout, SVMSCORE_SYSTEM, "none.pmml"},
  };
  for (const auto& bad : cases) {
    const Failure failure = Calibrate(bad.model, bad.holdout, false).failure;
    EXPECT_EQ(failure.kind, bad.kind) << failure.message;
    EXPECT_THAT(failure.message, HasSubstr(bad.words));
  }
  setenv("SOURCE_DATE_EPOCH", "soon", 1);
  EXPECT_EQ(Calibrate(diabetes, &few.holdout, false).failure.kind, SVMSCORE_SYSTEM);
  unsetenv("SOURCE_DATE_EPOCH");
}

TEST(CCalibration, IsExaminedByTheDoctor) {
  const std::string text =
      svmscore::app::Edited(svmscore::app::ReadFile(kExamples + "tumour/model.pmml"),
                            {"*ProbabilityParameters A='[^']*'", "ProbabilityParameters A='-20'"});
  const Known known("tumour", "diagnosis", Form::kNumbers);
  svmscore_expectation expectation = SVMSCORE_INIT(svmscore_expectation);
  expectation.cases = known.holdout.cases;
  expectation.case_column_count = known.holdout.case_column_count;
  expectation.row_count = known.holdout.row_count;
  const auto findings = [&] {
    char* json = nullptr;
    std::size_t length = 0;
    svmscore_error* error = nullptr;
    svmscore_doctor_memory(text.data(), text.size(), nullptr, &expectation, &json, &length, &error);
    EXPECT_EQ(FailureOf(error).message, "");
    std::string names;
    const auto report = nlohmann::json::parse(TakenText(json, length));
    for (const auto& finding : report["findings"]) {
      names += finding["name"].get<std::string>() + " ";
    }
    return names;
  };
  expectation.actual = known.holdout.actual;
  EXPECT_EQ(findings(), "probabilities-off ");
  // Predictions may be expected beside it.
  expectation.expected = known.holdout.actual;
  expectation.expected_column_count = 1;
  EXPECT_THAT(findings(), testing::AllOf(HasSubstr("mismatch "), HasSubstr("probabilities-off ")));
  // A program of the first header has no such member.
  expectation.size = offsetof(svmscore_expectation, actual);
  EXPECT_THAT(findings(), testing::Not(HasSubstr("probabilities-off")));
}

}  // namespace
}  // namespace svmscore_test
