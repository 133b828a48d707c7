#include <cstdio>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "host/model/message_codes.h"
#include "host/model/scoring_log.h"
#include "host/model/ss_exception.h"
#include "host/text/printable.h"

namespace MCZandor_850 {
namespace {

namespace code = svmscore::code;

TEST(SSException, SaysWhatToDoAndWhere) {
  SSException error(gErrorFormater);
  error.PutErrorMessage(code::kChildMissing, "VectorDictionary", std::string("PMML"));
  EXPECT_FALSE(error.GetRemedy().empty());
  error.SetPlace("line 3");
  const SSException copy = error;
  error.SetPlace("line 4");
  EXPECT_STREQ(copy.what(), "element VectorDictionary is missing in element PMML (line 3)");
  EXPECT_STREQ(error.what(), "element VectorDictionary is missing in element PMML (line 4)");
}

TEST(SSException, SurvivesUnknownCodesAndMissingParts) {
  SSException error(gErrorFormater);
  error.PutErrorMessage(1, "x");
  EXPECT_STREQ(error.what(), "error x");
  error.PutErrorMessage(code::kLengthsDiffer, "3");
  EXPECT_NE(std::string(error.what()).find("the 3 numbers of ?"), std::string::npos);
  SSException bare(nullptr);
  bare.PutErrorMessage(260115, "a", "b");
  EXPECT_STREQ(bare.what(), "260115 a b");
}

TEST(SSException, ShowsTheBeginningAndTheEndOfLongTexts) {
  SSException error(gErrorFormater);
  const std::string name(100000, 'a');
  error.PutErrorMessage(code::kChildMissing, name, name);
  error.SetPlace("element " + name + ", line 3");
  EXPECT_LT(std::string(error.what()).size(), 2000U);
  error.SetPlace("line 4");
  EXPECT_TRUE(std::string(error.what()).ends_with("a (line 4)"));
  EXPECT_EQ(error.GetMessageParts()[0], name);
}

TEST(Printable, SpellsWhatIsNoPartOfALine) {
  const struct {
    std::string text, printable;
    std::size_t longest = svmscore::kAnyLength;
  } rows[] = {
      {"\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \\n", "\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \\n"},
      {"a\nb\r\t\x1B[0m\x7F", "a\\nb\\r\\t\\x1B[0m\\x7F"},
      {std::string("\0", 1), "\\x00"},
      {"\xC2\x80\xC2\x9F\xC2\xA0", "\\u0080\\u009F\xC2\xA0"},
      {"\xE2\x80\x8D\xE2\x80\x8E\xE2\x80\xA8\xE2\x80\xAE\xE2\x80\xAF",
       "\xE2\x80\x8D\\u200E\\u2028\\u202E\xE2\x80\xAF"},
      {"\xE2\x81\xA5\xE2\x81\xA6\xE2\x81\xA9\xD8\x9C", "\xE2\x81\xA5\\u2066\\u2069\\u061C"},
      {"\x9B\xC3(\xED\xA0\x80", "\\x9B\\xC3(\\xED\\xA0\\x80"},
      {"0123456789abc", "012345\u2026bc", 8},
      {"\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9", "\u00E9\u00E9\u00E9\u00E9\u2026\u00E9", 12},
  };
  for (const auto& [text, printable, longest] : rows) {
    EXPECT_EQ(svmscore::Printable(text, longest), printable);
  }
}

TEST(ScoringLog, WritesLinesUpToItsLevel) {
  const std::string path = testing::TempDir() + "svmscore_log_test.txt";
  std::remove(path.c_str());
  ScoringLog& log = ScoringLog::GetInstance();
  ASSERT_TRUE(log.SetFile(path));
  log.SetLevel(1);
  log.TraceText(1, "Enter:%s", "here");
  log.TraceText(2, "not this");
  log.TraceText(1, "%s", std::string(5000, 'x').c_str());
  log.TraceText(1, "%s", "a\nb");
  log.SetLevel(0);
  log.TraceText(1, "nor this");
  std::ifstream file(path);
  std::string line;
  ASSERT_TRUE(std::getline(file, line));
  EXPECT_EQ(line, "svmscore log: Enter:here");
  ASSERT_TRUE(std::getline(file, line));
  EXPECT_LT(line.size(), 2100U);
  ASSERT_TRUE(std::getline(file, line));
  EXPECT_EQ(line, "svmscore log: a\\nb");
  EXPECT_FALSE(std::getline(file, line));
  EXPECT_FALSE(log.SetFile("/no/such/folder/log"));
  std::remove(path.c_str());
}

}  // namespace
}  // namespace MCZandor_850
