#include "host/xml/tags.h"

namespace MCZandor_850::PMMLModelTags {

const std::string XML_ELE_PMML = "PMML";
const std::string XML_ELE_APPLICATION = "Application";
const std::string XML_ELE_DATADICTIONARY = "DataDictionary";
const std::string XML_ELE_MININGSCHEMA = "MiningSchema";
const std::string XML_ELE_MININGFIELD = "MiningField";
const std::string XML_ELE_TARGETS = "Targets";
const std::string XML_ELE_TRANSFORMATION = "TransformationDictionary";
const std::string XML_ELE_LOCALTRANSFORMATIONS = "LocalTransformations";
const std::string XML_ELE_EXTENSION = "Extension";
const std::string XML_ELE_FIELDREF = "FieldRef";
const std::string XML_ELE_CATEGORICAL_PREDICTOR = "CategoricalPredictor";

const std::string XML_ELE_SVMMODEL = "SupportVectorMachineModel";
const std::string XML_ELE_SVM_SVM = "SupportVectorMachine";
const std::string XML_ELE_SVM_VECTORDICTION = "VectorDictionary";
const std::string XML_ELE_SVM_VECTORFIELDS = "VectorFields";
const std::string XML_ELE_SVM_VECTORINSTANCE = "VectorInstance";
const std::string XML_ELE_SVM_SUPPORTVECTORS = "SupportVectors";
const std::string XML_ELE_SVM_SUPPORTVECTOR = "SupportVector";
const std::string XML_ELE_SVM_COEFFICIENTS = "Coefficients";
const std::string XML_ELE_SVM_COEFFICIENT = "Coefficient";
const std::string XML_ELE_SVM_REALARRAY = "REAL-ARRAY";
const std::string XML_ELE_SVM_REALSPARSEARRAY = "REAL-SparseArray";
const std::string XML_ELE_SVM_INDICES = "Indices";
const std::string XML_ELE_SVM_ENTRIES = "Entries";
const std::string XML_ELE_SVM_REAL_ENTRIES = "REAL-Entries";

const std::string XML_ELE_SVM_KFTLINEAR = "LinearKernelType";
const std::string XML_ELE_SVM_KFTPOLY = "PolynomialKernelType";
const std::string XML_ELE_SVM_KFTRBF = "RadialBasisKernelType";
const std::string XML_ELE_SVM_KFTSIGMOID = "SigmoidKernelType";

const std::string XML_ELE_SVM_PROBABILITYPARAM = "ProbabilityParameters";
const std::string XML_ELE_SVM_RESPONSECATEGORY = "ResponseCategory";
const std::string XML_ELE_SVM_STANDARDDEVIATION = "StandardDeviation";

const std::string XML_ATT_NAME = "name";
const std::string XML_ATT_VALUE = "value";
const std::string XML_ATT_VERSION = "version";
const std::string XML_ATT_THRESHOLD = "threshold";
const std::string XML_ATT_COEFFICIENT = "coefficient";
const std::string XML_ATT_MINING_FUNCTIONNAME = "functionName";
const std::string XML_ATT_MISSREPVALUE = "mapMissingTo";
const std::string XML_ATT_EXTENSION_EXTENDER = "extender";
const std::string XML_ATT_PPC_TARGET_CAT = "targetCategory";
const std::string XML_ATT_RM_IS_SCORABLE = "isScorable";

const std::string XML_ATT_MININGFIELD_NAME = "name";
const std::string XML_ATT_MININGFIELD_USAGETYPE = "usageType";
const std::string XML_ATT_MININGFIELD_MISSREPLACE = "missingValueReplacement";
const std::string XML_ATT_MF_FUT_ACTIVE = "active";
const std::string XML_ATT_MF_FUT_PREDICTED = "predicted";
const std::string XML_ATT_MF_FUT_TARGET = "target";

const std::string XML_ATT_SVM_ID = "id";
const std::string XML_ATT_SVM_N = "n";
const std::string XML_ATT_SVM_FIELD = "field";
const std::string XML_ATT_SVM_VECTORID = "vectorId";
const std::string XML_ATT_SVM_ABSOLUTEVALUE = "absoluteValue";
const std::string XML_ATT_SVM_ALTERNATETAGCATE = "alternateTargetCategory";
const std::string XML_ATT_SVM_BIAS = "coef0";
const std::string XML_ATT_SVM_CLASSMETHOLD = "classificationMethod";
const std::string XML_ATT_SVM_DEGREE = "degree";
const std::string XML_ATT_SVM_GAMMA = "gamma";
const std::string XML_ATT_SVM_MAXWINS = "maxWins";
const std::string XML_ATT_SVM_ONEAGAINSTONE = "OneAgainstOne";
const std::string XML_ATT_SVM_PARAMA = "A";
const std::string XML_ATT_SVM_PARAMB = "B";
const std::string XML_ATT_SVM_RESPONSE = "response";
const std::string XML_ATT_SVM_NONRESPONSE = "nonResponse";

const std::string XML_VAL_SVM_CLASSIFICATION = "classification";
const std::string XML_VAL_SVM_REGRESSION = "regression";
const std::string XML_VAL_SVM_SEPARATORS = " \t\r\n";
const std::string XML_VAL_THRESHOLD = "threshold";
const std::string XML_VAL_EXTENSION_EXTENDER = "svmscore";

}  // namespace MCZandor_850::PMMLModelTags
