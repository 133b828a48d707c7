#include "host/translate/base_model.h"

#include <gtest/gtest.h>

#include "host/transform/transformation_dictionary.h"
#include "host/translate/translator.h"
#include "host/xml/document.h"
#include "host/xml/elements.h"

namespace MCZandor_850 {
namespace {

class PlainModel : public BaseModel {
 public:
  void SetPredictionOnly(bool) override {}
  BaseDictionary* GetVarsOfRole(VarRole) const override { return nullptr; }
  MCScore::MCStatus GetScore(const ScoreCaseRecord*, ScoreResult*&, bool) override { return {}; }
  int GetModelType() const override { return 0; }
  bool GetPredictionOnly() const override { return false; }
  void Display(std::ostream&) const override {}
};

class NotedVar : public ScoreDictVar {
 public:
  NotedVar(std::string name, bool& gone)
      : ScoreDictVar(std::move(name), svmscore::OpType::kContinuous, {}), gone_(gone) {}
  ~NotedVar() override { gone_ = true; }

 private:
  bool& gone_;
};

TEST(BaseModel, OwnsADictionaryUnlessTheCallerKeepsIt) {
  bool kept_gone = false;
  BaseDictionary kept;
  kept.AddVar(std::make_unique<NotedVar>("x", kept_gone));
  bool gone = false;
  {
    PlainModel().SetScoreDictionary(&kept, false);
    PlainModel model;
    auto* dictionary = new BaseDictionary;
    dictionary->AddVar(std::make_unique<NotedVar>("x", gone));
    model.SetScoreDictionary(dictionary);
    model.SetScoreDictionary(dictionary);
    EXPECT_FALSE(gone);
  }
  EXPECT_TRUE(gone);
  EXPECT_FALSE(kept_gone);
}

TEST(BaseModel, SharesADictionaryWithItsTranslator) {
  const svmscore::PmmlDocument document = svmscore::PmmlDocument::FromText(
      "<PMML><DataDictionary><DataField name='x' optype='continuous' dataType='double'/>"
      "</DataDictionary></PMML>",
      "t");
  auto translator = std::make_unique<PMMLTranslator>("");
  ScoreDictionary* dictionary = translator->ParseDictionary(
      svmscore::FindChild(document.Dom()->getDocumentElement(), "DataDictionary"), true);
  {
    PlainModel model;
    model.SetScoreDictionary(dictionary);
  }
  EXPECT_NE(dictionary->FindVar("x"), nullptr);  // the translator still holds it
  PlainModel model;
  model.SetScoreDictionary(dictionary);
  translator.reset();
  EXPECT_NE(model.GetDictionary()->FindVar("x"), nullptr);  // and now the model does
}

TEST(BaseModel, TheTargetIsTheFirstVariableThatHasTheRole) {
  PlainModel model;
  auto* dictionary = new BaseDictionary;
  model.SetScoreDictionary(dictionary);
  const auto add = [dictionary](const char* name) {
    return dictionary->AddVar(
        std::make_unique<ScoreDictVar>(name, svmscore::OpType::kContinuous, svmscore::FieldType{}));
  };
  EXPECT_TRUE(add("a") && add("b"));
  EXPECT_FALSE(add("a")) << "a name twice";
  EXPECT_EQ(dictionary->GetVariables().size(), 2U);
  dictionary->FindVar("a")->SetHiddenByDerived(true);
  EXPECT_EQ(dictionary->GetVariables(true).size(), 1U);
  EXPECT_EQ(model.GetTargetVar(), nullptr);
  model.SetVarRole("a", ScoreModel::kTargetRole);
  model.SetVarRole("b", ScoreModel::kTargetRole);
  EXPECT_EQ(model.GetTargetVar(), dictionary->FindVar("a"));
  EXPECT_EQ(model.GetVarRole("b"), ScoreModel::kTargetRole);
  model.SetVarRole("a", ScoreModel::kActiveRole);
  EXPECT_EQ(model.GetTargetVar(), dictionary->FindVar("b"));
  model.SetVarRole("a", ScoreModel::kTargetRole);
  EXPECT_EQ(model.GetTargetVar(), dictionary->FindVar("b")) << "the target for longer";
  EXPECT_EQ(model.GetVarRole("c"), ScoreModel::kOtherRole);
  EXPECT_EQ(model.GetMissingValuePolicy(), ScoreModel::kPredictMissing);
}

}  // namespace
}  // namespace MCZandor_850
