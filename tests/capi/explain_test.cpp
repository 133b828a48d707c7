// Explaining by the C interface: its own numbers are tested where they are computed, and compared
// with the program's in tests/python; here are the tables, threads and failures.
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/temporary_folder.h"
#include "tests/capi/columns.h"

namespace svmscore_test {
namespace {

using testing::HasSubstr;

const std::string kIris = PROJECT_FOLDER "/examples/iris/";

struct FreedExplainer {
  void operator()(svmscore_explainer* explainer) const { svmscore_explainer_free(explainer); }
};
using Explainer = std::unique_ptr<svmscore_explainer, FreedExplainer>;

Explainer NewExplainer(const svmscore_model* model, const svmscore_explainer_options* options,
                       Failure* failure = nullptr) {
  svmscore_explainer* explainer = nullptr;
  svmscore_error* error = nullptr;
  const int kind = svmscore_explainer_new(model, options, &explainer, &error);
  const Failure told = FailureOf(error);
  if (failure != nullptr) {
    *failure = told;
  } else {
    EXPECT_EQ(kind, SVMSCORE_OK) << told.message;
  }
  return Explainer(explainer);
}

struct Numbers {
  std::vector<double> decisions, values, errors, gradients;
  std::vector<std::int64_t> status;
  double imbalance = 0.0;
};

Numbers Explain(svmscore_explainer* explainer, const std::vector<svmscore_column>& columns,
                std::size_t rows) {
  svmscore_explainer_facts facts = SVMSCORE_INIT(svmscore_explainer_facts);
  EXPECT_EQ(svmscore_explainer_get_facts(explainer, &facts, nullptr), SVMSCORE_OK);
  const std::size_t decisions = rows * facts.machine_count;
  Numbers numbers;
  numbers.decisions.assign(decisions, -1.0);
  numbers.values.assign(decisions * facts.player_count, -1.0);
  numbers.errors.assign(decisions * facts.player_count, -1.0);
  numbers.gradients.assign(decisions * facts.field_count, -1.0);
  numbers.status.assign(rows, -1);
  svmscore_explanations out = SVMSCORE_INIT(svmscore_explanations);
  out.decisions = numbers.decisions.data();
  out.values = numbers.values.data();
  out.errors = numbers.errors.data();
  out.gradients = numbers.gradients.data();
  out.status = numbers.status.data();
  svmscore_error* error = nullptr;
  EXPECT_EQ(svmscore_explain(explainer, columns.data(), columns.size(), rows, &out, &error),
            SVMSCORE_OK)
      << FailureOf(error).message;
  numbers.imbalance = out.imbalance;
  return numbers;
}

TEST(CExplanations, HaveTheSameBitsHoweverRowsAreExplained) {
  const Model model = LoadFile(kIris + "model.pmml");
  const Columns cases(RowsOf(svmscore::app::ReadFile(kIris + "cases.csv")), Form::kMixed);
  svmscore_explainer_options options = SVMSCORE_INIT(svmscore_explainer_options);
  options.background = cases.views.data();
  options.background_column_count = cases.views.size();
  options.background_row_count = cases.rows;
  options.rows = 9;
  const Explainer one = NewExplainer(model.get(), &options);
  options.threads = 4;
  const Explainer four = NewExplainer(model.get(), &options);
  svmscore_explainer_facts facts = SVMSCORE_INIT(svmscore_explainer_facts);
  ASSERT_EQ(svmscore_explainer_get_facts(four.get(), &facts, nullptr), SVMSCORE_OK);
  EXPECT_EQ(StringOf(facts.players[3]) + " " + StringOf(facts.fields[0]),
            "petal_width sepal_length");
  EXPECT_EQ(facts.background_rows, 9U);
  EXPECT_EQ(facts.background_rows_seen, 50U);
  EXPECT_EQ(facts.sampled, 0);

  const Numbers wanted = Explain(one.get(), cases.views, cases.rows);
  EXPECT_LT(wanted.imbalance, 1e-14);
  EXPECT_THAT(wanted.status, testing::Each(0));
  EXPECT_THAT(wanted.errors, testing::Each(0.0));
  const Numbers shared = Explain(four.get(), cases.views, cases.rows);
  EXPECT_EQ(shared.values, wanted.values);
  EXPECT_EQ(shared.gradients, wanted.gradients);
  EXPECT_EQ(shared.imbalance, wanted.imbalance);
  std::vector<double> one_by_one;
  for (std::size_t row = 0; row < cases.rows; ++row) {
    std::vector<svmscore_column> alone = cases.views;
    for (svmscore_column& column : alone) {
      column.offset += row;
      column.length = 1;
    }
    const Numbers numbers = Explain(one.get(), alone, 1);
    one_by_one.insert(one_by_one.end(), numbers.values.begin(), numbers.values.end());
  }
  EXPECT_EQ(one_by_one, wanted.values);

  // Only what is wanted is written.
  svmscore_explanations nothing = SVMSCORE_INIT(svmscore_explanations);
  EXPECT_EQ(svmscore_explain(one.get(), cases.views.data(), cases.views.size(), cases.rows,
                             &nothing, nullptr),
            SVMSCORE_OK);
  EXPECT_EQ(nothing.imbalance, wanted.imbalance);
}

TEST(CExplanations, SayWhichRowsHaveNone) {
  const Model model = LoadFile(kIris + "model.pmml");
  const Explainer explainer = NewExplainer(model.get(), nullptr);
  const Columns cases({{"sepal_length", "sepal_width", "petal_length", "petal_width"},
                       {"5", "3", "1", "0.2"},
                       {"5", "", "1", "0.2"},
                       {"5", "x", "1", "0.2"},
                       {"1e308", "3", "1", "0.2"}},
                      Form::kTexts);
  const Numbers numbers = Explain(explainer.get(), cases.views, cases.rows);
  EXPECT_EQ(numbers.status[0], 0);
  EXPECT_EQ(numbers.status[1], 90029);
  EXPECT_EQ(numbers.status[2], 90027);
  for (const auto* list : {&numbers.values, &numbers.gradients, &numbers.decisions}) {
    const std::size_t of_row = list->size() / cases.rows;
    for (std::size_t i = 0; i < list->size(); ++i) {
      EXPECT_EQ(std::isnan((*list)[i]), numbers.status[i / of_row] != 0) << i;
    }
  }
}

TEST(CExplanations, SayWhatDoesNotDo) {
  const Model iris = LoadFile(kIris + "model.pmml");
  const Model meeting = LoadFile(PROJECT_FOLDER "/tests/app/data/two.pmml");
  const Columns empty({{"sepal_length", "sepal_width", "petal_length", "petal_width"}},
                      Form::kTexts);
  const Columns broken(
      {{"sepal_length", "sepal_width", "petal_length", "petal_width"}, {"5", "x", "1", "0.2"}},
      Form::kTexts);
  const Columns lacking({{"sepal_length"}, {"5"}}, Form::kNumbers);
  const auto failure_of = [&](const Model& model, const Columns* background, int threads) {
    svmscore_explainer_options options = SVMSCORE_INIT(svmscore_explainer_options);
    if (background != nullptr) {
      options.background = background->views.data();
      options.background_column_count = background->views.size();
      options.background_row_count = background->rows;
    }
    options.threads = threads;
    Failure failure;
    EXPECT_EQ(NewExplainer(model.get(), &options, &failure), nullptr);
    return failure;
  };
  for (const auto& [failure, kind, words] : {
           std::tuple{failure_of(iris, &empty, 1), SVMSCORE_TABLE, "the background has no rows"},
           {failure_of(iris, &broken, 1), SVMSCORE_TABLE, "no row of the background"},
           {failure_of(iris, &lacking, 1), SVMSCORE_TABLE, "sepal_width"},
           {failure_of(iris, nullptr, -3), SVMSCORE_ARGUMENT, "options.threads"},
           {failure_of(meeting, nullptr, 1), SVMSCORE_ARGUMENT, "what cases are like"},
       }) {
    EXPECT_EQ(failure.kind, kind) << failure.message;
    EXPECT_THAT(failure.message, HasSubstr(words));
  }
  const Explainer explainer = NewExplainer(iris.get(), nullptr);
  svmscore_explanations out = SVMSCORE_INIT(svmscore_explanations);
  svmscore_error* error = nullptr;
  EXPECT_EQ(svmscore_explain(explainer.get(), lacking.views.data(), 1, 1, &out, &error),
            SVMSCORE_TABLE);
  EXPECT_THAT(FailureOf(error).message, HasSubstr("sepal_width"));
  EXPECT_EQ(svmscore_explain(nullptr, nullptr, 0, 0, &out, nullptr), SVMSCORE_ARGUMENT);
  EXPECT_EQ(svmscore_explain(explainer.get(), nullptr, 0, 0, nullptr, nullptr), SVMSCORE_ARGUMENT);
  svmscore_explainer_free(nullptr);
}

}  // namespace
}  // namespace svmscore_test
