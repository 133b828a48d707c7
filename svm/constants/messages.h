// Texts for what can be wrong with a model. Reports to users carry the host's message codes; this
// table names the same conditions in the plug-in's own words.
#ifndef SVM_CONSTANTS_MESSAGES_H_
#define SVM_CONSTANTS_MESSAGES_H_

#include <string>

namespace MCZandor_850::SVMModelMsgTags {

// The runs of blanks in two of the texts are intended.
const std::string E_REQUIRED_FUNCTIONNAME = "functionName is required";
const std::string E_VALIDATION_FUNCTIONNAME =
    "functionName could be either classification            or regression depending on the SVM "
    "type";
const std::string E_REQUIRED_VECTORDICTIONARY = "VectorDictionary is required";
const std::string E_REQUIRED_VECTORFIELDS = "VectorFields is required";
const std::string E_REQUIRED_VECTORINSTANCE = "VectorInstance is required";
const std::string E_REQUIRED_ID = "ID is required";
const std::string E_REQUIRED_REALARRAY_INDICES = "Indices is required";
const std::string E_REQUIRED_REALARRAY_ENTRIES = "REAL-Entries is required";
const std::string E_REQUIRED_REALARRAY_NOTMATCH = "This sparse array is not matching.";
const std::string E_INVALID_FIELDREFS = "The FieldRef couldn't match the predictor variables";
const std::string E_REQUIRED_TARGET_CATEGORY = "targetCategory is required";
const std::string E_REQUIRED_ALTERNATE_TAGCATE = "alternateTargetCategory is required";
const std::string E_REQUIRED_SUPPORTVECTORS = "SupportVectors is required";
const std::string E_REQUIRED_SUPPORTVECTOR = "SupportVector is required";
const std::string E_REQUIRED_COEFFICIENTS = "Coefficients is required";
const std::string E_REQUIRED_COEFFICIENT = "Coefficient is required";
const std::string E_REQUIRED_VECTORID = "vectorId is required";
const std::string E_INVALID_KERNELTYPE =
    "Can't find any type of kernel for                              Support Vector Machine Model";
const std::string E_INVALID_SVMMODEL = "Invalid a Support Vector Machine Model";

}  // namespace MCZandor_850::SVMModelMsgTags

#endif  // SVM_CONSTANTS_MESSAGES_H_
