// Models that take no batches, and rows that need no record.
#include "app/score/case_scorer.h"

#include <algorithm>
#include <string>

#include <gmock/gmock.h>
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

struct Table {
  std::vector<std::string_view> header;
  std::string rows;
  tools::CellRules cells = tools::CellRules();
  char delimiter = ',';
};

// Scored until as much as `long_output` waits, and then on. The last row is broken.
std::string ScoredRows(const LoadedModel& loaded, ScoreModel& model, const Table& table,
                       std::size_t long_output = 1U << 20U) {
  ScoringPlan plan;
  plan.model = &model;
  plan.columns = tools::MatchColumns(table.header, loaded, {}, "cases");
  plan.cells = table.cells;
  plan.rows.delimiter = table.delimiter;
  plan.replace_missing = true;
  plan.output = loaded.output.get();
  plan.results = tools::MakeColumns(model, *loaded.output, tools::ColumnChoice::kAll, false, true);
  plan.examiner = std::make_unique<reasons::CaseExaminer>(loaded, plan.columns.variables);
  plan.writes_reasons = true;
  plan.format = CsvFormat({});
  plan.long_output = long_output;
  CaseScorer scorer(plan);
  scorer.FixPositions();
  CaseBlock block;
  block.rows.text = table.rows;
  std::string all;
  std::uint64_t cases = 0;
  for (scorer.Work(block);; scorer.Resume(block)) {
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
  const Table table{{"width", "height", "colour"},
                    "1,2,blue\n1,1,\n,1,red\n1,1,\"green\"\"\"\n,one,red\n-1,-1,red\ntoo short\n"};
  const std::string scores = ScoredRows(loaded, single, table);
  EXPECT_EQ(scores, ScoredRows(loaded, *loaded.model, table));
  EXPECT_NE(scores.find("90029,"), std::string::npos);
  // No row is lost, made twice or changed where output is written in pieces.
  for (std::size_t long_output = 1; long_output < scores.size() + 2; ++long_output) {
    EXPECT_EQ(ScoredRows(loaded, *loaded.model, table, long_output), scores) << long_output;
  }
}

// Numbers that are entries as they are, between those that a declaration or an option touches.
TEST(CaseScorer, ScoresRowsOfNumbersAsThroughARecord) {
  const LoadedModel loaded =
      LoadModel(Plugin(SVMSCORE_PLUGIN_FILE), PmmlDocument::FromFile(DATA_FOLDER "/plane.pmml"));
  SingleCases single(*loaded.model);
  const std::string rows =
      "1.5;x;0.25\n-5;x;2\n5;x;2\n4.9999;x;-1e3\n1;x;\n;x;1\n1;x;-7\n 2 ;x;+3\n0;x;INF\n0;x;NA\n"
      "0;x;1,5\n\"1\";x;\"2\"\n0;x;-1.7976931348623157e308\n0;x;one\n-0;x;0\nshort\n";
  for (const tools::CellRules& cells :
       {tools::CellRules(), tools::CellRules({"-7", "1"}), tools::CellRules({}, true)}) {
    const Table table{{"p", "no input", "q"}, rows, cells, ';'};
    EXPECT_EQ(ScoredRows(loaded, *loaded.model, table), ScoredRows(loaded, single, table));
  }
  const Table table{{"q", "p"}, "2,3\nshort\n"};
  EXPECT_THAT(ScoredRows(loaded, *loaded.model, table), testing::StartsWith("3002,"));
}

}  // namespace
}  // namespace svmscore::app
