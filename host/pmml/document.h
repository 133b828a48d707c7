// Moved: programs that include it from here get it from its room.
#ifndef HOST_PMML_DOCUMENT_H_
#define HOST_PMML_DOCUMENT_H_

#include "host/xml/document.h"

#endif  // HOST_PMML_DOCUMENT_H_
