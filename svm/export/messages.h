// Moved to svm/constants; kept for programs that include it from here.
#ifndef SVM_EXPORT_MESSAGES_H_
#define SVM_EXPORT_MESSAGES_H_

#include "svm/constants/messages.h"

#endif  // SVM_EXPORT_MESSAGES_H_
