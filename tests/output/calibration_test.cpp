// The probabilities of calibrated machines: whose they are, and in which order.
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/findings/finding.h"
#include "tests/output/document_scoring.h"

namespace svmscore_test {
namespace {

using svmscore::LoadChecks;
using Pair = std::pair<std::string, std::string>;

std::string Extension(const Pair& pair) {
  return "<Extension extender='svmscore'><ResponseCategory response='" + pair.first +
         "' nonResponse='" + pair.second +
         "'/><ProbabilityParameters A='-1.5' B='0.25'/></Extension>";
}

// The document with `before[i]` in front of the support vectors of its i-th machine.
std::string WithBefore(const std::string& document, const std::vector<std::string>& before) {
  std::string text = document;
  std::size_t at = 0;
  for (const std::string& content : before) {
    at = text.find("<SupportVectors", at);
    text.insert(at, content);
    at += content.size() + 1;
  }
  return text;
}

const Pair kLowMid = {"low", "mid"};
const Pair kLowHigh = {"low", "high"};
const Pair kMidHigh = {"mid", "high"};

std::string Calibrated(const std::vector<Pair>& pairs) {
  std::vector<std::string> extensions;
  for (const Pair& pair : pairs) extensions.push_back(Extension(pair));
  return WithBefore(Document("grades.pmml"), extensions);
}

std::vector<double> Percentages(const std::string& document, LoadChecks checks) {
  Scoring scoring(document, checks);
  const auto& outcome = scoring.Score({{"size", "2"}, {"colour", "blue"}, {"grade", "B"}});
  std::vector<double> percentages;
  const auto& targets = scoring.Plan().Targets();
  for (std::size_t i = 0; i < targets.Target().GetCategories().size(); ++i) {
    percentages.push_back(targets.PercentOf(outcome, i));
  }
  return percentages;
}

std::vector<std::string> Serious(const std::string& document) {
  std::vector<std::string> names;
  Scoring scoring(document);
  for (const auto& finding : scoring.Loaded().findings) {
    if (finding.kind->IsRefusedWhenStrict()) names.emplace_back(finding.Name());
  }
  return names;
}

TEST(Calibration, OfThreeCategoriesGoesByPosition) {
  const std::string plain = Calibrated({kLowMid, kLowHigh, kMidHigh});
  const std::string later = Calibrated({kLowMid, {"high", "low"}, kMidHigh});
  const std::string strayed = Calibrated({kMidHigh, kLowHigh, kLowMid});
  for (const LoadChecks checks : {LoadChecks::kRefuse, LoadChecks::kAsIs}) {
    const std::vector<double> expected = Percentages(plain, checks);
    EXPECT_NE(expected, Percentages(Document("grades.pmml"), checks));
    EXPECT_EQ(Percentages(later, checks), expected);
    EXPECT_EQ(Percentages(strayed, checks), expected);
  }
  EXPECT_THAT(Serious(plain), testing::IsEmpty());
  EXPECT_THAT(Serious(later), testing::ElementsAre("response-later"));
  EXPECT_THAT(Serious(strayed), testing::ElementsAre("pair-out-of-order", "pair-out-of-order"));
  for (const std::string& document : {later, strayed}) {
    EXPECT_THROW(Scoring(document, LoadChecks::kStrict), MCZandor_850::SSException);
  }
}

// As written, results hold that of the response first, whichever category it is.
TEST(Calibration, OfTwoCategoriesBelongsToTheResponse) {
  const std::string first = WithBefore(Document("alarm.pmml"), {Extension({"ok", "alarm"})});
  const std::string second = WithBefore(Document("alarm.pmml"), {Extension({"alarm", "ok"})});
  const auto percentages = [](const std::string& document, LoadChecks checks) {
    Scoring scoring(document, checks);
    const auto& outcome = scoring.Score({{"temp", "30"}, {"load", "85"}});
    const auto& targets = scoring.Plan().Targets();
    return std::pair(targets.PercentOf(outcome, 0), targets.PercentOf(outcome, 1));
  };
  const auto meant = percentages(first, LoadChecks::kRefuse);
  EXPECT_NEAR(meant.first + meant.second, 1.0, 1e-15);
  EXPECT_NE(meant.first, meant.second);
  EXPECT_EQ(percentages(second, LoadChecks::kRefuse), std::pair(meant.second, meant.first));
  const auto letter = percentages(first, LoadChecks::kAsIs);
  EXPECT_NE(letter.first, letter.second);
  EXPECT_EQ(percentages(second, LoadChecks::kAsIs), letter);
}

TEST(Calibration, IsReadBehindTheExtensionsOfOthers) {
  const std::string plain = Calibrated({kLowMid, kLowHigh, kMidHigh});
  const std::string others = "<Extension extender='other'/><Extension/>";
  const std::string behind = WithBefore(Document("grades.pmml"),
                                        {others + Extension(kLowMid), others + Extension(kLowHigh),
                                         others + Extension(kMidHigh) + others});
  EXPECT_EQ(Percentages(behind, LoadChecks::kRefuse), Percentages(plain, LoadChecks::kRefuse));
  EXPECT_EQ(Percentages(behind, LoadChecks::kStrict), Percentages(plain, LoadChecks::kRefuse));
  EXPECT_EQ(Percentages(behind, LoadChecks::kAsIs),
            Percentages(Document("grades.pmml"), LoadChecks::kAsIs));
}

TEST(Calibration, OfSomeMachinesIsNotUsed) {
  const std::string votes = Document("grades.pmml");
  const struct {
    std::vector<std::string> extensions;
    std::string lacking;
    bool letter_votes;  // the last machine decides
  } cases[] = {
      {{"", Extension(kLowHigh), Extension(kMidHigh)}, "machine 1 ", false},
      {{Extension(kLowMid), Extension(kLowHigh), ""}, "machine 3 ", true},
      {{"", Extension(kLowHigh), "<Extension extender='svmscore'/>"}, "machines 1, 3 ", true},
  };
  for (const auto& [extensions, lacking, letter_votes] : cases) {
    SCOPED_TRACE(lacking);
    const std::string document = WithBefore(votes, extensions);
    EXPECT_EQ(Percentages(document, LoadChecks::kRefuse), Percentages(votes, LoadChecks::kRefuse));
    EXPECT_EQ(Percentages(document, LoadChecks::kAsIs) == Percentages(votes, LoadChecks::kAsIs),
              letter_votes);
    bool told = false;
    Scoring scoring(document);
    for (const auto& finding : scoring.Loaded().findings) {
      if (finding.Name() != "extension-on-some") continue;
      told = true;
      EXPECT_THAT(finding.detail, testing::HasSubstr(lacking));
    }
    EXPECT_TRUE(told);
    EXPECT_THROW(Scoring(document, LoadChecks::kStrict), MCZandor_850::SSException);
  }
  // One-against-all names one category of each machine.
  const std::string all = Edit(Edit(Edit(Edit(votes, "\"OneAgainstOne\"", "\"OneAgainstAll\""),
                                         " alternateTargetCategory=\"[a-z]*\"", ""),
                                    " alternateTargetCategory=\"[a-z]*\"", ""),
                               " alternateTargetCategory=\"[a-z]*\"", "");
  const std::vector<std::string> lacking_first = {"", Extension(kLowHigh), Extension(kMidHigh)};
  EXPECT_EQ(Scoring(WithBefore(all, lacking_first))
                .Score({{"size", "1"}, {"colour", "red"}, {"grade", "1"}})
                .status,
            0);
  // A pair that names no categories cannot vote, and no case can be decided.
  const std::string mute =
      Edit(votes, " targetCategory=\"mid\" alternateTargetCategory=\"high\"", "");
  Scoring scoring(WithBefore(mute, lacking_first));
  EXPECT_EQ(scoring.Score({{"size", "1"}, {"colour", "red"}, {"grade", "1"}}).status, 90027);
}

}  // namespace
}  // namespace svmscore_test
