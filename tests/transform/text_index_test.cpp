// TextIndex: counting terms in texts.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

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

std::string Compute(const std::string& index, const Case& values) {
  return Loaded(Document(DataField("t", "string") + DataField("term", "string"),
                         DerivedField("d", "double", index)))
      .Derive("d", values);
}

struct Count {
  std::string attributes;
  std::string term;
  std::string text;
  std::string expected;
};

void Check(const std::vector<Count>& counts) {
  for (const auto& [attributes, term, text, expected] : counts) {
    EXPECT_EQ(Compute(Index(attributes, term), {{"t", text}}), expected)
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
  EXPECT_EQ(Compute(Index("", "a"), {}), "missing");
  EXPECT_EQ(Compute(Index("", "a"), {{"t", ""}}), "0");
  const std::string by_field = "<TextIndex textField='t'><FieldRef field='term'/></TextIndex>";
  EXPECT_EQ(Compute(by_field, {{"t", "a b a"}}), "missing");
  EXPECT_EQ(Compute(by_field, {{"t", "a b a"}, {"term", "a"}}), "2");
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
  EXPECT_EQ(Compute(Index("", "ui user_friendly", stems + merged),
                    {{"t",
                      "Testing the app for a few days convinced me the interfaces are "
                      "User friendliness"}}),
            "1");
  // Without an expression, signs stand for themselves; case follows the index.
  EXPECT_EQ(Compute(Index("", "c", Step("", {"a.b$;c"})), {{"t", "A.B$ axb$"}}), "1");
  // Where edits are allowed, a row replaces words that come near to it.
  EXPECT_EQ(Compute(Index("maxLevenshteinDistance='1'", "zzz", Step("", {"colour;zzz"})),
                    {{"t", "color, colours culor"}}),
            "2");
  EXPECT_EQ(
      Compute(Index("", "zzz", Step("maxLevenshteinDistance='1'", {"ab;zzz"})), {{"t", "abc,b x"}}),
      "0");
}

TEST(TextIndex, GivesUpOnStepsWithoutEnd) {
  // One round may make a text much longer.
  const std::string sevens(3000, '7');
  EXPECT_EQ(Compute(Index("", "seven", Step("recursive='true'", {"7; seven "})), {{"t", sevens}}),
            "3000");
  EXPECT_EQ(Compute(Index("", "a", Step("recursive='true'", {"a;aa"})), {{"t", "a"}}), "invalid");
  EXPECT_EQ(
      Compute(Index("", "a", Step("recursive='true'", {"^(.)(.*)$;$2$1;true"})), {{"t", "abc"}}),
      "invalid")
      << "a rotation";
  EXPECT_EQ(Compute(Index("", "b", Step("recursive='true'", {"aa;a", "a;b"})), {{"t", "aaaaaaaa"}}),
            "0");
}

TEST(TextIndex, RefusesWhatItCannotDo) {
  for (const auto& [index, complaint] :
       Case{{Index("tokenize='false'", "a"), "tokenize"},
            {Index("wordSeparatorCharacterRE='['", "a"), "no regular expression"},
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
