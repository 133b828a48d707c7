// Three small models whose results were worked out by hand.
#include <gtest/gtest.h>

#include "tests/output/scoring.h"

namespace svmscore_test {
namespace {

TEST(TwoClasses, LabelsTextsAndTreatedInputs) {
  Scoring scoring(Document("alarm.pmml"));
  const Case cases[] = {{{"temp", "30"}, {"load", "85"}},
                        {{"temp", "-999"}, {"load", "20"}},
                        {{"temp", "75"}, {"load", "260"}},
                        {{"temp", "400"}, {"load", "60"}},
                        {{"temp", "abc"}, {"load", "60"}}};
  const char* labels[] = {"alarm", "ok", "alarm", "ok", "ok"};
  const char* texts[] = {"Attention", "Normal", "Attention", "Normal", "Normal"};
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_EQ(scoring.Score(cases[i]).status, 0);
    EXPECT_EQ(scoring.Text("label"), labels[i]) << i;
    EXPECT_EQ(scoring.Text("text"), texts[i]) << i;
  }
}

TEST(TwoClasses, MaxWinsAndTheMachinesThresholdDecide) {
  Scoring flipped(
      Edit(Document("alarm.pmml"), "threshold=\"0\"", "threshold=\"0\" maxWins=\"true\""));
  Scoring unmoved(Edit(Document("alarm.pmml"), " threshold=\"0.05\"", ""));
  const Case cases[] = {{{"temp", "30"}, {"load", "85"}},
                        {{"temp", "-999"}, {"load", "20"}},
                        {{"temp", "75"}, {"load", "260"}},
                        {{"temp", "400"}, {"load", "60"}}};
  const char* with_max_wins[] = {"ok", "alarm", "ok", "alarm"};
  const char* without_threshold[] = {"alarm", "ok", "ok", "ok"};
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    flipped.Score(cases[i]);
    EXPECT_EQ(flipped.Text("label"), with_max_wins[i]) << i;
    unmoved.Score(cases[i]);
    EXPECT_EQ(unmoved.Text("label"), without_threshold[i]) << i;
  }
}

TEST(TwoClasses, AnInvalidInputFailsAndAMissingOneLeavesNoPrediction) {
  Scoring scoring(Document("alarm.pmml"));
  EXPECT_EQ(scoring.Score({{"temp", "30"}, {"load", "abc"}}).status, 90027);
  EXPECT_EQ(scoring.Text("label"), "");
  const auto& outcome = scoring.Score({{"temp", "30"}});
  EXPECT_EQ(outcome.status, 90029);
  EXPECT_EQ(outcome.ending, Ending::kMissing);
  EXPECT_EQ(scoring.Text("text"), "");
}

TEST(ThreeClasses, VotesAndTies) {
  Scoring scoring(Document("grades.pmml"));
  const Case cases[] = {{{"size", "1.5"}, {"colour", "red"}, {"grade", "A"}},
                        {{"colour", "blue"}, {"grade", "B"}},
                        {{"size", "2.1"}, {"colour", "purple"}, {"grade", "Z"}},
                        {{"size", "1.5"}, {"colour", "green"}, {"grade", "B"}},
                        {{"colour", "blue"}}};
  const char* classes[] = {"low", "high", "mid", "low", "mid"};
  const int votes[][3] = {{2, 0, 1}, {0, 1, 2}, {1, 2, 0}, {1, 1, 1}, {1, 2, 0}};
  const auto& targets = scoring.Plan().Targets();
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    const auto& outcome = scoring.Score(cases[i]);
    EXPECT_EQ(outcome.prediction.GetText(), classes[i]) << i;
    for (int k = 0; k < 3; ++k) {
      EXPECT_DOUBLE_EQ(targets.ShareOf(outcome, k).value(), votes[i][k] / 3.0) << i << ' ' << k;
    }
  }
}

TEST(ThreeClasses, WithoutMaxWinsEveryComparisonTurnsRound) {
  Scoring scoring(Edit(Document("grades.pmml"), " maxWins=\"true\"", ""));
  EXPECT_EQ(
      scoring.Score({{"size", "1.5"}, {"colour", "red"}, {"grade", "A"}}).prediction.GetText(),
      "mid");
}

struct ChainRow {
  Case inputs;
  double y_hat;
  double y_log;
  const char* band;
};

const ChainRow kChain[] = {
    {{{"x1", "0.7"}, {"x2", "0.3"}}, 2.44125, 1.235834777474680, "small"},
    {{{"x1", "1.6"}}, 1.4865625, 0.910901234589717, "small"},
    {{{"x1", "3"}, {"x2", "1"}}, 9.25, 2.327277705584417, "big"},
    {{{"x1", "2"}, {"x2", "-1.5"}}, -3.25, 1.446918982936325, "small"},
};

TEST(Regression, ClampsThenRescalesThenDerives) {
  Scoring scoring(Document("chain.pmml"));
  for (const ChainRow& row : kChain) {
    EXPECT_EQ(scoring.Score(row.inputs).status, 0);
    EXPECT_NEAR(scoring.Number("y_hat").value(), row.y_hat, 1e-12);
    EXPECT_NEAR(scoring.Number("y_log").value(), row.y_log, 1e-12);
    EXPECT_EQ(scoring.Text("band"), row.band);
  }
  EXPECT_EQ(scoring.Score({{"x2", "1"}}).status, 90029);
  EXPECT_FALSE(scoring.Number("y_hat"));
  EXPECT_FALSE(scoring.Number("y_log"));
  EXPECT_EQ(scoring.Text("band"), "");
}

TEST(Regression, CastIntegerComesLast) {
  const auto with = [](const std::string& cast) {
    return Scoring(
        Edit(Document("chain.pmml"), "min=\"-1\"", "castInteger=\"" + cast + "\" min=\"-1\""));
  };
  Scoring round = with("round");
  Scoring ceiling = with("ceiling");
  Scoring floor = with("floor");
  const double rounded[] = {2, 1, 9, -3};
  const double up[] = {3, 2, 10, -3};
  const double down[] = {2, 1, 9, -4};
  for (std::size_t i = 0; i < std::size(kChain); ++i) {
    round.Score(kChain[i].inputs);
    EXPECT_EQ(round.Number("y_hat"), rounded[i]);
    ceiling.Score(kChain[i].inputs);
    EXPECT_EQ(ceiling.Number("y_hat"), up[i]);
    floor.Score(kChain[i].inputs);
    EXPECT_EQ(floor.Number("y_hat"), down[i]);
  }
}

}  // namespace
}  // namespace svmscore_test
