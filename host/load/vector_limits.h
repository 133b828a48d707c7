// How many entries the vectors of a document have.
#ifndef HOST_LOAD_VECTOR_LIMITS_H_
#define HOST_LOAD_VECTOR_LIMITS_H_

#include "host/xml/elements.h"

namespace svmscore {

// Throws an SSException (260318) if the sparse arrays have more entries, or more implied entries
// without a text, than the document's limits allow: a translator makes room for all of them. [one
// thread] for each document.
void CheckEntries(const xercesc::DOMDocument* document);

}  // namespace svmscore

#endif  // HOST_LOAD_VECTOR_LIMITS_H_
