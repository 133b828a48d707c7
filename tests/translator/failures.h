// Documents that a translator refuses: the code, and its parts.
#ifndef TESTS_TRANSLATOR_FAILURES_H_
#define TESTS_TRANSLATOR_FAILURES_H_

#include <ostream>
#include <string>
#include <vector>

#include "tests/translator/documents.h"

namespace svmscore_test {

struct Failure {
  const char* name;
  std::string (*base)();
  const char* pattern;
  std::string replacement;
  int code;
  std::vector<std::string> parts;
};

inline void PrintTo(const Failure& failure, std::ostream* os) {
  *os << failure.name;
}

inline constexpr char kModel[] = "SupportVectorMachineModel";
inline constexpr char kMachine[] = "SupportVectorMachine";
inline constexpr char kSparse[] = "REAL-SparseArray";
inline constexpr char kPredictor[] = "CategoricalPredictor";
inline const auto kCls = &Classification;
inline const auto kReg = &Regression;

// clang-format off
inline const Failure kFailures[] = {
    {"NoModel", kCls, "<SupportV.*Model>", "", 260115, {kModel, "PMML"}},
    {"NotScorable", kCls, "functionName", "isScorable='False' $&", 260281, {"isScorable", "PMML"}},
    {"NoFunction", kCls, "functionName=.*? ", "", 260120, {"functionName", kModel}},
    {"Case", kCls, "=\"classif", "=\"Classif", 260153, {"Classification", "functionName", kModel}},
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
    {"NoAlternateOfThree", kCls,
     "(<Value value=\"no\"/>)(.*)functionName(.*)(<SupportVectorMachine .*?) alternate.*?(>.*hine>)",
     "$1<Value value='maybe'/>$2classificationMethod='OneAgainstOne' functionName$3$4$5$4$5$4$5",
     260120, {"alternateTargetCategory", kMachine}},
    {"HalfAnExtension", kCls, " targetCategory=\"yes\"(.*?)>", std::string("$1>") + kDeviation,
     260120, {"targetCategory", kMachine}},
    {"DeviationNoNumber", kReg, "0\\.35", "wide", 260153, {"wide"}},
    {"NoKernel", kCls, "<RadialB.*?/>", "", 260115, {"LinearKernelType", kModel}},
    {"KernelNoNumber", kCls, "=\"0.5\"", "='0,5'", 260153,
     {"0,5", "gamma", "RadialBasisKernelType"}},
};
// clang-format on

}  // namespace svmscore_test

#endif  // TESTS_TRANSLATOR_FAILURES_H_
