// Documents with faults in vectors, kernels and machines, found where they are read.
#include "tests/doctor/patients.h"

namespace svmscore::app {
namespace {

const std::string kVectorW =
    "<VectorInstance id='w'><REAL-SparseArray n='3'><Indices>1</Indices>"
    "<REAL-Entries>1</REAL-Entries></REAL-SparseArray></VectorInstance>";
const std::string kVectors = "<SupportVector vectorId='b'/><SupportVector vectorId='w'/>";
const std::string kCoefficients = "<Coefficient value='1'/><Coefficient value='-1'/>";
const std::string kEnd = "</SupportVectorMachine>";
const std::string kPair = "response='yes' nonResponse='no'";

// A machine's probabilities, for the categories that it names.
const std::string kMachines =
    "*(<SupportVectorMachine targetCategory='(.*)' alternateTargetCategory='(.*?)'.*)";
const std::string kFirstMachine =
    "*(<SupportVectorMachine targetCategory='(a)' alternateTargetCategory='(b)'>)";
const std::string kProbability =
    "$1<Extension extender='svmscore'><ResponseCategory response='$2' nonResponse='$3'/>"
    "<ProbabilityParameters A='-1' B='0'/></Extension>";

// A vector beside the three that the machines use.
Edits Added(const std::string& instance) {
  return {kVectorW, kVectorW + instance, "numberOfVectors='3'", "numberOfVectors='4'"};
}
Edits AddedArray(const std::string& array) {
  return Added("<VectorInstance id='new'><REAL-SparseArray n='3'>" + array +
               "</REAL-SparseArray></VectorInstance>");
}
Edits AddedEntries(const std::string& indices, const std::string& entries) {
  return AddedArray("<Indices>" + indices + "</Indices><Entries>" + entries + "</Entries>");
}

}  // namespace

std::vector<Patient> VectorPatients() {
  return {
      {"vector-dropped at VectorInstance", Added("<VectorInstance id='new'/>"), "three"},
      {"vector-dropped at REAL-SparseArray",
       Added("<VectorInstance id='new'><REAL-SparseArray n='0'/></VectorInstance>"), "three"},
      {"vector-dropped at VectorInstance",
       Added("<VectorInstance id=''><REAL-SparseArray n='3'/></VectorInstance>"), "three"},
      {"vector-dropped at VectorInstance", Added(kVectorW), "three"},
      {"zero-vector at REAL-SparseArray, unused-vector at VectorInstance",
       AddedArray("<Indices/><REAL-Entries/>"), "three"},
      {"no-indices at REAL-SparseArray, unused-vector at VectorInstance",
       AddedArray("<REAL-Entries>1 2 3</REAL-Entries>"), "three"},
      {"index-out-of-range at Indices, index-out-of-range at Indices, unused-vector at "
       "VectorInstance",
       AddedEntries("0 4", "1 1"), "three"},
      {"unordered-indices at REAL-SparseArray, unused-vector at VectorInstance",
       AddedEntries("2 1", "1 1"), "three"},
      {"index-repeated at Indices, unused-vector at VectorInstance", AddedEntries("2 2", "1 1"),
       "three"},
      {"bad-number at Indices, unused-vector at VectorInstance", AddedEntries("1 2.9", "1\n1e-3"),
       "three"},
      {"bad-number at Entries, unused-vector at VectorInstance", AddedEntries("1 2", "1,5 x"),
       "three"},
      {"element-in-text at b, unused-vector at VectorInstance", AddedEntries("1 2", "1 <b>2</b>"),
       "three"},
      {"number-not-finite at Entries, unused-vector at VectorInstance",
       AddedEntries("1 2", "1 INF"), "three"},
      {"count-disagrees at REAL-SparseArray", {"n='3'", "n='30'"}, "three"},
      {"dense-array at Array, unused-vector at VectorInstance",
       Added("<VectorInstance id='new'><Array>1 2 3</Array></VectorInstance>"), "three"},
      {"array-type at Array, dense-array at Array, unused-vector at VectorInstance",
       Added("<VectorInstance id='new'><Array type='string'>1 2 3</Array></VectorInstance>"),
       "three"},
      {"two-arrays at VectorInstance, unused-vector at VectorInstance",
       Added("<VectorInstance id='new'><Array>1 2 3</Array><REAL-SparseArray "
             "n='3'/></VectorInstance>"),
       "three"},
      {"integer-sparse-array at INT-SparseArray, unused-vector at VectorInstance",
       Added("<VectorInstance id='new'><INT-SparseArray "
             "n='3'><Indices>1</Indices><INT-Entries>4</INT-Entries></INT-SparseArray></"
             "VectorInstance>"),
       "three"},
      {"default-value at REAL-SparseArray, unused-vector at VectorInstance",
       Added(
           "<VectorInstance id='new'><REAL-SparseArray n='3' defaultValue='1'/></VectorInstance>"),
       "three"},
      {"default-value-unreadable at REAL-SparseArray, unused-vector at VectorInstance",
       Added("<VectorInstance id='new'><REAL-SparseArray n='3' "
             "defaultValue='none'/></VectorInstance>"),
       "three"},
      {"surplus-zeros at REAL-SparseArray, unused-vector at VectorInstance",
       Added("<VectorInstance id='new'><REAL-SparseArray n='2000000000'/></VectorInstance>"),
       "three"},
  };
}

std::vector<Patient> MachinePatients() {
  return {
      {"unknown-vector at SupportVector, unused-vector at VectorInstance",
       {"<SupportVector vectorId='b'", "<SupportVector vectorId='B'"},
       "three"},
      {"surplus-vectors at Coefficients",
       {kCoefficients, "<Coefficient value='1'/>", "numberOfCoefficients='2'", ""},
       "three"},
      {"surplus-coefficients at Coefficients",
       {kVectors, "<SupportVector vectorId='b'/>", "numberOfSupportVectors='2'", ""},
       "three"},
      {"bad-coefficient at Coefficient",
       {"<Coefficient value='-1'", "<Coefficient value='one'"},
       "three"},
      {"no-coefficient-value at Coefficient", {"<Coefficient value='-1'", "<Coefficient"}, "three"},
      {"refused at Coefficients, bad-absolute-value at Coefficients",
       {"absoluteValue='0.5'", "absoluteValue='0,5'"},
       "three"},
      {"no-absolute-value at Coefficients", {"absoluteValue='0.5'", ""}, "three"},
      {"number-not-finite at Coefficients",
       {"absoluteValue='0.5'", "absoluteValue='1e999'"},
       "three"},
      {"bad-threshold at SupportVectorMachine", {"threshold='0.25'", "threshold=''"}, "three"},
      {"unknown-category at SupportVectorMachine, unknown-category at SupportVectorMachine",
       {"targetCategory='a' alternateTargetCategory='b'",
        "targetCategory='A' alternateTargetCategory=' b'"},
       "three"},
      {"count-disagrees at SupportVectors, count-disagrees at SupportVectors",
       {"numberOfSupportVectors='2' numberOfAttributes='3'",
        "numberOfSupportVectors='3' numberOfAttributes='4'"},
       "three"},
      {"count-disagrees at Coefficients",
       {"numberOfCoefficients='2'", "numberOfCoefficients='3'"},
       "three"},
      {"second-list at Coefficients", {kEnd, "<Coefficients/>" + kEnd}, "three"},
      {"target-repeated at SupportVectorMachine, machine-count at SupportVectorMachineModel, "
       "unused-vector at VectorInstance",
       {"OneAgainstOne", "OneAgainstAll",
        "*<SupportVectorMachine targetCategory='b'[^]*?</SupportVectorMachine>", ""},
       "three"},
      {"method-not-used at SupportVectorMachineModel",
       {"OneAgainstOne", "OneAgainstAll", kMachines, kProbability},
       "three"},
      {"extension-moved at Extension", {"<Extension", "<Extension/><Extension"}, "two"},
      {"extension-incomplete at Extension", {" B='0'", ""}, "two"},
      {"extension-incomplete at Extension",
       {"<StandardDeviation>0.5</StandardDeviation>", ""},
       "line"},
      {"deviation-negative at StandardDeviation", {">0.5<", ">-2<"}, "line"},
      {"extension-contradicts-votes at SupportVectorMachine, percentages-exchanged at "
       "ResponseCategory",
       {kPair, "response='no' nonResponse='yes'"},
       "two"},
      {"unknown-category at ResponseCategory", {kPair, "response='yes' nonResponse='NO'"}, "two"},
      {"pair-out-of-order at SupportVectorMachine",
       {kMachines, kProbability, "nonResponse='c, d'", "nonResponse='b'"},
       "three"},
      {"response-later at SupportVectorMachine, extension-contradicts-votes at "
       "SupportVectorMachine",
       {kMachines, kProbability, "response='a' nonResponse='b'", "response='b' nonResponse='a'"},
       "three"},
      {"extension-on-some at SupportVectorMachine", {kFirstMachine, kProbability}, "three"},
      {"probabilities-missing at SupportVectorMachine",
       {kMachines, kProbability, "*(alternateTargetCategory='b'>)<Extension.*</Extension>", "$1",
        " targetCategory='b' alternateTargetCategory='c, d'", ""},
       "three"},
      {"category-unused at DataField",
       {"*<Extension.*</Extension>", "", "<Value value='no'/>",
        "<Value value='no'/><Value value='maybe'/>"},
       "two"},

      {"refused at SupportVectorMachine, unknown-vector at SupportVector, empty-machine at "
       "SupportVectorMachine",
       {"vectorId='w'/></SupportVectors>", "vectorId='W'/></SupportVectors>"},
       "three"},
      {"refused at SupportVectorMachine, bad-coefficient at Coefficient, empty-machine at "
       "SupportVectorMachine",
       {"absoluteValue='0.5'><Coefficient value='1'",
        "absoluteValue='0.5'><Coefficient value='0,1'"},
       "three"},
      {"second-category at SupportVectorMachine",
       {"*<Extension.*</Extension>", "", " alternateTargetCategory='no'", ""},
       "two"},
      {"target-categories at DataField",
       {"dataType='string'><Value value='yes'/><Value value='no'/>", "dataType='string'>"},
       "two"},
      {"target-categorical at DataField",
       {"optype='categorical' dataType='string'><Value value='yes'/><Value value='no'/>",
        "optype='continuous' dataType='integer'><Value value='1'/><Value value='0'/>", "*'yes'",
        "'1'", "*'no'", "'0'"},
       "two"},
      {"category-spelling at SupportVectorMachine",
       {"dataType='string'><Value value='yes'/><Value value='no'/>",
        "dataType='integer'><Value value='1'/><Value value='0'/>", "*'yes'", "'1.0'", "*'no'",
        "'0'"},
       "two"},
      {"alternate-on-model at SupportVectorMachineModel",
       {" alternateTargetCategory='no'", "", "functionName",
        "alternateBinaryTargetCategory='no' functionName"},
       "two"},
      {"two-class-rounding at SupportVectorMachineModel",
       {" alternateTargetCategory='no'", "", " maxWins='true'", "", "functionName",
        "alternateBinaryTargetCategory='no' functionName", "PMML-4_4", "PMML-3_2", "version='4.4'",
        "version='3.2'", "*<Extension.*</Extension>", ""},
       "two"},
      {"method-inferred at SupportVectorMachineModel",
       {"classificationMethod='OneAgainstOne' ", ""},
       "three"},
      {"method-spelling at SupportVectorMachineModel",
       {"'OneAgainstOne'", "'oneagainstone'"},
       "three"},
      {"boolean-spelling at SupportVectorMachineModel", {"maxWins='true'", "maxWins='1'"}, "three"},
      {"coefficient-form at SupportVectorMachine, unused-vector at VectorInstance",
       {"functionName", "svmRepresentation='Coefficients' functionName",
        "*<SupportVectors.*</SupportVectors>", "", "value='2'", "value='3'"},
       "line"},
      {"coefficient-form-mistaken at SupportVectors",
       {"functionName", "svmRepresentation='Coefficients' functionName"},
       "line"},
      {"attribute-value-ignored at SupportVectorMachineModel",
       {"functionName", "svmRepresentation='Vectors' functionName"},
       "line"},
  };
}

}  // namespace svmscore::app
