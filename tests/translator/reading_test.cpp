// What documents turn into, and what is left out without a word.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <memory>

#include "svm/translator/splitter.h"
#include "tests/translator/documents.h"
#include "tests/translator/reading.h"

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

// The instance "a" after its array was replaced; null where it was left out.
class ArrayTest : public testing::Test {
 protected:
  const MCSVM_700::SVMDataCase* Instance(const std::string& array) {
    reading_ = std::make_unique<Reading>(
        Edit(Classification(), "<REAL-SparseArray.*?</REAL-SparseArray>", array));
    return reading_->data.GetVectorInstance("a");
  }
  std::unique_ptr<Reading> reading_;
};

TEST_F(ArrayTest, SparseArraysAreRead) {
  const auto* instance = Instance(
      "<REAL-SparseArray n='1'><Indices>\t1&#13;3<!-- 4 --><![CDATA[ 7]]></Indices>"
      "<REAL-Entries>0.5 <b>-2\n</b>1e-3</REAL-Entries></REAL-SparseArray>");
  ASSERT_NE(instance, nullptr);
  EXPECT_THAT(instance->indices, ElementsAre(0, 2, 6));
  EXPECT_THAT(instance->values, ElementsAre(0.5, -2, 0.001));

  instance = Instance(
      "<REAL-SparseArray><Indices>2.9 0 -1e99 1e99</Indices>"
      "<Entries>abc 12abc 0x10 -.5e1</Entries></REAL-SparseArray>");
  ASSERT_NE(instance, nullptr);
  EXPECT_THAT(instance->indices, ElementsAre(1, -1, INT_MIN, INT_MAX - 1));
  EXPECT_THAT(instance->values, ElementsAre(0, 12, 16, -5));

  instance = Instance("<REAL-SparseArray n='4'/>");
  ASSERT_NE(instance, nullptr);
  EXPECT_THAT(instance->indices, ElementsAre(0, 1, 2, 3));
  EXPECT_THAT(instance->values, ElementsAre(0, 0, 0, 0));
}

TEST_F(ArrayTest, InstancesWithoutValuesAreLeftOutWithTheirTerms) {
  for (const char* array :
       {"<REAL-SparseArray n='0'/>", "<REAL-SparseArray/>", "<REAL-ARRAY>1 2</REAL-ARRAY>", "",
        "<REAL-SparseArray><Indices/><REAL-Entries> </REAL-Entries></REAL-SparseArray>"}) {
    EXPECT_EQ(Instance(array), nullptr) << array;
    EXPECT_THAT(reading_->Machine().coefficients, ElementsAre(-1.0)) << array;
    EXPECT_THAT(reading_->Machine().support_vectors,
                ElementsAre(reading_->data.GetVectorInstance("b")));
  }
  Reading empty_id(Edit(Classification(), " id=\"a\"", " id=''"));
  EXPECT_THAT(empty_id.Machine().coefficients, ElementsAre(-1.0));
}

TEST(ReadingTest, SplitterKeepsItsPlaceApart) {
  char outer[] = "1;;2;";
  std::vector<double> numbers;
  EXPECT_EQ(MCZandor_850::SPLITTER_STR(outer, ";", numbers), 2);
  EXPECT_EQ(MCZandor_850::SPLITTER_STR<double>(nullptr, ";", numbers), 0);
  EXPECT_EQ(MCZandor_850::SPLITTER_STR<double>(outer, nullptr, numbers), 0);
  EXPECT_THAT(numbers, ElementsAre(1, 2));
}

TEST(ReadingTest, CoefficientsPairUpByPosition) {
  Reading more_vectors(
      Edit(Classification(), "<SupportVector v", "<SupportVector vectorId='b'/>$&"));
  const auto* a = more_vectors.data.GetVectorInstance("a");
  const auto* b = more_vectors.data.GetVectorInstance("b");
  EXPECT_THAT(more_vectors.Machine().support_vectors, ElementsAre(b, a));
  EXPECT_THAT(more_vectors.Machine().coefficients, ElementsAre(1.5, -1));

  Reading more_coefficients(Edit(Classification(), "<Coefficient value=\"1.5\"/>",
                                 "<Coefficient/><Coefficient value='?'/>$&"));
  EXPECT_THAT(more_coefficients.Machine().coefficients, ElementsAre(0, 0));

  Reading unknown(Edit(Classification(), "vectorId=\"a\"", "vectorId='c'"));
  EXPECT_THAT(unknown.Machine().coefficients, ElementsAre(-1));
}

TEST(ReadingTest, MachineAttributesHaveDefaults) {
  Reading plain(Classification());
  EXPECT_EQ(plain.Machine().target_index, 0);
  EXPECT_EQ(plain.Machine().alternate_target_index, 1);
  EXPECT_EQ(plain.Machine().absolute_value, 0.125);

  Reading other(Edit(Edit(Classification(), " absoluteValue=\"0.125\"", ""),
                     "targetCategory=\"yes\"", "targetCategory='Yes' threshold='-0.5'"));
  EXPECT_EQ(other.Machine().target_index, 2);
  EXPECT_EQ(other.Machine().absolute_value, 0.0);
  EXPECT_EQ(other.Machine().threshold, -0.5);

  const std::string none =
      Edit(Classification(), " targetCategory=\"yes\" alternateTargetCategory=\"no\"", "");
  Reading extended(WithExtension(none, kProbability));
  EXPECT_EQ(extended.Machine().target_index, -1);
  EXPECT_EQ(extended.Machine().alternate_target_index, -1);
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

  for (const auto& [pattern, replacement] :
       std::vector<std::pair<const char*, const char*>>{{"svmscore", ""},
                                                        {"^", "<Extension extender='x'/>"},
                                                        {"nonResponse=\"yes\"", ""},
                                                        {"\"yes\"", "''"},
                                                        {"\"no\"", "''"},
                                                        {"<ProbabilityP.*?/>", ""},
                                                        {" A=\"-1.7\"", ""},
                                                        {"0\\.2", "much"}}) {
    Reading reading(WithExtension(Classification(), Edit(kProbability, pattern, replacement)));
    EXPECT_EQ(reading.Machine().extension, nullptr) << pattern;
    EXPECT_FALSE(reading.data.IsVEMAExtension()) << pattern;
  }

  Reading deviation(Regression());
  ASSERT_NE(deviation.Machine().extension, nullptr);
  EXPECT_EQ(deviation.Machine().extension->standard_deviation, 0.35);
  EXPECT_EQ(deviation.Machine().extension->a, missing);
  EXPECT_EQ(deviation.Machine().extension->b, missing);
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
  const auto read = [](const std::string& kernel) {
    return std::make_unique<Reading>(Edit(Classification(), "<RadialBasis.*?/>", kernel));
  };
  auto rbf = read("<RadialBasisKernelType/>");
  EXPECT_EQ(rbf->data.GetSVMKernelType(), SVMConst::kRadialBasis);
  EXPECT_EQ(rbf->data.GetSVMKernelTypeGamma(), 1.0);
  auto polynomial = read("<PolynomialKernelType gamma='0.5' coef0='-1' degree='3'/>");
  EXPECT_EQ(polynomial->data.GetSVMKernelType(), SVMConst::kPolynomial);
  EXPECT_EQ(polynomial->data.GetSVMKernelTypeGamma(), 0.5);
  EXPECT_EQ(polynomial->data.GetSVMKernelTypeCoef0(), 1.0);
  EXPECT_EQ(polynomial->data.GetSVMKernelTypeDegree(), 3.0);
  auto two = read("<SigmoidKernelType coef0='0'/><LinearKernelType degree='2'/>");
  EXPECT_EQ(two->data.GetSVMKernelType(), SVMConst::kLinear);
  EXPECT_EQ(two->data.GetSVMKernelTypeDegree(), 2.0);
  EXPECT_EQ(two->data.GetSVMKernelTypeCoef0(), 1.0);
  EXPECT_EQ(read("<SigmoidKernelType/>")->data.GetSVMKernelType(), SVMConst::kSigmoid);
}

}  // namespace
}  // namespace svmscore_test
