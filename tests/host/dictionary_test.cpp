#include <gtest/gtest.h>

#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"
#include "host/translate/translator.h"
#include "host/xml/document.h"
#include "host/xml/elements.h"

namespace MCZandor_850 {
namespace {

namespace code = svmscore::code;

// A document of these fields and this mining schema, as a dictionary.
class Dictionary {
 public:
  explicit Dictionary(const std::string& fields, const std::string& schema = "")
      : document_(svmscore::PmmlDocument::FromText(
            "<PMML>\n<DataDictionary>" + fields +
                "</DataDictionary>\n<SupportVectorMachineModel><MiningSchema>" + schema +
                "</MiningSchema></SupportVectorMachineModel></PMML>",
            "t")) {
    auto* root = document_.Dom()->getDocumentElement();
    dictionary_ = translator_.ParseDictionary(svmscore::FindChild(root, "DataDictionary"), true);
  }
  ScoreDictVar& operator[](const char* name) { return *dictionary_->FindVar(name); }

 private:
  svmscore::PmmlDocument document_;
  PMMLTranslator translator_{""};
  ScoreDictionary* dictionary_;
};

std::string DataField(const std::string& name, const std::string& optype, const std::string& type,
                      const std::string& content = "") {
  return "<DataField name='" + name + "' optype='" + optype + "' dataType='" + type + "'>" +
         content + "</DataField>";
}

TEST(ParseDictionary, GivesVariablesTheirCodes) {
  Dictionary d(DataField("c", "categorical", "string",
                         "<Value value='b'/><Value value='a' displayValue='Alpha'/>"
                         "<Value value='?' property='missing'/>") +
               DataField("d", "ordinal", "date") +
               DataField("n", "categorical", "integer", "<Value value='1'/><Value value='01'/>") +
               "<DataField name='t' optype='continuous'/>");
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
  const std::string x = DataField("x", "continuous", "double");
  const struct {
    std::string fields;
    std::string schema;
    int code;
  } cases[] = {
      {"<DataField optype='continuous' dataType='double'/>", "", code::kAttributeMissing},
      {"<DataField name='x' dataType='double'/>", "", code::kAttributeMissing},
      {DataField("x", "odd", "double"), "", code::kBadValue},
      {DataField("x", "continuous", "odd"), "", code::kBadValue},
      {x + x, "", code::kDuplicateName},
      {DataField("x", "categorical", "integer", "<Value value='a'/>"), "", code::kBadValue},
      {DataField("x", "continuous", "double",
                 "<Interval closure='closedOpen' leftMargin='2' rightMargin='1'/>"),
       "", code::kBadContent},
      {DataField("x", "continuous", "double", "<Interval closure='openOpen'/>"), "",
       code::kBadContent},
      {x, "name='x' outliers='asExtremeValues' lowValue='5' highValue='1'", code::kBadContent},
      {x, "name='x' outliers='asExtremeValues'", code::kAttributeMissing},
      {DataField("x", "categorical", "boolean"), "name='x' missingValueReplacement='abc'",
       code::kBadValue},
      {x, "name='x' missingValueReplacement='abc'", 0},  // left to the translator
      {x, "name='x' invalidValueTreatment='asValue'", code::kAttributeMissing},
      {x, "name='other' outliers='odd'", 0},
  };
  for (const auto& [fields, schema, code] : cases) {
    int refused = 0;
    try {
      Dictionary dictionary(fields, schema.empty() ? "" : "<MiningField " + schema + "/>");
    } catch (const SSException& error) {
      refused = error.GetErrorCode();
    }
    EXPECT_EQ(refused, code) << fields << schema;
  }
}

TEST(ParseDictionary, AppliesTheMiningSchema) {
  Dictionary d(DataField("x", "continuous", "double") + DataField("z", "continuous", "double") +
                   DataField("b", "categorical", "boolean"),
               "<MiningField name='z' outliers='asMissingValues' highValue='1'/>"
               "<MiningField name='x' optype='categorical' outliers='asMissingValues' "
               "lowValue='1' invalidValueTreatment='asMissing'/>"
               "<MiningField name='b' missingValueReplacement='true'/>");
  EXPECT_EQ(d["x"].GetTypeCode(), 3);
  EXPECT_EQ(d["x"].GetTreatment().low, 1.0);
  EXPECT_EQ(d["z"].GetTreatment().outliers, FieldTreatment::Outliers::kAsMissing);
  // Categories have no outliers.
  EXPECT_EQ(d["x"].GetTreatment().outliers, FieldTreatment::Outliers::kAsIs);
  EXPECT_EQ(d["x"].GetTreatment().invalid, FieldTreatment::Invalid::kAsMissing);
  ASSERT_NE(d["b"].GetMissingReplacement(), nullptr);
  EXPECT_EQ(d["b"].GetMissingReplacement()->GetDouble(), 1.0);
}

}  // namespace
}  // namespace MCZandor_850
