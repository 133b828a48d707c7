// TextIndex: counting terms in texts.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "host/number_text.h"
#include "tests/transform/fixture.h"

namespace svmscore::transform {
namespace {

using ::testing::HasSubstr;

std::string Index(const std::string& attributes, const std::string& term,
                  const std::string& normalisations = "") {
  return "<TextIndex textField=\"t\" " + attributes + ">" + normalisations +
         "<Constant dataType=\"string\">" + term + "</Constant></TextIndex>";
}

std::string Compute(const std::string& index, const Case& values) {
  return Loaded(Document(DataField("t", "string") + DataField("term", "string"),
                         DerivedField("d", "double", index)))
      .Derive("d", values);
}

std::string Count(const std::string& attributes, const std::string& term, const std::string& text) {
  return Compute(Index(attributes, term), {{"t", text}});
}

TEST(TextIndex, CountsTheTermsWords) {
  EXPECT_EQ(Count("", "ui", "The UI, \"ui\" and quick; ui!"), "3");
  EXPECT_EQ(Count("isCaseSensitive=\"true\"", "UI", "The UI, ui"), "1");
  EXPECT_EQ(Count("", "x y", "x y x y\nx  Y z"), "3");
  EXPECT_EQ(Count("", "a a", "a a a"), "2");
  EXPECT_EQ(Count("", "ärger", "ÄRGER"), "1");
  EXPECT_EQ(Count("wordSeparatorCharacterRE=\"[\\s\\-]\"", "b", "a-b b-c"), "2");
  EXPECT_EQ(Count("wordSeparatorCharacterRE=\"-*\"", "b", "a-b-bc"), "1");
  EXPECT_EQ(Count("", "...", "a ... b"), "0");
}

TEST(TextIndex, TellsMissingFromEmptyTexts) {
  EXPECT_EQ(Compute(Index("", "a"), {}), "missing");
  EXPECT_EQ(Compute(Index("", "a"), {{"t", ""}}), "0");
  const std::string by_field = "<TextIndex textField=\"t\"><FieldRef field=\"term\"/></TextIndex>";
  EXPECT_EQ(Compute(by_field, {{"t", "a b a"}}), "missing");
  EXPECT_EQ(Compute(by_field, {{"t", "a b a"}, {"term", "a"}}), "2");
}

TEST(TextIndex, WeighsCounts) {
  EXPECT_EQ(Count("localTermWeights=\"binary\"", "a", "a b a"), "1");
  EXPECT_EQ(Count("localTermWeights=\"logarithmic\"", "a", "a b a"), FormatNumber(std::log10(3.0)));
  // "b" once; the most frequent word three times.
  EXPECT_EQ(
      *ParseNumber(Count("localTermWeights=\"augmentedNormalizedTermFrequency\"", "b", "a b a a")),
      0.5 * (1.0 + 1.0 / 3.0));
  EXPECT_EQ(Count("localTermWeights=\"augmentedNormalizedTermFrequency\"", "z", "a"), "0");
}

TEST(TextIndex, AllowsEdits) {
  const std::string text = "brown fox, brwn fox, brown fax, drown fax";
  EXPECT_EQ(Count("", "brown fox", text), "1");
  EXPECT_EQ(Count("maxLevenshteinDistance=\"1\"", "brown fox", text), "3");
  EXPECT_EQ(Count("maxLevenshteinDistance=\"2\"", "brown fox", text), "4");
  EXPECT_EQ(Count("maxLevenshteinDistance=\"2\" countHits=\"bestHits\"", "brown fox", text), "1");
  EXPECT_EQ(Count("maxLevenshteinDistance=\"2\" countHits=\"bestHits\"", "brawn fox", text), "2");
  EXPECT_EQ(Count("maxLevenshteinDistance=\"3\"", "kitten", "sitting"), "1");
  EXPECT_EQ(Count("maxLevenshteinDistance=\"2\"", "kitten", "sitting"), "0");
}

std::string Row(const std::string& in, const std::string& out, bool regex) {
  return "<row><string>" + in + "</string><stem>" + out + "</stem>" +
         (regex ? "<regex>true</regex>" : "") + "</row>";
}

std::string Step(const std::string& attributes, const std::string& rows) {
  return "<TextIndexNormalization " + attributes + "><InlineTable>" + rows +
         "</InlineTable></TextIndexNormalization>";
}

TEST(TextIndex, NormalisesTheText) {
  const std::string stems =
      Step("", Row("interfaces?", "interface", true) + Row("is|are|seem(s?|ed?)", "be", true) +
                   Row("user friendl(y|iness)", "user_friendly", true));
  const std::string merged = Step("recursive=\"true\"", Row("interface be", "ui", false));
  EXPECT_EQ(Compute(Index("", "ui user_friendly", stems + merged),
                    {{"t",
                      "Testing the app for a few days convinced me the interfaces are "
                      "User friendliness"}}),
            "1");
  // Without an expression, signs stand for themselves; case follows the index.
  EXPECT_EQ(Compute(Index("", "c", Step("", Row("a.b$", "c", false))), {{"t", "A.B$ axb$"}}), "1");
  // Where edits are allowed, a row replaces words that come near to it.
  EXPECT_EQ(
      Compute(Index("maxLevenshteinDistance=\"1\"", "zzz", Step("", Row("colour", "zzz", false))),
              {{"t", "color, colours culor"}}),
      "2");
  EXPECT_EQ(Compute(Index("", "zzz", Step("maxLevenshteinDistance=\"1\"", Row("ab", "zzz", false))),
                    {{"t", "abc,b x"}}),
            "0");
}

TEST(TextIndex, GivesUpOnStepsWithoutEnd) {
  EXPECT_EQ(
      Compute(Index("", "a", Step("recursive=\"true\"", Row("a", "aa", false))), {{"t", "a"}}),
      "invalid");
  EXPECT_EQ(Compute(Index("", "b",
                          Step("recursive=\"true\"", Row("aa", "a", false) + Row("a", "b", false))),
                    {{"t", "aaaaaaaa"}}),
            "0");
}

TEST(TextIndex, RefusesWhatItCannotDo) {
  const auto refusal = [](const std::string& index) {
    return Refusal(Document(DataField("t", "string"), DerivedField("d", "double", index)));
  };
  EXPECT_THAT(refusal(Index("tokenize=\"false\"", "a")), HasSubstr("tokenize"));
  EXPECT_THAT(refusal(Index("wordSeparatorCharacterRE=\"[\"", "a")),
              HasSubstr("regular expression"));
  EXPECT_THAT(refusal(Index("countHits=\"someHits\"", "a")), HasSubstr("someHits"));
  EXPECT_THAT(refusal(Index("localTermWeights=\"heavy\"", "a")), HasSubstr("heavy"));
  EXPECT_THAT(refusal(Index("", "a",
                            "<TextIndexNormalization><TableLocator/>"
                            "</TextIndexNormalization>")),
              HasSubstr("TableLocator"));
  EXPECT_THAT(refusal(Index("", "a", Step("inField=\"no\"", Row("a", "b", false)))),
              HasSubstr("no text to replace"));
  EXPECT_THAT(refusal("<TextIndex textField=\"t\"/>"), HasSubstr("no expression"));
}

}  // namespace
}  // namespace svmscore::transform
