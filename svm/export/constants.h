// Moved: programs that include it from here get it from its room.
#ifndef SVM_EXPORT_CONSTANTS_H_
#define SVM_EXPORT_CONSTANTS_H_

#include "svm/constants/constants.h"

#endif  // SVM_EXPORT_CONSTANTS_H_
