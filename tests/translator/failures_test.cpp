// Every way in which a document is refused: the code, its parts, and a place.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/ss_exception.h"
#include "tests/translator/documents.h"

namespace svmscore_test {
namespace {

using MCZandor_850::SSException;
using MCZandor_850::SVMTranslator;
using Parts = std::vector<std::string>;

struct Failure {
  const char* name;
  std::string (*base)();
  const char* pattern;
  std::string replacement;
  int code;
  Parts parts;
};

void PrintTo(const Failure& failure, std::ostream* os) {
  *os << failure.name;
}

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

constexpr char kModel[] = "SupportVectorMachineModel";
constexpr char kMachine[] = "SupportVectorMachine";
constexpr char kSparse[] = "REAL-SparseArray";
constexpr char kPredictor[] = "CategoricalPredictor";
const auto kCls = &Classification;
const auto kReg = &Regression;

// clang-format off
const Failure kFailures[] = {
    {"NoModel", kCls, "<SupportV.*Model>", "", 260115, {kModel, "PMML"}},
    {"NotScorable", kCls, "functionName", "isScorable='False' $&", 260281, {"isScorable", "PMML"}},
    {"NoFunction", kCls, "functionName=.*? ", "", 260120, {"functionName", kModel}},
    {"Case", kCls, "=\"classif", "=\"Classif", 260153, {"Classification", "functionName", kModel}},
    {"FunctionEmpty", kCls, "classification", "", 260153, {"", "functionName", kModel}},
    {"FieldWithoutName", kCls, "g(Field) name=\"x\"", "g$1", 260120, {"name", "MiningField"}},
    {"ReplacementNoNumber", kCls, "g(Field name=\"x\")", "g$1 missingValueReplacement='none'",
     260153, {"none", "missingValueReplacement", "MiningField"}},
    {"NoMachine", kCls, "<SupportVectorMachine .*Machine>", "", 260115, {kMachine, kModel}},
    {"NoTarget", kCls, "predicted", "supplementary", 260221, {"Targets"}},
    {"TwoBinaryMachines", kCls, "<SupportVectorMachine .*Machine>", "$&$&", 260221, {"Targets"}},
    {"PairsMissing", kCls, "(<Value value=\"no\"/>)(.*)functionName",
     "$1<Value value='maybe'/>$2classificationMethod='OneAgainstOne' functionName", 260221,
     {"Targets"}},
    {"ClassesForNumbers", kReg, "regression", "classification", 260221, {"Targets"}},
    {"NumbersForClasses", kCls, "classification", "regression", 260221, {"Targets"}},
    {"TwoNumberMachines", kReg, "<SupportVectorMachine>.*Machine>", "$&$&", 260221, {"Targets"}},
    {"NoVectors", kCls, "<VectorD.*VectorDictionary>", "", 260115, {"VectorDictionary", kModel}},
    {"NoFields", kCls, "<VectorF.*Fields>", "", 260115, {"VectorFields", "VectorDictionary"}},
    {"NoInstance", kCls, "<VectorInst.*Instance>", "", 260114, {"VectorDictionary"}},
    {"InstanceWithoutId", kCls, " id=\"b\"", "", 260120, {"id", "VectorInstance"}},
    {"NoEntries", kCls, "<REAL-E.*?Entries>", "", 260115, {"Entries", kSparse}},
    {"Lengths", kCls, "1 2<", "1 2 3<", 260251,
     {"3", "Indices", kSparse, "2", "REAL-Entries", kSparse}},
    {"SizeNoNumber", kCls, "n=\"2\"", "n='two'", 260153, {"two", "n", kSparse}},
    {"RefWithoutField", kCls, " field=\"x\"", "", 260120, {"field", "FieldRef"}},
    {"PredictorWithoutName", kCls, "r name=\"color\" value", "r value", 260120,
     {"name", kPredictor}},
    {"PredictorWithoutValue", kCls, "value=\"red\"", "", 260120, {"value", kPredictor}},
    {"NoPredictorCoefficient", kCls, "coefficient=\"1\"", "", 260120, {"coefficient", kPredictor}},
    {"NoSupportVectors", kCls, "<SupportVectors>.*Vectors>", "", 260115,
     {"SupportVectors", kMachine}},
    {"NoSupportVector", kCls, "<SupportVector v.*?(</Sup)", "$1", 260114, {"SupportVectors"}},
    {"VectorWithoutId", kCls, "vectorId=\"b\"", "", 260120, {"vectorId", "SupportVector"}},
    {"NoCoefficients", kCls, "<Coefficients.*Coefficients>", "", 260115,
     {"Coefficients", kMachine}},
    {"NoCoefficient", kCls, "<Coefficient v.*?(</Coe)", "$1", 260114, {"Coefficients"}},
    {"NoCategory", kCls, "targetCategory=\"yes\"", "", 260120, {"targetCategory", kMachine}},
    {"NoAlternate", kCls, "alternate.*?no\"", "", 260120, {"alternateTargetCategory", kMachine}},
    {"HalfAnExtension", kCls, " targetCategory=\"yes\"(.*?)>", std::string("$1>") + kDeviation,
     260120, {"targetCategory", kMachine}},
    {"NoKernel", kCls, "<RadialB.*?/>", "", 260115, {"LinearKernelType", kModel}},
    {"KernelNoNumber", kCls, "=\"0.5\"", "='0,5'", 260153,
     {"0,5", "gamma", "RadialBasisKernelType"}},
};
// clang-format on

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
