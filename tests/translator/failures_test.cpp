// Every way in which a document is refused: the code, its parts, and a place.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

#include "host/model/scoring_log.h"
#include "host/model/ss_exception.h"
#include "host/xml/document.h"
#include "svm/translator/translator.h"
#include "tests/slot_order.h"
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
    ASSERT_NE(error.GetElement(), nullptr);
    if (row.name == std::string("DeviationNoNumber")) {
      EXPECT_TRUE(SVMTranslator::IsEqual(error.GetElement()->getTagName(), "StandardDeviation"));
    }
  }
  const auto good = svmscore::PmmlDocument::FromText(row.base(), "good.pmml");
  std::unique_ptr<MCZandor_850::ScoreModel> model(translator.ParseFromTree(good.Dom(), "UTF-8"));
  EXPECT_NE(model, nullptr);
}

INSTANTIATE_TEST_SUITE_P(Documents, FailureTest, testing::ValuesIn(kFailures),
                         [](const auto& row) { return row.param.name; });

// Of several faults the one of the earlier stage is reported.
// clang-format off
const Failure kSeveralFaults[] = {
    {"ScorableFirst", kCls, "functionName=.*? ", "isScorable='FALSE' ", 260281,
     {"isScorable", "PMML"}},
    {"TargetBeforeVectors", kCls, "predicted(.*)<VectorD.*VectorDictionary>", "group$1", 260221,
     {"Targets"}},
    {"VectorsBeforeMachines", kCls, " id=\"b\"(.*)<SupportVectors>.*Vectors>", "$1", 260120,
     {"id", "VectorInstance"}},
    {"KernelLast", kCls, "<RadialB.*?/>(.*)vectorId=\"b\"", "$1", 260120,
     {"vectorId", "SupportVector"}},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(SeveralFaults, FailureTest, testing::ValuesIn(kSeveralFaults),
                         [](const auto& row) { return row.param.name; });

TEST(FailuresTest, TheLogHoldsEveryBeginningAndEveryEndWithoutFailure) {
  const std::string path = testing::TempDir() + "svmscore_translator_test.log";
  std::remove(path.c_str());
  auto& log = MCZandor_850::ScoringLog::GetInstance();
  ASSERT_TRUE(log.SetFile(path));
  log.SetLevel(1);
  SVMTranslator translator;
  translator.ParseFromTree(static_cast<xercesc::DOMDocument*>(nullptr), "UTF-8");
  const auto bad = svmscore::PmmlDocument::FromText("<PMML/>", "bad.pmml");
  EXPECT_THROW(translator.ParseFromTree(bad.Dom(), "UTF-8"), SSException);
  log.SetLevel(0);
  std::ifstream file(path);
  std::string words;
  for (std::string line; std::getline(file, line);) words += line.substr(line.rfind(' ') + 1) + ' ';
  EXPECT_EQ(words, "Enter:ParseFromTree Exit:ParseFromTree Enter:ParseFromTree ");
}

TEST(TranslatorTest, SlotOrder) {
  using MCZandor_850::BaseTranslator;
  using MCZandor_850::ScoreDictionary;
  using MCZandor_850::ScoreModel;
  using Text = const std::string&;
  const auto slot = []<typename... Arguments>(ScoreModel* (BaseTranslator::*parse)(Arguments...)) {
    return SlotOf(parse);
  };
  const std::size_t slots[] = {
      slot.operator()<xercesc::DOMDocument*, Text>(&BaseTranslator::ParseFromTree),
      slot.operator()<std::istream&, Text>(&BaseTranslator::ParseFromTree),
      slot.operator()<Text, Text>(&BaseTranslator::ParseFromTree),
      slot.operator()<xercesc::DOMElement*, ScoreDictionary*, ScoreDictionary*, Text>(
          &BaseTranslator::ParseFromTree),
      slot.operator()<xercesc::DOMElement*, ScoreModel*, Text>(&BaseTranslator::ParseFromTree),
      slot.operator()<std::istream&, Text, Text>(&BaseTranslator::ParseFromTree),
      slot.operator()<xercesc::DOMDocument*, ScoreDictionary*, Text>(
          &BaseTranslator::ParseFromTree)};
  for (std::size_t i = 0; i < std::size(slots); ++i) EXPECT_EQ(slots[i], i + 2);
}

TEST(FailuresTest, NullsYieldNothing) {
  SVMTranslator translator;
  EXPECT_EQ(translator.ParseFromTree(static_cast<xercesc::DOMDocument*>(nullptr), "UTF-8"),
            nullptr);
  EXPECT_EQ(translator.GetNumOfSVMachine(nullptr, nullptr), 0u);
  EXPECT_FALSE(translator.DoValidationForTargets(nullptr, 1, nullptr));
  EXPECT_EQ(translator.GetVectorIDAtt(nullptr, nullptr), "");
  EXPECT_EQ(translator.GetIndexOfTargetCate({}, "yes"), 0);
  const MCZandor_850::StringValue yes("yes");
  EXPECT_EQ(translator.GetIndexOfTargetCate({&yes}, ""), 0);
  EXPECT_EQ(translator.GetZandorTranscoder("UTF-8"), translator.GetZandorTranscoder("UTF-16"));
  EXPECT_THROW(translator.GetElemOfSVMachine(nullptr, 0), SSException);
  EXPECT_THROW(translator.GetElemOfSupportVector(nullptr, 0), SSException);
}

}  // namespace
}  // namespace svmscore_test
