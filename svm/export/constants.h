// Moved to svm/constants; kept for programs that include it from here.
#ifndef SVM_EXPORT_CONSTANTS_H_
#define SVM_EXPORT_CONSTANTS_H_

#include "svm/constants/constants.h"

#endif  // SVM_EXPORT_CONSTANTS_H_
