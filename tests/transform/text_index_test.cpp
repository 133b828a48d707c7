// TextIndex: counting terms in texts.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <string>
#include <vector>

#include "tests/transform/fixture.h"

namespace svmscore::transform {
namespace {

std::string Index(const std::string& attributes, const std::string& term,
                  const std::string& normalisations = "") {
  return "<TextIndex textField='t' " + attributes + ">" + normalisations +
         "<Constant dataType='string'>" + term + "</Constant></TextIndex>";
}

std::string Indexed(const std::string& index, const Case& values) {
  return Loaded(Document(DataField("t", "string") + DataField("term", "string"),
                         DerivedField("d", "double", index)))
      .Derive("d", values);
}

// The index of the text t for the term in the field `term`.
Loaded ByField(const std::string& attributes) {
  return Loaded(Document(DataField("t", "string") + DataField("term", "string"),
                         DerivedField("d", "double",
                                      "<TextIndex textField='t' " + attributes +
                                          "><FieldRef field='term'/></TextIndex>")));
}

struct Count {
  std::string attributes;
  std::string term;
  std::string text;
  std::string expected;
};

void Check(const std::vector<Count>& counts) {
  for (const auto& [attributes, term, text, expected] : counts) {
    EXPECT_EQ(Indexed(Index(attributes, term), {{"t", text}}), expected)
        << attributes << ": " << term << " in " << text;
  }
}

TEST(TextIndex, CountsTheTermsWords) {
  Check({{"", "ui", "The UI, \"ui\" and quick; ui!", "3"},
         {"isCaseSensitive='true'", "UI", "The UI, ui", "1"},
         {"", "x y", "x y x y\nx  Y z", "3"},
         {"", "a a", "a a a", "2"},
         {"", "ärger", "ÄRGER", "1"},
         {"wordSeparatorCharacterRE='[\\s\\-]'", "b", "a-b b-c", "2"},
         {"wordSeparatorCharacterRE='-*'", "b", "a-b-bc", "1"},
         {"", "...", "a ... b", "0"}});
}

TEST(TextIndex, TellsMissingFromEmptyTexts) {
  EXPECT_EQ(Indexed(Index("", "a"), {}), "missing");
  EXPECT_EQ(Indexed(Index("", "a"), {{"t", ""}}), "0");
  EXPECT_EQ(ByField("").Derive("d", {{"t", "a b a"}}), "missing");
  EXPECT_EQ(ByField("").Derive("d", {{"t", "a b a"}, {"term", "a"}}), "2");
}

TEST(TextIndex, WeighsCounts) {
  const std::string augmented = "localTermWeights='augmentedNormalizedTermFrequency'";
  Check({{"localTermWeights='binary'", "a", "a b a", "1"},
         {"localTermWeights='logarithmic'", "a", "a a a a b a a a a a", "1"},
         {augmented, "b", "a b a a a", "0.625"},  // once; the most frequent word four times
         {augmented, "z", "a", "0"}});
}

TEST(TextIndex, AllowsEdits) {
  const std::string text = "brown fox, brwn fox, brown fax, drown fax";
  const std::string best = "maxLevenshteinDistance='2' countHits='bestHits'";
  Check({{"", "brown fox", text, "1"},
         {"maxLevenshteinDistance='1'", "brown fox", text, "3"},
         {"maxLevenshteinDistance='2'", "brown fox", text, "4"},
         {best, "brown fox", text, "1"},
         {best, "brawn fox", text, "2"},
         {"maxLevenshteinDistance='3'", "kitten", "sitting", "1"},
         {"maxLevenshteinDistance='2'", "kitten", "sitting", "0"}});
}

std::size_t FullDistance(const std::string& left, const std::string& right) {
  std::vector<std::vector<std::size_t>> rows(left.size() + 1,
                                             std::vector<std::size_t>(right.size() + 1));
  for (std::size_t i = 0; i <= left.size(); ++i) {
    for (std::size_t j = 0; j <= right.size(); ++j) {
      if (i == 0 || j == 0) {
        rows[i][j] = i + j;
        continue;
      }
      rows[i][j] = std::min({rows[i - 1][j - 1] + (left[i - 1] == right[j - 1] ? 0 : 1),
                             rows[i - 1][j] + 1, rows[i][j - 1] + 1});
    }
  }
  return rows.back().back();
}

TEST(TextIndex, CountsLikeTheSimplestSearches) {
  std::mt19937 random(7);
  const auto letters = [&random](std::size_t most, const std::string& between) {
    std::string text = "a";
    for (std::size_t i = random() % most; i > 0; --i) text += between + "ab"[random() % 2];
    return text;
  };
  for (std::size_t most = 1; most <= 6; ++most) {
    const Loaded loaded = ByField("maxLevenshteinDistance='" + std::to_string(most) + "'");
    for (int i = 0; i < 100; ++i) {
      const std::string word = letters(12, "");
      const std::string term = letters(12, "");
      EXPECT_EQ(loaded.Derive("d", {{"t", word}, {"term", term}}),
                FullDistance(word, term) <= most ? "1" : "0")
          << word << " and " << term << " within " << most;
    }
  }
  const Loaded exact = ByField("");
  for (int i = 0; i < 200; ++i) {
    const std::string text = letters(40, " ");
    const std::string term = letters(6, " ");
    int count = 0;
    for (std::size_t at = text.find(term); at != std::string::npos; at = text.find(term, at + 1)) {
      ++count;
    }
    EXPECT_EQ(exact.Derive("d", {{"t", text}, {"term", term}}), std::to_string(count))
        << term << " in " << text;
  }
}

TEST(TextIndex, GivesUpOnTooMuchWork) {
  const std::string letters(20000, 'a');
  EXPECT_EQ(ByField("maxLevenshteinDistance='20000'")
                .Derive("d", {{"t", letters}, {"term", "b" + letters}}),
            "invalid");
  std::string text;
  for (int i = 0; i < 20000; ++i) text += "a ";
  const Loaded near = ByField("maxLevenshteinDistance='1'");
  EXPECT_EQ(near.Derive("d", {{"t", text}, {"term", text.substr(0, 20000)}}), "invalid");
  EXPECT_EQ(near.Derive("d", {{"t", text}, {"term", "a b"}}), "19999");
  const std::string wide = "[" + letters.substr(0, 2000) + "]";
  EXPECT_EQ(ByField("wordSeparatorCharacterRE='" + wide + "*[0-9]'")
                .Derive("d", {{"t", letters}, {"term", "a"}}),
            "invalid");
}

// A step of normalisation; the cells of a row are the text, what replaces it and, for a regular
// expression, true.
std::string Step(const std::string& attributes, const std::vector<std::string>& rows) {
  return "<TextIndexNormalization " + attributes + ">" + Table("string;stem;regex", rows) +
         "</TextIndexNormalization>";
}

TEST(TextIndex, NormalisesTheText) {
  const std::string stems = Step("", {"interfaces?;interface;true", "is|are|seem(s?|ed?);be;true",
                                      "user friendl(y|iness);user_friendly;true"});
  const std::string merged = Step("recursive='true'", {"interface be;ui"});
  EXPECT_EQ(Indexed(Index("", "ui user_friendly", stems + merged),
                    {{"t",
                      "Testing the app for a few days convinced me the interfaces are "
                      "User friendliness"}}),
            "1");
  // Without a regular expression, signs have no special meaning; case follows the index.
  EXPECT_EQ(Indexed(Index("", "c", Step("", {"a.b$;c"})), {{"t", "A.B$ axb$"}}), "1");
  // Where edits are allowed, a row replaces similar words.
  EXPECT_EQ(Indexed(Index("maxLevenshteinDistance='1'", "zzz", Step("", {"colour;zzz"})),
                    {{"t", "color, colours culor"}}),
            "2");
  EXPECT_EQ(
      Indexed(Index("", "zzz", Step("maxLevenshteinDistance='1'", {"ab;zzz"})), {{"t", "abc,b x"}}),
      "0");
}

TEST(TextIndex, GivesUpOnStepsWithoutEnd) {
  // One round may make a text much longer.
  const std::string sevens(3000, '7');
  EXPECT_EQ(Indexed(Index("", "seven", Step("recursive='true'", {"7; seven "})), {{"t", sevens}}),
            "3000");
  EXPECT_EQ(Indexed(Index("", "a", Step("recursive='true'", {"a;aa"})), {{"t", "a"}}), "invalid");
  EXPECT_EQ(
      Indexed(Index("", "a", Step("recursive='true'", {"^(.)(.*)$;$2$1;true"})), {{"t", "abc"}}),
      "invalid")
      << "a rotation";
  EXPECT_EQ(Indexed(Index("", "b", Step("recursive='true'", {"aa;a", "a;b"})), {{"t", "aaaaaaaa"}}),
            "0");
  std::vector<std::string> chain;
  for (int i = 0; i < 3000; ++i) {
    chain.push_back("w" + std::to_string(i) + ";w" + std::to_string(i + 1));
  }
  std::string words;
  for (int i = 0; i < 3000; ++i) words += "w0 ";
  EXPECT_EQ(Indexed(Index("", "w1", Step("recursive='true'", chain)), {{"t", words}}), "invalid");
}

TEST(TextIndex, RefusesWhatItCannotDo) {
  for (const auto& [index, complaint] :
       Case{{Index("tokenize='false'", "a"), "tokenize"},
            {Index("wordSeparatorCharacterRE='['", "a"), "not a regular expression"},
            {Index("countHits='someHits'", "a"), "someHits"},
            {Index("localTermWeights='heavy'", "a"), "heavy"},
            {Index("", "a", "<TextIndexNormalization><TableLocator/></TextIndexNormalization>"),
             "TableLocator"},
            {Index("", "a", Step("inField='no'", {"a;b"})), "no text to replace"},
            {"<TextIndex textField='t'/>", "no expression"}}) {
    EXPECT_THAT(Refusal(Document(DataField("t", "string"), DerivedField("d", "double", index))),
                ::testing::HasSubstr(complaint));
  }
}

}  // namespace
}  // namespace svmscore::transform
