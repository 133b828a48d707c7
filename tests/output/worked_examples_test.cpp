// Three small models whose results were computed by hand.
#include <gtest/gtest.h>

#include "tests/output/document_scoring.h"

namespace svmscore_test {
namespace {

TEST(TwoClasses, MaxWinsAndTheMachinesThresholdDecide) {
  const std::string alarm = Document("alarm.pmml");
  Scoring scoring(alarm);
  Scoring flipped(Edit(alarm, "threshold=\"0\"", "threshold=\"0\" maxWins=\"true\""));
  Scoring unmoved(Edit(alarm, " threshold=\"0.05\"", ""));
  struct Row {
    Case inputs;
    const char* label;
    const char* text;
    const char* with_max_wins;
    const char* without_threshold;
  };
  for (const Row& row :
       std::vector<Row>{{{{"temp", "30"}, {"load", "85"}}, "alarm", "Attention", "ok", "alarm"},
                        {{{"temp", "-999"}, {"load", "20"}}, "ok", "Normal", "alarm", "ok"},
                        {{{"temp", "75"}, {"load", "260"}}, "alarm", "Attention", "ok", "ok"},
                        {{{"temp", "400"}, {"load", "60"}}, "ok", "Normal", "alarm", "ok"},
                        {{{"temp", "abc"}, {"load", "60"}}, "ok", "Normal", "alarm", "ok"}}) {
    SCOPED_TRACE("temp " + row.inputs.at("temp"));
    EXPECT_EQ(scoring.Score(row.inputs).status, 0);
    EXPECT_EQ(scoring.Text("label"), row.label);
    EXPECT_EQ(scoring.Text("text"), row.text);
    flipped.Score(row.inputs);
    EXPECT_EQ(flipped.Text("label"), row.with_max_wins);
    unmoved.Score(row.inputs);
    EXPECT_EQ(unmoved.Text("label"), row.without_threshold);
  }
  EXPECT_EQ(scoring.Score({{"temp", "30"}}).ending, Ending::kMissing);
  EXPECT_EQ(scoring.Text("text"), "");
}

TEST(ThreeClasses, VotesAndTies) {
  Scoring scoring(Document("grades.pmml"));
  struct Row {
    Case inputs;
    const char* prediction;
    int votes[3];
  };
  for (const Row& row :
       std::vector<Row>{{{{"size", "1.5"}, {"colour", "red"}, {"grade", "A"}}, "low", {2, 0, 1}},
                        {{{"colour", "blue"}, {"grade", "B"}}, "high", {0, 1, 2}},
                        {{{"size", "2.1"}, {"colour", "purple"}, {"grade", "Z"}}, "mid", {1, 2, 0}},
                        {{{"size", "1.5"}, {"colour", "green"}, {"grade", "B"}}, "low", {1, 1, 1}},
                        {{{"colour", "blue"}}, "mid", {1, 2, 0}}}) {
    SCOPED_TRACE("colour " + row.inputs.at("colour"));
    const auto& outcome = scoring.Score(row.inputs);
    EXPECT_EQ(outcome.prediction.GetText(), row.prediction);
    for (int k = 0; k < 3; ++k) {
      EXPECT_DOUBLE_EQ(scoring.Plan().Targets().ShareOf(outcome, k).value(), row.votes[k] / 3.0);
    }
  }
}

TEST(ThreeClasses, WithoutMaxWinsEveryComparisonTurnsRound) {
  Scoring scoring(Edit(Document("grades.pmml"), " maxWins=\"true\"", ""));
  EXPECT_EQ(
      scoring.Score({{"size", "1.5"}, {"colour", "red"}, {"grade", "A"}}).prediction.GetText(),
      "mid");
}

TEST(Regression, IsClampedThenRescaledThenCast) {
  struct Row {
    Case inputs;
    double plain, round, ceiling, floor;
  };
  const std::vector<Row> rows = {{{{"x1", "0.7"}, {"x2", "0.3"}}, 2.44125, 2, 3, 2},
                                 {{{"x1", "1.6"}}, 1.4865625, 1, 2, 1},
                                 {{{"x1", "3"}, {"x2", "1"}}, 9.25, 9, 10, 9},
                                 {{{"x1", "2"}, {"x2", "-1.5"}}, -3.25, -3, -3, -4}};
  const auto check = [&rows](const std::string& cast, double Row::*expected) {
    Scoring scoring(Edit(Document("chain.pmml"), "min=\"-1\"", cast + " min=\"-1\""));
    for (const Row& row : rows) {
      scoring.Score(row.inputs);
      EXPECT_NEAR(scoring.Number("y_hat").value(), row.*expected, cast.empty() ? 1e-12 : 0.0)
          << cast << " x1=" << row.inputs.at("x1");
    }
  };
  check("", &Row::plain);
  check("castInteger=\"round\"", &Row::round);
  check("castInteger=\"ceiling\"", &Row::ceiling);
  check("castInteger=\"floor\"", &Row::floor);
}

}  // namespace
}  // namespace svmscore_test
