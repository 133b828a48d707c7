// Verification records: reading them, and when values agree.
#include <cmath>

#include <gtest/gtest.h>

#include "host/model/ss_exception.h"
#include "host/output/verification_records.h"
#include "tests/output/document_scoring.h"

namespace svmscore_test {
namespace {

using svmscore::output::Judge;
using svmscore::output::Judgement;
using svmscore::transform::Value;

bool Agrees(const char* expected, double actual) {
  return Judge(expected, Value::Double(actual), {0.25, 0.5}).agrees;
}

TEST(Judge, NumbersAgreeWithinAShareOfTheExpectedOne) {
  EXPECT_TRUE(Agrees("4", 5));
  EXPECT_FALSE(Agrees("4", std::nextafter(5.0, 6.0)));
  EXPECT_FALSE(Agrees("5", 3));
  EXPECT_TRUE(Agrees("-4", -5));
  EXPECT_TRUE(Agrees("-4", -3));
  EXPECT_FALSE(Agrees("-4", 4));
  EXPECT_TRUE(Agrees("INF", INFINITY));
  EXPECT_FALSE(Agrees("INF", 1e308));
  EXPECT_FALSE(Agrees("4", INFINITY));
  EXPECT_FALSE(Agrees("4", NAN));
  EXPECT_TRUE(Agrees("NaN", NAN));
  EXPECT_FALSE(Agrees("NaN", 4));
  EXPECT_FALSE(Judge("4", Value::Double(NAN), {}).deviation);
  EXPECT_FALSE(Agrees("four", 4));
}

TEST(Judge, ZerosAgreeOnlyWhenBothAre) {
  EXPECT_TRUE(Agrees("0.5", -0.5));
  EXPECT_FALSE(Agrees("0.5", -0.6));
  const Judgement judgement = Judge("0", Value::Double(1e-12), {});
  EXPECT_FALSE(judgement.agrees);
  EXPECT_TRUE(judgement.near_zero);
  EXPECT_TRUE(Judge("0", Value::Double(1e-17), {}).agrees);
  EXPECT_TRUE(Judge("0", Value::Double(0.0), {0.0, 0.0}).agrees);
}

TEST(Judge, OtherValuesAgreeWhenEqualAsTheirType) {
  EXPECT_TRUE(Judge("yes", Value::Text("yes"), {1, 1}).agrees);
  EXPECT_FALSE(Judge("1.0", Value::Text("1"), {1, 1}).agrees);
  EXPECT_TRUE(Judge("1.0", Value::Integer(1), {0, 0}).agrees);
  EXPECT_FALSE(Judge("1.5", Value::Integer(1), {0.1, 0}).agrees);
  EXPECT_TRUE(Judge("1", Value::Boolean(true), {}).agrees);
  EXPECT_TRUE(Judge("0.1", Value::Of(0.1F, {svmscore::DataType::kFloat}), {0, 0}).agrees);
  EXPECT_FALSE(Judge("0", Value::Missing(), {}).agrees);
  EXPECT_FALSE(Judge("0", Value::Invalid(), {}).agrees);
}

std::optional<svmscore::output::Verification> Read(const std::string& text) {
  const auto document = svmscore::PmmlDocument::FromText(text, "test.pmml");
  return svmscore::output::ReadVerification(document.Dom());
}

// Tests of the program's verification check that records are read to the last cell.
TEST(ReadVerification, GivesAllowancesAndTellsWrongCounts) {
  const auto read = Read(Edit(Document("chain.pmml"), "recordCount=\"2\"", "recordCount=\"3\""));
  ASSERT_EQ(read->columns.size(), 4U);
  EXPECT_EQ(read->columns[2].allowance.precision, 1e-9);
  EXPECT_EQ(read->columns[2].allowance.zero_threshold, 1e-12);
  EXPECT_EQ(read->columns[3].allowance.precision, 1e-6);
  ASSERT_EQ(read->notes.size(), 1U);
  EXPECT_EQ(read->notes[0].text, "recordCount is 3, but there are 2");
}

TEST(ReadVerification, RefusesWhatItCannotRead) {
  struct Row {
    const char* pattern;
    const char* replacement;
    int code;
  };
  for (const auto& [pattern, replacement, code] :
       {Row{"precision=\"1E-9\"", "precision=\"-1\"", 260153},
        {"<VerificationField field=\"x1\"", "<VerificationField name=\"x1\"", 260120},
        {"<InlineTable>[^]*</InlineTable>", "", 260115},
        {"<InlineTable>[^]*</InlineTable>", "<TableLocator/>", 260304},
        {"<VerificationFields>[^]*</VerificationFields>", "", 260115}}) {
    try {
      Read(Edit(Document("chain.pmml"), pattern, replacement));
      ADD_FAILURE() << pattern << " is read as " << replacement;
    } catch (const MCZandor_850::SSException& error) {
      EXPECT_EQ(error.GetErrorCode(), code) << pattern;
    }
  }
}

}  // namespace
}  // namespace svmscore_test
