#include <gtest/gtest.h>

#include "host/message_codes.h"
#include "host/pmml/document.h"
#include "host/pmml/elements.h"
#include "host/ss_exception.h"
#include "host/translator.h"

namespace MCZandor_850 {
namespace {

namespace code = svmscore::code;

// A document of these fields and this mining schema, as a dictionary.
class Dictionary {
 public:
  explicit Dictionary(const std::string& fields, const std::string& schema = "",
                      const std::string& targets = "")
      : document_(svmscore::PmmlDocument::FromText(
            "<PMML>\n<DataDictionary>" + fields +
                "</DataDictionary>\n<SupportVectorMachineModel><MiningSchema>" + schema +
                "</MiningSchema><Targets>" + targets +
                "</Targets></SupportVectorMachineModel></PMML>",
            "t")),
        translator_("") {
    auto* root = document_.Dom()->getDocumentElement();
    dictionary_ = translator_.ParseDictionary(svmscore::FindChild(root, "DataDictionary"), true);
    translator_.HandleTargets(
        svmscore::FindChild(svmscore::FindModelElement(document_.Dom()), "Targets"), dictionary_);
  }
  ScoreDictVar& operator[](const char* name) { return *dictionary_->FindVar(name); }

 private:
  svmscore::PmmlDocument document_;
  PMMLTranslator translator_;
  ScoreDictionary* dictionary_;
};

int CodeOf(const std::string& fields, const std::string& schema = "") {
  try {
    Dictionary dictionary(fields, schema);
  } catch (const SSException& error) {
    return error.GetErrorCode();
  }
  return 0;
}

const char* const kX = "<DataField name='x' optype='continuous' dataType='double'/>";

TEST(ParseDictionary, GivesVariablesTheirCodes) {
  Dictionary d(
      "<DataField name='c' optype='categorical' dataType='string'><Value value='b'/>"
      "<Value value='a' displayValue='Alpha'/><Value value='?' property='missing'/></DataField>"
      "<DataField name='d' optype='ordinal' dataType='date'/>"
      "<DataField name='n' optype='categorical' dataType='integer'><Value value='1'/>"
      "<Value value='01'/></DataField><DataField name='t' optype='continuous'/>");
  EXPECT_EQ(d["c"].GetTypeCode(), 3);
  EXPECT_EQ(d["c"].GetCategoryCount(), 2);
  EXPECT_EQ(d["c"].GetStorageType(), 1);
  EXPECT_EQ(d["c"].GetCategoryIndexOfText("a"), 1);
  EXPECT_EQ(d["c"].GetCategoryIndexOfText("?"), -1);
  EXPECT_EQ(d["c"].GetCategoryDisplay(1), "Alpha");
  EXPECT_EQ(d["d"].GetTypeCode(), 1);
  EXPECT_EQ(d["d"].GetKindCode(), 3);
  EXPECT_EQ(d["n"].GetCategoryCount(), 1);  // 1 and 01 are one number
  EXPECT_EQ(d["n"].GetCategories()[0]->GetText(), "1");
  EXPECT_EQ(d["t"].GetCategoryCount(), 1);
  EXPECT_FALSE(d["t"].DeclaresNoValues());
  EXPECT_TRUE(d["d"].DeclaresNoValues());
}

TEST(ParseDictionary, RefusesWhatTheStandardDoesNotKnow) {
  EXPECT_EQ(CodeOf("<DataField optype='continuous' dataType='double'/>"), code::kAttributeMissing);
  EXPECT_EQ(CodeOf("<DataField name='x' dataType='double'/>"), code::kAttributeMissing);
  EXPECT_EQ(CodeOf("<DataField name='x' optype='odd' dataType='double'/>"), code::kBadValue);
  EXPECT_EQ(CodeOf("<DataField name='x' optype='continuous' dataType='odd'/>"), code::kBadValue);
  EXPECT_EQ(CodeOf(std::string(kX) + kX), code::kDuplicateName);
  EXPECT_EQ(CodeOf("<DataField name='x' optype='categorical' dataType='integer'>"
                   "<Value value='a'/></DataField>"),
            code::kBadValue);
  EXPECT_EQ(CodeOf("<DataField name='x' optype='continuous' dataType='double'>"
                   "<Interval closure='closedOpen' leftMargin='2' rightMargin='1'/></DataField>"),
            code::kBadContent);
  EXPECT_EQ(CodeOf("<DataField name='x' optype='continuous' dataType='double'>"
                   "<Interval closure='openOpen'/></DataField>"),
            code::kBadContent);
  EXPECT_EQ(CodeOf(kX,
                   "<MiningField name='x' outliers='asExtremeValues' lowValue='5' "
                   "highValue='1'/>"),
            code::kBadContent);
  EXPECT_EQ(CodeOf(kX, "<MiningField name='x' outliers='asExtremeValues'/>"),
            code::kAttributeMissing);
  const std::string bad_replacement = "<MiningField name='x' missingValueReplacement='abc'/>";
  EXPECT_EQ(
      CodeOf("<DataField name='x' optype='categorical' dataType='boolean'/>", bad_replacement),
      code::kBadValue);
  EXPECT_EQ(CodeOf(kX, bad_replacement), 0) << "the translator's to read";
  EXPECT_EQ(CodeOf(kX, "<MiningField name='x' invalidValueTreatment='asValue'/>"),
            code::kAttributeMissing);
  EXPECT_EQ(CodeOf(kX, "<MiningField name='other' outliers='odd'/>"), 0);
}

TEST(ParseDictionary, AppliesTheMiningSchema) {
  Dictionary d(
      "<DataField name='x' optype='continuous' dataType='double'/>"
      "<DataField name='z' optype='continuous' dataType='double'/>"
      "<DataField name='b' optype='categorical' dataType='boolean'/>",
      "<MiningField name='z' outliers='asMissingValues' highValue='1'/>"
      "<MiningField name='x' optype='categorical' outliers='asMissingValues' "
      "lowValue='1' invalidValueTreatment='asMissing'/>"
      "<MiningField name='b' missingValueReplacement='true'/>");
  EXPECT_EQ(d["x"].GetTypeCode(), 3);
  EXPECT_EQ(d["x"].GetTreatment().low, 1.0);
  EXPECT_EQ(d["z"].GetTreatment().outliers, FieldTreatment::Outliers::kAsMissing);
  // Categories lie nowhere.
  EXPECT_EQ(d["x"].GetTreatment().outliers, FieldTreatment::Outliers::kAsIs);
  EXPECT_EQ(d["x"].GetTreatment().invalid, FieldTreatment::Invalid::kAsMissing);
  ASSERT_NE(d["b"].GetMissingReplacement(), nullptr);
  EXPECT_EQ(d["b"].GetMissingReplacement()->GetDouble(), 1.0);
}

TEST(HandleTargets, TeachesCategoriesAndDisplayTexts) {
  Dictionary d("<DataField name='y' optype='categorical' dataType='string'/>", "",
               "<Target field='y'><TargetValue value='no' displayValue='No!'/>"
               "<TargetValue value='yes'/></Target><Target field='other'/>");
  EXPECT_EQ(d["y"].GetCategoryCount(), 2);
  EXPECT_EQ(d["y"].GetCategoryDisplay(0), "No!");
  EXPECT_EQ(d["y"].GetCategoryDisplay(1), "yes");
}

}  // namespace
}  // namespace MCZandor_850
