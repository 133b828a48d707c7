// What documents turn into, and what is silently left out.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <memory>

#include "tests/translator/documents.h"
#include "tests/translator/translation_stages.h"

namespace svmscore_test {
namespace {

using MCZandor_850::BaseDictionary;
using MCZandor_850::NumericValue;
using MCZandor_850::ST_CATEGORICALPREDICTOR;
using MCZandor_850::ST_FIELDREF;
using testing::ElementsAre;

TEST(ReadingTest, AttributesAreComparedAsWritten) {
  Reading plain(Classification());
  EXPECT_TRUE(plain.data.IsClassification());
  EXPECT_EQ(plain.data.GetCateNumOfTarget(), 2);
  EXPECT_EQ(plain.data.GetDefThreshold(), 0.25);
  EXPECT_EQ(plain.Machine().threshold, 0.25);
  EXPECT_TRUE(plain.data.IsClassOneAgainstAll());
  EXPECT_FALSE(plain.data.IsMaxWins());

  Reading other(Edit(Classification(), "threshold=\"0.25\"",
                     "threshold='high' classificationMethod='oneagainstone' maxWins='TRUE' "
                     "isScorable=''"));
  EXPECT_EQ(other.data.GetDefThreshold(), 0.0);
  EXPECT_TRUE(other.data.IsClassOneAgainstAll());
  EXPECT_FALSE(other.data.IsMaxWins());

  Reading exact(Edit(Classification(), "threshold=\"0.25\"",
                     "classificationMethod='OneAgainstOne' maxWins='true' isScorable='no'"));
  EXPECT_EQ(exact.data.GetDefThreshold(), 0.0);
  EXPECT_TRUE(exact.data.IsClassOneAgainstOne());
  EXPECT_TRUE(exact.data.IsMaxWins());
}

// The number of machines that a classification by `categories` categories accepts.
bool Accepts(int categories, bool one_against_all, unsigned long machines) {
  auto dictionary = std::make_unique<BaseDictionary>();
  auto var = std::make_unique<MCZandor_850::ScoreDictVar>(
      "t", svmscore::OpType::kCategorical, svmscore::FieldType{svmscore::DataType::kInteger, 0});
  for (int i = 0; i < categories; ++i) var->DeclareCategory(std::to_string(i), "");
  dictionary->AddVar(std::move(var));
  MCZandor_850::SVMModel model;
  const MCZandor_850::ScoreDictVar* target = dictionary->FindVar("t");
  model.SetScoreDictionary(dictionary.release());
  model.SetVarRole(target, MCZandor_850::ScoreModel::kTargetRole);
  MCZandor_850::SVMModelData data;
  data.SetFunctionName(true);
  data.SetClassificationMethod(one_against_all);
  return MCZandor_850::SVMTranslator().DoValidationForTargets(&model, machines, &data);
}

TEST(ReadingTest, TheNumberOfMachinesFitsTheTarget) {
  EXPECT_TRUE(Accepts(2, true, 1));
  EXPECT_FALSE(Accepts(2, true, 2));
  for (const unsigned long n : {2UL, 3UL, 7UL}) EXPECT_TRUE(Accepts(3, true, n));
  EXPECT_TRUE(Accepts(4, false, 6));
  EXPECT_FALSE(Accepts(4, false, 4));
  EXPECT_FALSE(Accepts(0, true, 1));
  EXPECT_FALSE(Accepts(0, true, 0)) << "0 categories have 0 pairs";
  // Products beyond 31 bits wrap: 65536 * 65535 below zero, 65537 * 65536 to 65536.
  EXPECT_FALSE(Accepts(65536, false, 2147450880));
  EXPECT_TRUE(Accepts(65537, false, 32768));
}

TEST(ReadingTest, VectorFieldsKeepTheirOrder) {
  Reading reading(Edit(Classification(), "<CategoricalPredictor",
                       "<Extension/><FieldRef field='color'/><Unknown/>$&"));
  EXPECT_THAT(reading.data.GetVectorFieldTypes(),
              ElementsAre(MCZandor_850::kFieldReference, MCZandor_850::kFieldReference,
                          MCZandor_850::kCategoricalPredictor));
  const std::vector<void*>& fields = reading.data.GetVectorFields();
  EXPECT_EQ(static_cast<ST_FIELDREF*>(fields[0])->name, "x");
  EXPECT_EQ(static_cast<ST_FIELDREF*>(fields[0])->missing_replacement, "0");
  EXPECT_EQ(static_cast<ST_FIELDREF*>(fields[1])->name, "color");
  EXPECT_EQ(static_cast<ST_FIELDREF*>(fields[1])->missing_replacement, "");
  const auto* predictor = static_cast<ST_CATEGORICALPREDICTOR*>(fields[2]);
  EXPECT_EQ(predictor->name, "color");
  EXPECT_EQ(predictor->value, "red");
  EXPECT_EQ(predictor->coefficient, 1.0);
}

TEST(ReadingTest, SparseArraysAreRead) {
  const struct {
    std::string array;
    std::vector<int> indices;
    std::vector<double> values;
  } cases[] = {
      {"n='1'><Indices>\t1&#13;3<!-- 4 --><![CDATA[ 7]]></Indices>"
       "<REAL-Entries>0.5 <b>-2\n</b>1e-3</REAL-Entries></REAL-SparseArray>",
       {0, 2, 6},
       {0.5, -2, 0.001}},
      {"><Indices>2.9 0 -1e99 1e99</Indices><Entries>abc 12abc 0x10 -.5e1</Entries>"
       "</REAL-SparseArray>",
       {1, -1, INT_MIN, INT_MAX - 1},
       {0, 12, 16, -5}},
      {"n='4'/>", {0, 1, 2, 3}, {0, 0, 0, 0}},
  };
  for (const auto& [array, indices, values] : cases) {
    Reading reading(Edit(Classification(), "<REAL-SparseArray.*?</REAL-SparseArray>",
                         "<REAL-SparseArray " + array));
    const auto* instance = reading.data.GetVectorInstance("a");
    ASSERT_NE(instance, nullptr) << array;
    EXPECT_EQ(instance->indices, indices) << array;
    EXPECT_EQ(instance->values, values) << array;
  }
}

TEST(ReadingTest, MachineAttributesHaveDefaults) {
  Reading other(Edit(Edit(Classification(), " absoluteValue=\"0.125\"", ""),
                     "targetCategory=\"yes\"", "targetCategory='Yes' threshold='-0.5'"));
  EXPECT_EQ(other.Machine().target_index, 2);
  EXPECT_EQ(other.Machine().alternate_target_index, 1);
  EXPECT_EQ(other.Machine().absolute_value, 0.0);
  EXPECT_EQ(other.Machine().threshold, -0.5);

  const std::string none =
      Edit(Classification(), " targetCategory=\"yes\" alternateTargetCategory=\"no\"", "");
  Reading extended(WithExtension(none, kProbability));
  EXPECT_EQ(extended.Machine().target_index, -1);
  EXPECT_EQ(extended.Machine().alternate_target_index, -1);
  EXPECT_EQ(extended.Machine().absolute_value, 0.125);
}

TEST(ReadingTest, ExtensionsCountOnlyWhenComplete) {
  const double missing = NumericValue::GetSysmisValue();
  Reading complete(WithExtension(Classification(), kProbability));
  const auto* extension = complete.Machine().extension;
  ASSERT_NE(extension, nullptr);
  EXPECT_EQ(extension->response_index, 1);
  EXPECT_EQ(extension->non_response_index, 0);
  EXPECT_EQ(extension->a, -1.7);
  EXPECT_EQ(extension->b, 0.2);
  EXPECT_EQ(extension->standard_deviation, missing);
  EXPECT_TRUE(complete.data.IsVEMAExtension());
  EXPECT_TRUE(complete.data.IsAppendProbability());
  Reading unknown(WithExtension(Classification(), Edit(kProbability, "\"no\"", "\"none\"")));
  ASSERT_NE(unknown.Machine().extension, nullptr);
  EXPECT_EQ(unknown.Machine().extension->response_index, 2);

  const std::pair<const char*, const char*> spoilt[] = {{"svmscore", ""},
                                                        {"^", "<Extension extender='x'/>"},
                                                        {"nonResponse=\"yes\"", ""},
                                                        {"\"yes\"", "''"},
                                                        {"\"no\"", "''"},
                                                        {"<ProbabilityP.*?/>", ""},
                                                        {" A=\"-1.7\"", ""},
                                                        {"0\\.2", "much"}};
  for (const auto& [pattern, replacement] : spoilt) {
    Reading reading(WithExtension(Classification(), Edit(kProbability, pattern, replacement)));
    EXPECT_EQ(reading.Machine().extension, nullptr) << pattern;
    EXPECT_FALSE(reading.data.IsVEMAExtension()) << pattern;
  }

  Reading deviation(Regression());
  ASSERT_NE(deviation.Machine().extension, nullptr);
  EXPECT_EQ(deviation.Machine().extension->standard_deviation, 0.35);
  EXPECT_EQ(deviation.Machine().extension->a, missing);
  Reading none(Edit(Regression(), "<Standard.*/StandardDeviation>", ""));
  EXPECT_EQ(none.Machine().extension, nullptr);
}

TEST(ReadingTest, TheLastMachineDecidesOnTheExtension) {
  const std::string three =
      Edit(Classification(), "(<Value value=\"yes\"/>)", "$1<Value value='maybe'/>");
  Reading first(Edit(WithExtension(three, kProbability), "(<SupportVectorMachine .*Machine>)",
                     "$1<SupportVectorMachine targetCategory='no'><SupportVectors>"
                     "<SupportVector vectorId='b'/></SupportVectors><Coefficients>"
                     "<Coefficient value='3'/></Coefficients></SupportVectorMachine>"));
  EXPECT_NE(first.Machine(0).extension, nullptr);
  EXPECT_EQ(first.Machine(1).extension, nullptr);
  EXPECT_EQ(first.Machine(1).target_index, 2);
  EXPECT_FALSE(first.data.IsVEMAExtension());
}

TEST(ReadingTest, KernelsAndTheirDefaults) {
  const struct {
    const char* kernel;
    SVMConst::KernelFunctionType type;
    double gamma;
    double coef0;
    double degree;
  } cases[] = {
      {"<RadialBasisKernelType/>", SVMConst::kRadialBasis, 1, 1, 1},
      {"<PolynomialKernelType gamma='0.5' coef0='-1' degree='3'/>", SVMConst::kPolynomial, 0.5, 1,
       3},
      {"<SigmoidKernelType coef0='0'/><LinearKernelType degree='2'/>", SVMConst::kLinear, 1, 1, 2},
      {"<SigmoidKernelType coef0='0'/>", SVMConst::kSigmoid, 1, 0, 1},
  };
  for (const auto& [kernel, type, gamma, coef0, degree] : cases) {
    Reading reading(Edit(Classification(), "<RadialBasis.*?/>", kernel));
    EXPECT_EQ(reading.data.GetSVMKernelType(), type) << kernel;
    EXPECT_EQ(reading.data.GetSVMKernelTypeGamma(), gamma) << kernel;
    EXPECT_EQ(reading.data.GetSVMKernelTypeCoef0(), coef0) << kernel;
    EXPECT_EQ(reading.data.GetSVMKernelTypeDegree(), degree) << kernel;
  }
}

}  // namespace
}  // namespace svmscore_test
