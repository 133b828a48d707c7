// Who frees what, and when. The address sanitizer detects the faults that these tests are for;
// fuzz/ damages documents at random.
#include <gtest/gtest.h>

#include "host/model/ss_exception.h"
#include "tests/translator/documents.h"
#include "tests/translator/translation_stages.h"

namespace svmscore_test {
namespace {

using MCZandor_850::ScoreModel;
using MCZandor_850::SSException;
using MCZandor_850::SVMTranslator;
using svmscore::PmmlDocument;

std::unique_ptr<ScoreModel> Translate(SVMTranslator& translator, const std::string& text) {
  const PmmlDocument document = PmmlDocument::FromText(text, "test.pmml");
  return std::unique_ptr<ScoreModel>(translator.ParseFromTree(document.Dom(), "UTF-8"));
}

TEST(OwnershipTest, ModelAndTranslatorOutliveEachOther) {
  auto translator = std::make_unique<SVMTranslator>();
  std::unique_ptr<ScoreModel> model = Translate(*translator, Classification());
  translator.reset();
  ASSERT_NE(model->GetTargetVar(), nullptr);
  EXPECT_EQ(model->GetTargetVar()->GetName(), "cls");
  EXPECT_EQ(model->GetModelType(), 29);
}

// Limits on a document are enforced by its loader.
TEST(OwnershipTest, LimitsOfADocumentAreNotTheTranslators) {
  svmscore::Limits limits;
  limits.entries = 1;
  limits.implied_entries = 1;
  const PmmlDocument document = PmmlDocument::FromText(
      Edit(Classification(), "<Indices>1</Indices><REAL-Entries>-2</REAL-Entries>", ""),
      "test.pmml", limits);
  SVMTranslator translator;
  const std::unique_ptr<ScoreModel> model(translator.ParseFromTree(document.Dom(), "UTF-8"));
  EXPECT_NE(model, nullptr);
}

// A Targets element that cannot be read shows whether it was read, which takes a dictionary.
TEST(OwnershipTest, ADictionaryThatCannotBeReadLeavesNone) {
  const std::string without =
      Edit(Edit(Classification(), "<DataDictionary>.*</DataDictionary>", ""), "</MiningSchema>",
           R"($&<Targets><Target field="cls" optype="broken"/></Targets>)");
  const std::string unreadable = Edit(Classification(), "dataType=\"double\"", "dataType='odd'");
  const auto code_of = [](SVMTranslator& translator, const std::string& text) {
    try {
      Translate(translator, text);
      return 0;
    } catch (const SSException& error) {
      return error.GetErrorCode();
    }
  };
  SVMTranslator translator;
  EXPECT_EQ(code_of(translator, Classification()), 0);
  EXPECT_EQ(code_of(translator, without), 260153) << "read with the dictionary before";
  EXPECT_EQ(code_of(translator, unreadable), 260153);
  EXPECT_EQ(code_of(translator, without), 260221) << "not read, and the model has no target";
  EXPECT_EQ(code_of(translator, Classification()), 0);
}

}  // namespace
}  // namespace svmscore_test
