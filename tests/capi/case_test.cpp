// One case at a time through the C interface: the results of a table, and nothing allocated after
// the first.
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "host/text/number_text.h"
#include "tests/capi/columns.h"
#include "tests/process/case_set.h"
#include "tests/process/failing_memory.h"

namespace svmscore_test {
namespace {

std::string CellOf(const svmscore_value& value) {
  switch (value.kind) {
    case SVMSCORE_NUMBER:
      return svmscore::FormatNumber(value.number);
    case SVMSCORE_WHOLE:
      return std::to_string(value.whole);
    case SVMSCORE_TEXT:
      return {value.text, value.length};
    default:
      return "";
  }
}

// The values of a row, in the order of the model's inputs; numbers as such with `numbers`.
std::vector<svmscore_value> ValuesOf(const std::vector<std::string>& cells, bool numbers) {
  std::vector<svmscore_value> values;
  for (const std::string& cell : cells) {
    svmscore_value value{};
    const auto number = svmscore::ParseNumber(cell);
    if (!cell.empty()) value = {SVMSCORE_TEXT, -1, 0.0, 0, cell.data(), cell.size()};
    // A text field takes the shortest text of a number.
    if (numbers && number && std::fabs(*number) < 1e100) {
      value.kind = SVMSCORE_NUMBER;
      value.number = *number;
      if (std::fabs(*number) < 1e9 && *number == std::trunc(*number) && !std::signbit(*number)) {
        value.kind = SVMSCORE_WHOLE;
        value.whole = std::lround(*number);
      }
    }
    values.push_back(value);
  }
  return values;
}

class CCases : public testing::TestWithParam<std::string> {
 protected:
  void SetUp() override {
    model_ = LoadFile(GetParam());
    svmscore_scorer_options options = SVMSCORE_INIT(svmscore_scorer_options);
    options.decisions = 1;
    scorer_ = NewScorer(model_.get(), &options);
    outputs_.resize(svmscore_scorer_output_count(scorer_.get()));
  }

  Model model_;
  Scorer scorer_;
  std::vector<svmscore_value> outputs_;
};

TEST_P(CCases, GetTheResultsOfATableWithoutAllocating) {
  const Rows cases = CasesFor(model_.get(), 250);
  const Rows expected = Score(scorer_.get(), Columns(cases, Form::kTexts));
  for (const bool numbers : {false, true}) {
    for (int round = 0; round < 2; ++round) {
      for (std::size_t r = 1; r < cases.size(); ++r) {
        const std::vector<svmscore_value> inputs = ValuesOf(cases[r], numbers);
        const FailingMemory none(0, Failing::kOne);
        ASSERT_EQ(svmscore_score_case(scorer_.get(), inputs.data(), inputs.size(), outputs_.data(),
                                      outputs_.size(), nullptr),
                  SVMSCORE_OK);
        // The derived fields of mixed.pmml take texts apart.
        if (round > 0 && GetParam().find("mixed") == std::string::npos) {
          ASSERT_EQ(Allocations(), 0) << "row " << r;
        }
        std::vector<std::string> cells;
        for (const svmscore_value& value : outputs_) cells.push_back(CellOf(value));
        ASSERT_EQ(cells, expected[r]) << "row " << r << (numbers ? ", numbers" : "");
      }
    }
  }
}

TEST_P(CCases, OfNumbersAloneGetTheSame) {
  Rows cases = CasesFor(model_.get(), 250);
  for (std::size_t r = 1; r < cases.size(); ++r) {
    for (std::string& cell : cases[r]) cell = svmscore::ParseNumber(cell) ? cell : "2";
  }
  const Rows expected = Score(scorer_.get(), Columns(cases, Form::kTexts));
  svmscore_output output = SVMSCORE_INIT(svmscore_output);
  std::vector<double> results(outputs_.size());
  for (std::size_t r = 1; r < cases.size(); ++r) {
    std::vector<double> inputs;
    for (const std::string& cell : cases[r]) inputs.push_back(*svmscore::ParseNumber(cell));
    const FailingMemory none(0, Failing::kOne);
    ASSERT_EQ(svmscore_score_numbers(scorer_.get(), inputs.data(), inputs.size(), results.data(),
                                     results.size(), nullptr),
              SVMSCORE_OK);
    if (r > 1) {
      ASSERT_EQ(Allocations(), 0) << "row " << r;
    }
    for (std::size_t i = 0; i < results.size(); ++i) {
      ASSERT_EQ(svmscore_scorer_get_output(scorer_.get(), i, &output, nullptr), SVMSCORE_OK);
      std::string cell = std::isnan(results[i]) ? "" : svmscore::FormatNumber(results[i]);
      if (!cell.empty() && output.of_categories != 0) {
        cell = StringOf(output.categories[static_cast<std::size_t>(results[i])]);
      }
      const bool other_text = output.type == SVMSCORE_UTF8_64 && output.of_categories == 0;
      const bool nothing = cell.empty() && (other_text || expected[r][i] == "NaN");
      ASSERT_EQ(cell, nothing ? cell : expected[r][i]) << "row " << r << ", output " << i;
    }
  }
}

TEST_P(CCases, MayLackValuesAndResultsAtTheirEnds) {
  ASSERT_EQ(
      svmscore_score_case(scorer_.get(), nullptr, 0, outputs_.data(), outputs_.size(), nullptr),
      SVMSCORE_OK);
  EXPECT_EQ(outputs_.back().kind, SVMSCORE_WHOLE);
  svmscore_value first{};
  ASSERT_EQ(svmscore_score_case(scorer_.get(), nullptr, 0, &first, 1, nullptr), SVMSCORE_OK);
  EXPECT_EQ(CellOf(first), CellOf(outputs_[0]));
  const std::vector<svmscore_value> many(1000);
  svmscore_error* error = nullptr;
  EXPECT_EQ(svmscore_score_case(scorer_.get(), many.data(), many.size(), &first, 1, &error),
            SVMSCORE_ARGUMENT);
  EXPECT_EQ(FailureOf(error).place, "input_count");
}

// Texts may say that a NUL ends them, and a null one is empty: missing, unless that is set.
TEST(CCase, TakesTextsAsEveryFunctionDoes) {
  const Model model = LoadFile(PROJECT_FOLDER "/tests/app/data/line.pmml");
  const Scorer scorer = NewScorer(model.get());
  const std::pair<const char*, std::size_t> texts[] = {
      {"1.5e0", 3}, {"1.5", SVMSCORE_NUL_ENDED}, {nullptr, 3}, {nullptr, SVMSCORE_NUL_ENDED}};
  std::vector<std::string> cells;
  for (const auto& [text, length] : texts) {
    const svmscore_value input{SVMSCORE_TEXT, -1, 0.0, 0, text, length};
    svmscore_value output{};
    ASSERT_EQ(svmscore_score_case(scorer.get(), &input, 1, &output, 1, nullptr), SVMSCORE_OK);
    cells.push_back(CellOf(output));
  }
  EXPECT_EQ(cells, (std::vector<std::string>{"3.1", "3.1", "", ""}));
}

// The reason of a failed case is told in the words of a table's.
TEST(CCase, SaysWhyItFailed) {
  const Model model = LoadFile(PROJECT_FOLDER "/tests/app/data/three.pmml");
  const svmscore_text missing{"NA", 2};
  svmscore_scorer_options options = SVMSCORE_INIT(svmscore_scorer_options);
  options.columns = SVMSCORE_COLUMNS_RAW;
  options.reasons = 1;
  options.missing_texts = &missing;
  options.missing_text_count = 1;
  const Scorer scorer = NewScorer(model.get(), &options);
  const std::vector<std::string> rows[] = {{"NA", "1"}, {"", "1"}, {"5%", "1"}};
  std::vector<std::string> reasons;
  for (const auto& row : rows) {
    std::vector<svmscore_value> inputs;
    for (const auto& cell : row) {
      inputs.push_back({SVMSCORE_TEXT, -1, 0.0, 0, cell.data(), cell.size()});
    }
    std::vector<svmscore_value> outputs(svmscore_scorer_output_count(scorer.get()));
    ASSERT_EQ(svmscore_score_case(scorer.get(), inputs.data(), inputs.size(), outputs.data(),
                                  outputs.size(), nullptr),
              SVMSCORE_OK);
    reasons.push_back(CellOf(outputs.back()));
  }
  EXPECT_EQ(reasons[0], "width: \"NA\" means missing, and nothing replaces it");
  EXPECT_EQ(reasons[1], "width: \"\" is not a number");
  EXPECT_EQ(reasons[2], "width: \"5%\" is not a number");
}

INSTANTIATE_TEST_SUITE_P(Documents, CCases, testing::ValuesIn(Documents()), NameOfDocument);

}  // namespace
}  // namespace svmscore_test
