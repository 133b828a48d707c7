// Constants that every part of the plug-in shares.
#ifndef SVM_CONSTANTS_CONSTANTS_H_
#define SVM_CONSTANTS_CONSTANTS_H_

#include <limits>
#include <string>

#include "svm/constants/kernel_type.h"

namespace SVMConst {

// Banner of the component; not shown while scoring.
const std::string kVersion = "Support vector machine scoring component, version 1.0";

// Stands for an unbounded value: the largest finite double.
const double kInfinite = std::numeric_limits<double>::max();

}  // namespace SVMConst

#endif  // SVM_CONSTANTS_CONSTANTS_H_
