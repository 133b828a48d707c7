// Moved: programs that include it from here get it from its room.
#ifndef SVM_EXPORT_MESSAGES_H_
#define SVM_EXPORT_MESSAGES_H_

#include "svm/constants/messages.h"

#endif  // SVM_EXPORT_MESSAGES_H_
