// Every way in which a document is refused: the code, its parts, and a place.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/pmml/document.h"
#include "host/ss_exception.h"
#include "svm/translator/translator.h"
#include "tests/translator/failures.h"

namespace svmscore_test {
namespace {

using MCZandor_850::SSException;
using MCZandor_850::SVMTranslator;

class FailureTest : public testing::TestWithParam<Failure> {};

TEST_P(FailureTest, IsThrownAndTheTranslatorGoesOn) {
  const Failure& row = GetParam();
  const auto bad =
      svmscore::PmmlDocument::FromText(Edit(row.base(), row.pattern, row.replacement), "bad.pmml");
  SVMTranslator translator;
  try {
    std::unique_ptr<MCZandor_850::ScoreModel> model(translator.ParseFromTree(bad.Dom(), "UTF-8"));
    FAIL() << "translated";
  } catch (const SSException& error) {
    EXPECT_EQ(error.GetErrorCode(), row.code);
    EXPECT_EQ(error.GetMessageParts(), row.parts);
    EXPECT_NE(error.GetElement(), nullptr);
  }
  const auto good = svmscore::PmmlDocument::FromText(row.base(), "good.pmml");
  std::unique_ptr<MCZandor_850::ScoreModel> model(translator.ParseFromTree(good.Dom(), "UTF-8"));
  EXPECT_NE(model, nullptr);
}

INSTANTIATE_TEST_SUITE_P(Documents, FailureTest, testing::ValuesIn(kFailures),
                         [](const auto& row) { return row.param.name; });

TEST(FailuresTest, AnUnreadableDeviationNamesItsText) {
  const auto bad = svmscore::PmmlDocument::FromText(Edit(Regression(), "0\\.35", "wide"), "bad");
  SVMTranslator translator;
  try {
    std::unique_ptr<MCZandor_850::ScoreModel> model(translator.ParseFromTree(bad.Dom(), "UTF-8"));
    FAIL() << "translated";
  } catch (const SSException& error) {
    EXPECT_EQ(error.GetErrorCode(), 260153);
    EXPECT_EQ(error.GetMessageParts().at(0), "wide");
    ASSERT_NE(error.GetElement(), nullptr);
    EXPECT_TRUE(SVMTranslator::IsEqual(error.GetElement()->getTagName(), "StandardDeviation"));
  }
}

TEST(FailuresTest, NullsYieldNothing) {
  SVMTranslator translator;
  EXPECT_EQ(translator.ParseFromTree(static_cast<xercesc::DOMDocument*>(nullptr), "UTF-8"),
            nullptr);
  EXPECT_EQ(translator.GetNumOfSVMachine(nullptr, nullptr), 0u);
  EXPECT_FALSE(translator.DoValidationForTargets(nullptr, 1, nullptr));
  EXPECT_EQ(translator.GetVectorIDAtt(nullptr, nullptr), "");
  EXPECT_THROW(translator.GetElemOfSVMachine(nullptr, 0), SSException);
  EXPECT_THROW(translator.GetElemOfSupportVector(nullptr, 0), SSException);
}

}  // namespace
}  // namespace svmscore_test
