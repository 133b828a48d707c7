// Tables through the C interface: the names and cells of the program, however the values lie.
#include <gtest/gtest.h>

#include "tests/app/edited.h"
#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"
#include "tests/capi/columns.h"
#include "tests/process/case_set.h"

namespace svmscore_test {
namespace {

constexpr std::size_t kRows = 1300;  // more than two blocks
const std::vector<std::string> kChoices = {"auto", "raw", "all"};

// What the program writes.
Rows Expected(const std::string& document, const Rows& cases, const std::string& choice) {
  const svmscore::app::Ran ran = svmscore::app::RunProgram(
      {"score", document, "-", "--columns", choice, "--decisions", "--reasons"}, CsvOf(cases));
  EXPECT_TRUE(ran.status == 0 || ran.status == 4) << ran.err;
  return RowsOf(ran.out);
}

class CTables : public testing::TestWithParam<std::string> {};

TEST_P(CTables, AreScoredAsByTheProgram) {
  const Model model = LoadFile(GetParam());
  ASSERT_NE(model, nullptr);
  const Rows cases = CasesFor(model.get(), kRows);
  for (std::size_t choice = 0; choice < kChoices.size(); ++choice) {
    const Rows expected = Expected(GetParam(), cases, kChoices[choice]);
    svmscore_scorer_options options = SVMSCORE_INIT(svmscore_scorer_options);
    options.columns = static_cast<int>(choice);
    options.decisions = 1;
    options.reasons = 1;
    for (const Form form :
         {Form::kTexts, Form::kLongTexts, Form::kNumbers, Form::kMixed, Form::kDictionary}) {
      options.category_codes = form == Form::kMixed ? 1 : 0;
      const Scorer scorer = NewScorer(model.get(), &options);
      const Columns columns(cases, form);
      EXPECT_EQ(Difference(Score(scorer.get(), columns), expected), "")
          << kChoices[choice] << ", form " << static_cast<int>(form);
    }
  }
}

// Rows of good numbers need not go through records where a model reads them as they are.
TEST_P(CTables, OfGoodNumbersAreScoredAsByTheProgram) {
  const Model model = LoadFile(GetParam());
  const Rows cases = CasesFor(model.get(), kRows, false);
  const Rows expected = Expected(GetParam(), cases, "auto");
  svmscore_scorer_options options = SVMSCORE_INIT(svmscore_scorer_options);
  options.decisions = 1;
  options.reasons = 1;
  const Scorer scorer = NewScorer(model.get(), &options);
  for (const Form form : {Form::kNumbers, Form::kMixed, Form::kDictionary}) {
    EXPECT_EQ(Difference(Score(scorer.get(), Columns(cases, form)), expected), "");
  }
}

TEST_P(CTables, DoNotDependOnThreads) {
  const Model model = LoadFile(GetParam());
  const Columns columns(CasesFor(model.get(), 5 * kRows), Form::kNumbers);
  Rows one;
  for (const int threads : {1, 2, 5, SVMSCORE_ALL_CORES}) {
    svmscore_scorer_options options = SVMSCORE_INIT(svmscore_scorer_options);
    options.threads = threads;
    const Scorer scorer = NewScorer(model.get(), &options);
    const Rows rows = Score(scorer.get(), columns);
    if (one.empty()) one = rows;
    EXPECT_EQ(Difference(rows, one), "") << threads << " threads";
    EXPECT_EQ(Difference(Score(scorer.get(), columns), one), "") << "again";
  }
}

// Output fields may read columns that the model does not: here the target, for a residual.
TEST(CTable, WithoutAColumnForOutputHasNoValuesOfTheTableBefore) {
  const svmscore::app::TemporaryFolder folder;
  const Model model = LoadFile(svmscore::app::EditedFile(
      folder, PROJECT_FOLDER "/tests/app/data/line.pmml",
      {"</MiningSchema>",
       "</MiningSchema><Output><OutputField name='rest' feature='residual'/></Output>"}));
  const Scorer scorer = NewScorer(model.get());
  EXPECT_EQ(CsvOf(Score(scorer.get(), Columns({{"x", "y"}, {"1", "10"}}, Form::kNumbers))),
            "\"rest\",\"status\"\n\"7.9\",\"0\"\n");
  EXPECT_EQ(CsvOf(Score(scorer.get(), Columns({{"x"}, {"1"}}, Form::kNumbers))),
            "\"rest\",\"status\"\n\"\",\"0\"\n");
}

INSTANTIATE_TEST_SUITE_P(Documents, CTables, testing::ValuesIn(Documents()), NameOfDocument);

}  // namespace
}  // namespace svmscore_test
