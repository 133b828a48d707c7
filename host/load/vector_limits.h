// How many entries the vectors of a document have.
#ifndef HOST_LOAD_VECTOR_LIMITS_H_
#define HOST_LOAD_VECTOR_LIMITS_H_

#include "host/xml/elements.h"

namespace svmscore {

// Throws an SSException (260318) where the sparse arrays have more entries, or more of those that
// no text stands for, than the document's limits let through: a translator makes room for them all.
void CheckEntries(const xercesc::DOMDocument* document);

}  // namespace svmscore

#endif  // HOST_LOAD_VECTOR_LIMITS_H_
