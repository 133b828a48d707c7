// Models that take no batches.
#include "app/score/case_scorer.h"

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

#include "host/load/loader.h"
#include "host/load/plugin.h"
#include "host/translate/base_model.h"

namespace svmscore::app {
namespace {

using MCZandor_850::ScoreModel;

// Another model as one that scores single cases only.
class SingleCases : public MCZandor_850::BaseModel {
 public:
  explicit SingleCases(ScoreModel& model) : model_(model) {}
  void SetPredictionOnly(bool) override {}
  MCZandor_850::BaseDictionary* GetVarsOfRole(VarRole) const override { return nullptr; }
  MCScore::MCStatus GetScore(const MCZandor_850::ScoreCaseRecord* record,
                             MCZandor_850::ScoreResult*& result, bool flag) override {
    return model_.GetScore(record, result, flag);
  }
  int GetModelType() const override { return model_.GetModelType(); }
  bool GetPredictionOnly() const override { return false; }
  void Display(std::ostream&) const override {}

 private:
  ScoreModel& model_;
};

// Scored until as much as `long_output` waits, and then on.
std::string ScoredRows(const LoadedModel& loaded, ScoreModel& model, const std::string& rows,
                       std::size_t long_output = 1U << 20U) {
  ScoringPlan plan;
  plan.model = &model;
  plan.columns = tools::MatchColumns({"width", "height", "colour"}, loaded, {}, "cases");
  plan.replace_missing = true;
  plan.output = loaded.output.get();
  plan.results = tools::MakeColumns(model, *loaded.output, tools::ColumnChoice::kAll, false, true);
  plan.examiner = std::make_unique<reasons::CaseExaminer>(loaded, plan.columns.variables);
  plan.writes_reasons = true;
  plan.format = CsvFormat({});
  CaseScorer scorer(plan);
  scorer.FixPositions();
  CaseBlock block;
  block.rows.text = rows;
  plan.long_output = long_output;
  std::string all;
  std::uint64_t cases = 0;
  for (scorer.Score(block);; scorer.Resume(block)) {
    // Only the last row of a piece may be beyond.
    EXPECT_LT(block.out.rfind('\n', block.out.size() - 2) + 1, long_output + 1);
    all += block.out;
    cases += block.tally.cases;
    if (block.done) break;
  }
  EXPECT_EQ(cases, static_cast<std::uint64_t>(std::count(all.begin(), all.end(), '\n')));
  EXPECT_TRUE(block.error);
  return all;
}

TEST(CaseScorer, ScoresCaseByCaseWhatABatchGives) {
  const LoadedModel loaded =
      LoadModel(Plugin(SVMSCORE_PLUGIN_FILE), PmmlDocument::FromFile(DATA_FOLDER "/three.pmml"));
  SingleCases single(*loaded.model);
  // Replaced, missing, invalid, and both.
  const std::string rows =
      "1,2,blue\n1,1,\n,1,red\n1,1,\"green\"\"\"\n,one,red\n-1,-1,red\ntoo short\n";
  const std::string scores = ScoredRows(loaded, single, rows);
  EXPECT_EQ(scores, ScoredRows(loaded, *loaded.model, rows));
  EXPECT_NE(scores.find("90029,"), std::string::npos);
  // No row is lost, made twice or changed where output is written in pieces.
  for (std::size_t long_output = 1; long_output < scores.size() + 2; ++long_output) {
    EXPECT_EQ(ScoredRows(loaded, *loaded.model, rows, long_output), scores) << long_output;
  }
}

}  // namespace
}  // namespace svmscore::app
