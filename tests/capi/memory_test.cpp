// Memory that runs out within the C interface: an error or a status, nothing lost, and everything
// as good as before.
#include <algorithm>
#include <functional>
#include <new>

#include <gtest/gtest.h>

#include "tests/app/temporary_folder.h"
#include "tests/capi/arrow_batch.h"
#include "tests/capi/columns.h"
#include "tests/process/case_set.h"
#include "tests/process/failing_memory.h"

namespace svmscore_test {
namespace {

const std::string kMixed = PROJECT_FOLDER "/tests/process/data/mixed.pmml";

// Calls `call` with the n-th allocation failing, for every n up to the number that it makes, but at
// most about `most`. It returns the kind, and leaves nothing behind.
void FailEach(const char* what, long most, const std::function<int(svmscore_error**)>& call) {
  ASSERT_EQ(call(nullptr), SVMSCORE_OK) << what;
  long count = 0;
  {
    const FailingMemory none(0, Failing::kOne);
    ASSERT_EQ(call(nullptr), SVMSCORE_OK) << what;
    count = Allocations();
  }
  long failed = 0;
  for (long n = 1; n <= count; n += n < most / 2 ? 1 : std::max(1L, 2 * count / most)) {
    for (const Failing failing : {Failing::kOne, Failing::kAllFromThere}) {
      const auto fail = [&] {
        svmscore_error* error = nullptr;
        int kind = SVMSCORE_OK;
        {
          const FailingMemory memory(n, failing);
          kind = call(&error);
        }
        if (kind != SVMSCORE_OK) {
          ++failed;
          ASSERT_EQ(kind, SVMSCORE_MEMORY) << what << ", allocation " << n;
          ASSERT_STREQ(svmscore_error_message(error).data, "out of memory");
        }
        svmscore_error_free(error);
      };
      long held = HeldAllocations();
      fail();
      if (HeldAllocations() == held) continue;
      // What the process makes once and keeps is not made again; what is lost is lost again.
      held = HeldAllocations();
      fail();
      ASSERT_EQ(HeldAllocations(), held) << what << ", allocation " << n << " of " << count;
    }
  }
  EXPECT_GT(failed, 0) << what;
  ASSERT_EQ(call(nullptr), SVMSCORE_OK) << what << ", afterwards";
}

TEST(CMemory, LoadingTellingAndCheckingFailAndLoseNothing) {
  const std::string text = svmscore::app::ReadFile(kMixed);
  FailEach("load a file", 400, [](svmscore_error** error) {
    svmscore_model* model = nullptr;
    const int kind = svmscore_load_file(kMixed.data(), kMixed.size(), nullptr, &model, error);
    svmscore_model_free(model);
    return kind;
  });
  FailEach("load from memory", 100, [&text](svmscore_error** error) {
    svmscore_model* model = nullptr;
    const int kind = svmscore_load_memory(text.data(), text.size(), nullptr, &model, error);
    svmscore_model_free(model);
    return kind;
  });
  const std::string libsvm =
      svmscore::app::ReadFile(PROJECT_FOLDER "/fuzz/seeds/libsvm/classes_with_ranges");
  FailEach("convert", 20, [&libsvm](svmscore_error** error) {
    char* document = nullptr;
    const int kind = svmscore_convert_libsvm(libsvm.data(), libsvm.find('\0'), nullptr, &document,
                                             nullptr, error);
    svmscore_text_free(document);
    return kind;
  });
  const Model model = LoadFile(kMixed);
  const auto freed = [](int kind, char* json) {
    svmscore_text_free(json);
    return kind;
  };
  FailEach("describe", 200, [&](svmscore_error** error) {
    char* json = nullptr;
    const int kind = svmscore_describe(model.get(), &json, nullptr, error);
    return freed(kind, json);
  });
  FailEach("doctor", 200, [&](svmscore_error** error) {
    char* json = nullptr;
    const int kind =
        svmscore_doctor_memory(text.data(), text.size(), nullptr, nullptr, &json, nullptr, error);
    return freed(kind, json);
  });
  const Rows cases = CasesFor(model.get(), 10);
  const Columns columns(cases, Form::kTexts);
  const Columns expected(Score(NewScorer(model.get()).get(), columns), Form::kTexts);
  svmscore_expectation expectation = SVMSCORE_INIT(svmscore_expectation);
  expectation.cases = columns.views.data();
  expectation.case_column_count = columns.views.size();
  expectation.expected = expected.views.data();
  expectation.expected_column_count = expected.views.size();
  expectation.row_count = columns.rows;
  const std::string tumour = svmscore::app::ReadFile(PROJECT_FOLDER "/examples/tumour/model.pmml");
  const Rows all = RowsOf(svmscore::app::ReadFile(PROJECT_FOLDER "/examples/tumour/cases.csv"));
  const Columns known(Rows(all.begin(), all.begin() + 60), Form::kNumbers);
  Rows outcomes;
  for (std::size_t i = 0; i < 60; ++i) outcomes.push_back({all[i].back()});
  const Columns labels(outcomes, Form::kTexts);
  svmscore_holdout holdout = SVMSCORE_INIT(svmscore_holdout);
  holdout.cases = known.views.data();
  holdout.case_column_count = known.views.size();
  holdout.actual = labels.views.data();
  holdout.row_count = known.rows;
  FailEach("calibrate", 100, [&](svmscore_error** error) {
    char* document = nullptr;
    char* report = nullptr;
    const int kind = svmscore_calibrate_memory(tumour.data(), tumour.size(), nullptr, &holdout,
                                               &document, nullptr, &report, nullptr, error);
    svmscore_text_free(document);
    return freed(kind, report);
  });
  const Model flowers = LoadFile(PROJECT_FOLDER "/examples/iris/model.pmml");
  const Columns petals(RowsOf(svmscore::app::ReadFile(PROJECT_FOLDER "/examples/iris/cases.csv")),
                       Form::kNumbers);
  std::vector<double> values(petals.rows * 3 * 4);
  FailEach("explain", 200, [&](svmscore_error** error) {
    svmscore_explainer_options options = SVMSCORE_INIT(svmscore_explainer_options);
    options.background = petals.views.data();
    options.background_column_count = petals.views.size();
    options.background_row_count = petals.rows;
    options.rows = 5;
    options.threads = 2;
    svmscore_explainer* explainer = nullptr;
    int kind = svmscore_explainer_new(flowers.get(), &options, &explainer, error);
    svmscore_explanations out = SVMSCORE_INIT(svmscore_explanations);
    out.values = values.data();
    if (kind == SVMSCORE_OK) {
      kind = svmscore_explain(explainer, petals.views.data(), petals.views.size(), petals.rows,
                              &out, error);
    }
    svmscore_explainer_free(explainer);
    return kind;
  });
  FailEach("verify", 200, [&](svmscore_error** error) {
    char* json = nullptr;
    const int kind = svmscore_verify(model.get(), &expectation, &json, nullptr, error);
    return freed(kind, json);
  });
}

TEST(CMemory, ScoringFailsOrEndsInAStatusAndLosesNothing) {
  const Model model = LoadFile(kMixed);
  const Rows cases = CasesFor(model.get(), 60);
  const Columns columns(cases, Form::kNumbers);
  const Rows expected = Score(NewScorer(model.get()).get(), columns);
  FailEach("score", 300, [&](svmscore_error** error) {
    svmscore_scorer_options options = SVMSCORE_INIT(svmscore_scorer_options);
    options.threads = 2;
    svmscore_scorer* made = nullptr;
    int kind = svmscore_scorer_new(model.get(), &options, &made, error);
    const Scorer scorer(made);
    svmscore_table table = SVMSCORE_INIT(svmscore_table);
    if (kind == SVMSCORE_OK) {
      kind = svmscore_score(made, columns.views.data(), columns.views.size(), columns.rows, &table,
                            error);
    }
    return kind;
  });
  const ArrowBatch batch(cases, {"u"});
  FailEach("arrow", 300, [&](svmscore_error** error) {
    svmscore_scorer* made = nullptr;
    int kind = svmscore_scorer_new(model.get(), nullptr, &made, error);
    const Scorer scorer(made);
    ArrowSchema schema{};
    ArrowArray array{};
    if (kind == SVMSCORE_OK) {
      kind = svmscore_score_arrow(made, &batch.schema, &batch.array, &schema, &array, error);
    }
    if (schema.release != nullptr) schema.release(&schema);
    if (array.release != nullptr) array.release(&array);
    return kind;
  });
  EXPECT_EQ(Difference(Score(NewScorer(model.get()).get(), columns), expected), "");
}

}  // namespace
}  // namespace svmscore_test
