#include <cstdio>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "host/message_codes.h"
#include "host/scoring_log.h"
#include "host/ss_exception.h"

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

TEST(ScoringLog, WritesLinesUpToItsLevel) {
  const std::string path = testing::TempDir() + "svmscore_log_test.txt";
  std::remove(path.c_str());
  ScoringLog& log = ScoringLog::GetInstance();
  ASSERT_TRUE(log.SetFile(path));
  log.SetLevel(1);
  log.TraceText(1, "Enter:%s", "here");
  log.TraceText(2, "not this");
  log.TraceText(1, "%s", std::string(5000, 'x').c_str());
  log.SetLevel(0);
  log.TraceText(1, "nor this");
  std::ifstream file(path);
  std::string line;
  ASSERT_TRUE(std::getline(file, line));
  EXPECT_EQ(line, "svmscore log: Enter:here");
  ASSERT_TRUE(std::getline(file, line));
  EXPECT_LT(line.size(), 2100U);
  EXPECT_FALSE(std::getline(file, line));
  EXPECT_FALSE(log.SetFile("/no/such/folder/log"));
  std::remove(path.c_str());
}

}  // namespace
}  // namespace MCZandor_850
