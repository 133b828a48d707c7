// Variables, roles, replacements, derived fields.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/model/ss_exception.h"
#include "tests/translator/documents.h"
#include "tests/translator/translation_stages.h"

namespace svmscore_test {
namespace {

using MCZandor_850::ScoreModel;

constexpr char kSquare[] =
    R"(<DerivedField name="sq" optype="continuous" dataType="double"><Apply function="*">)"
    R"(<FieldRef field="x"/><FieldRef field="x"/></Apply></DerivedField>)";
constexpr char kIsRed[] = R"(<DerivedField name="isred" optype="continuous" dataType="double">)"
                          R"(<NormDiscrete field="color" value="red"/></DerivedField>)";

std::string WithDocumentTransformations(const std::string& text, const std::string& derived) {
  return Edit(text, "</DataDictionary>",
              "$&<TransformationDictionary>" + derived + "</TransformationDictionary>");
}

std::string WithLocalTransformations(const std::string& text, const std::string& derived) {
  return Edit(text, "</MiningSchema>",
              "$&<LocalTransformations>" + derived + "</LocalTransformations>");
}

TEST(DictionariesTest, UsageTypesBecomeRoles) {
  for (const auto& [usage, role] : std::vector<std::pair<std::string, ScoreModel::VarRole>>{
           {"usageType='active'", ScoreModel::kActiveRole},
           {"", ScoreModel::kActiveRole},
           {"usageType='supplementary'", ScoreModel::kOtherRole},
           {"usageType='Active'", ScoreModel::kOtherRole}}) {
    Reading reading(Edit(Classification(), "Field name=\"x\"/", "Field name='x' " + usage + "/"));
    EXPECT_EQ(reading.model.GetVarRole("x"), role) << usage;
  }
  Reading target(Edit(Classification(), "predicted", "target"));
  EXPECT_EQ(target.model.GetTargetVar(), &target.Var("cls"));
  Reading unknown(Edit(Classification(), "<MiningField", "<MiningField name='who'/><Note/>$&"));
  EXPECT_EQ(unknown.model.GetVarRole("who"), ScoreModel::kOtherRole);
}

TEST(DictionariesTest, ReplacementsKeepTheStorageOfTheirVariable) {
  const auto read = [](const std::string& type, const std::string& field,
                       const std::string& replacement) {
    return std::make_unique<Reading>(
        Edit(Edit(Classification(), "dataType=\"double\"", "dataType='" + type + "'"),
             "gField name=\"" + field + "\"", "$& missingValueReplacement='" + replacement + "'"));
  };
  const Reading none(Classification());
  EXPECT_EQ(none.model.GetMissingValuePolicy(), ScoreModel::kPredictMissing);
  EXPECT_EQ(none.Var("x").GetMissingReplacement(), nullptr);
  const auto text = read("double", "color", "007");
  EXPECT_EQ(text->model.GetMissingValuePolicy(), ScoreModel::kReplaceMissing);
  ASSERT_NE(text->Var("color").GetMissingReplacement(), nullptr);
  EXPECT_FALSE(text->Var("color").GetMissingReplacement()->IsNumeric());
  EXPECT_EQ(text->Var("color").GetMissingReplacement()->GetText(), "007");
  for (const char* type : {"double", "integer"}) {
    const auto number = read(type, "x", "2.5");
    ASSERT_NE(number->Var("x").GetMissingReplacement(), nullptr);
    EXPECT_EQ(number->Var("x").GetMissingReplacement()->GetDouble(), 2.5);
  }
  EXPECT_EQ(read("date", "x", "2020-01-01")->model.GetMissingValuePolicy(),
            ScoreModel::kPredictMissing);
}

TEST(DictionariesTest, TransformationsDependOnTheVersionAndTheirPlace) {
  const std::string document = WithDocumentTransformations(Classification(), kSquare);
  Reading used(document);
  ASSERT_NE(used.model.GetTransformationDictionary(), nullptr);
  EXPECT_NE(used.model.GetTransformationDictionary()->FindDerived("sq"), nullptr);
  for (const char* version : {"2.1", "5.0", ""}) {
    Reading old(Edit(document, "version=\"4.1\"", std::string("version='") + version + "'"));
    EXPECT_EQ(old.model.GetTransformationDictionary(), nullptr) << version;
  }
  Reading local(WithLocalTransformations(Edit(Classification(), "4\\.1", "3.2"), kSquare));
  EXPECT_NE(local.model.GetTransformationDictionary(), nullptr);
  Reading both(WithLocalTransformations(document, kIsRed));
  EXPECT_EQ(both.model.GetTransformationDictionary()->FindDerived("isred"), nullptr);

  // A field that cannot be computed takes all others along where the vectors need it.
  const std::string unusable =
      WithDocumentTransformations(Classification(), Edit(kSquare, "\"x\"", "'who'"));
  EXPECT_NE(Reading(unusable).model.GetTransformationDictionary(), nullptr);
  Reading needed(Edit(unusable, "<CategoricalP", "<FieldRef field='sq'/>$&"));
  EXPECT_EQ(needed.model.GetTransformationDictionary(), nullptr);
}

TEST(DictionariesTest, AnIndicatorTeachesItsVariableACategory) {
  const std::string document = Edit(WithDocumentTransformations(Classification(), kIsRed),
                                    "<CategoricalP", "<FieldRef field='isred'/>$&");
  Reading learnt(document);
  EXPECT_EQ(learnt.Var("color").GetCategoryIndexOfText("red"), 0);
  EXPECT_FALSE(learnt.translator.FillCateValuesToDataDict(
      learnt.model.GetDictionary(), learnt.model.GetTransformationDictionary(), "isred"))
      << "it is there";

  // A list does not change, even where another variable has none.
  Reading listed(Edit(Edit(document, "name=\"color\" optype=\"categorical\" dataType=\"string\"/",
                           "name='color' optype='categorical' dataType='string'>"
                           "<Value value='blue'/></DataField"),
                      "</DataDictionary>",
                      "<DataField name='shape' optype='categorical' dataType='string'/>$&"));
  EXPECT_EQ(listed.Var("color").GetCategoryCount(), 1);

  auto* dictionary = learnt.model.GetDictionary();
  auto* derived = learnt.model.GetTransformationDictionary();
  derived->FindDerived("isred")->AddEncodedValue(
      std::make_unique<MCZandor_850::StringValue>("green"));
  EXPECT_FALSE(learnt.translator.FillCateValuesToDataDict(dictionary, derived, "isred"));
  EXPECT_FALSE(learnt.translator.FillCateValuesToDataDict(dictionary, derived, "x"));
  EXPECT_EQ(learnt.Var("color").GetCategoryCount(), 1);
  EXPECT_THAT(learnt.translator.GetEmptyScoreDictVars(dictionary), testing::ElementsAre(1));
}

TEST(DictionariesTest, TheFirstApplicationGivesTheVersion) {
  Reading two(Edit(Classification(), "</Header>", "<Application name='b' version='8'/>$&"));
  ASSERT_NE(two.model.GetVersionInfo(), nullptr);
  EXPECT_EQ(two.model.GetVersionInfo()->GetVersion(), "7.5");
  Reading none(Edit(Classification(), " version=\"7.5\"", ""));
  EXPECT_EQ(none.model.GetVersionInfo(), nullptr);
}

}  // namespace
}  // namespace svmscore_test
