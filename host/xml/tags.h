// The names of elements, attributes and fixed values in documents.
// [any thread] Lives: as long as the process, from its start on.
#ifndef HOST_XML_TAGS_H_
#define HOST_XML_TAGS_H_

#include <string>

#include "host/text/api.h"

namespace MCZandor_850::PMMLModelTags {

// Document and common elements
extern SVMSCORE_HOST_API const std::string XML_ELE_PMML;
extern SVMSCORE_HOST_API const std::string XML_ELE_APPLICATION;
extern SVMSCORE_HOST_API const std::string XML_ELE_DATADICTIONARY;
extern SVMSCORE_HOST_API const std::string XML_ELE_MININGSCHEMA;
extern SVMSCORE_HOST_API const std::string XML_ELE_MININGFIELD;
extern SVMSCORE_HOST_API const std::string XML_ELE_TARGETS;
extern SVMSCORE_HOST_API const std::string XML_ELE_TRANSFORMATION;
extern SVMSCORE_HOST_API const std::string XML_ELE_LOCALTRANSFORMATIONS;
extern SVMSCORE_HOST_API const std::string XML_ELE_EXTENSION;
extern SVMSCORE_HOST_API const std::string XML_ELE_FIELDREF;
extern SVMSCORE_HOST_API const std::string XML_ELE_CATEGORICAL_PREDICTOR;

// Model elements
extern SVMSCORE_HOST_API const std::string XML_ELE_SVMMODEL;
extern SVMSCORE_HOST_API const std::string XML_ELE_SVM_SVM;
extern SVMSCORE_HOST_API const std::string XML_ELE_SVM_VECTORDICTION;
extern SVMSCORE_HOST_API const std::string XML_ELE_SVM_VECTORFIELDS;
extern SVMSCORE_HOST_API const std::string XML_ELE_SVM_VECTORINSTANCE;
extern SVMSCORE_HOST_API const std::string XML_ELE_SVM_SUPPORTVECTORS;
extern SVMSCORE_HOST_API const std::string XML_ELE_SVM_SUPPORTVECTOR;
extern SVMSCORE_HOST_API const std::string XML_ELE_SVM_COEFFICIENTS;
extern SVMSCORE_HOST_API const std::string XML_ELE_SVM_COEFFICIENT;
extern SVMSCORE_HOST_API const std::string XML_ELE_SVM_REALARRAY;
extern SVMSCORE_HOST_API const std::string XML_ELE_SVM_REALSPARSEARRAY;
extern SVMSCORE_HOST_API const std::string XML_ELE_SVM_INDICES;
extern SVMSCORE_HOST_API const std::string XML_ELE_SVM_ENTRIES;
extern SVMSCORE_HOST_API const std::string XML_ELE_SVM_REAL_ENTRIES;

// Kernel elements
extern SVMSCORE_HOST_API const std::string XML_ELE_SVM_KFTLINEAR;
extern SVMSCORE_HOST_API const std::string XML_ELE_SVM_KFTPOLY;
extern SVMSCORE_HOST_API const std::string XML_ELE_SVM_KFTRBF;
extern SVMSCORE_HOST_API const std::string XML_ELE_SVM_KFTSIGMOID;

// Vendor extension elements
extern SVMSCORE_HOST_API const std::string XML_ELE_SVM_PROBABILITYPARAM;
extern SVMSCORE_HOST_API const std::string XML_ELE_SVM_RESPONSECATEGORY;
extern SVMSCORE_HOST_API const std::string XML_ELE_SVM_STANDARDDEVIATION;

// Common attributes
extern SVMSCORE_HOST_API const std::string XML_ATT_NAME;
extern SVMSCORE_HOST_API const std::string XML_ATT_VALUE;
extern SVMSCORE_HOST_API const std::string XML_ATT_VERSION;
extern SVMSCORE_HOST_API const std::string XML_ATT_THRESHOLD;
extern SVMSCORE_HOST_API const std::string XML_ATT_COEFFICIENT;
extern SVMSCORE_HOST_API const std::string XML_ATT_MINING_FUNCTIONNAME;
extern SVMSCORE_HOST_API const std::string XML_ATT_MISSREPVALUE;
extern SVMSCORE_HOST_API const std::string XML_ATT_EXTENSION_EXTENDER;
extern SVMSCORE_HOST_API const std::string XML_ATT_PPC_TARGET_CAT;
extern SVMSCORE_HOST_API const std::string XML_ATT_RM_IS_SCORABLE;

// Mining field attributes and the usage types that are told apart
extern SVMSCORE_HOST_API const std::string XML_ATT_MININGFIELD_NAME;
extern SVMSCORE_HOST_API const std::string XML_ATT_MININGFIELD_USAGETYPE;
extern SVMSCORE_HOST_API const std::string XML_ATT_MININGFIELD_MISSREPLACE;
extern SVMSCORE_HOST_API const std::string XML_ATT_MF_FUT_ACTIVE;
extern SVMSCORE_HOST_API const std::string XML_ATT_MF_FUT_PREDICTED;
extern SVMSCORE_HOST_API const std::string XML_ATT_MF_FUT_TARGET;

// Model attributes
extern SVMSCORE_HOST_API const std::string XML_ATT_SVM_ID;
extern SVMSCORE_HOST_API const std::string XML_ATT_SVM_N;
extern SVMSCORE_HOST_API const std::string XML_ATT_SVM_FIELD;
extern SVMSCORE_HOST_API const std::string XML_ATT_SVM_VECTORID;
extern SVMSCORE_HOST_API const std::string XML_ATT_SVM_ABSOLUTEVALUE;
extern SVMSCORE_HOST_API const std::string XML_ATT_SVM_ALTERNATETAGCATE;
extern SVMSCORE_HOST_API const std::string XML_ATT_SVM_BIAS;
extern SVMSCORE_HOST_API const std::string XML_ATT_SVM_CLASSMETHOLD;
extern SVMSCORE_HOST_API const std::string XML_ATT_SVM_DEGREE;
extern SVMSCORE_HOST_API const std::string XML_ATT_SVM_GAMMA;
extern SVMSCORE_HOST_API const std::string XML_ATT_SVM_MAXWINS;
extern SVMSCORE_HOST_API const std::string XML_ATT_SVM_ONEAGAINSTONE;
extern SVMSCORE_HOST_API const std::string XML_ATT_SVM_PARAMA;
extern SVMSCORE_HOST_API const std::string XML_ATT_SVM_PARAMB;
extern SVMSCORE_HOST_API const std::string XML_ATT_SVM_RESPONSE;
extern SVMSCORE_HOST_API const std::string XML_ATT_SVM_NONRESPONSE;

// Fixed values
extern SVMSCORE_HOST_API const std::string XML_VAL_SVM_CLASSIFICATION;
extern SVMSCORE_HOST_API const std::string XML_VAL_SVM_REGRESSION;
extern SVMSCORE_HOST_API const std::string XML_VAL_SVM_SEPARATORS;
extern SVMSCORE_HOST_API const std::string XML_VAL_THRESHOLD;
extern SVMSCORE_HOST_API const std::string XML_VAL_EXTENSION_EXTENDER;

}  // namespace MCZandor_850::PMMLModelTags

#endif  // HOST_XML_TAGS_H_
