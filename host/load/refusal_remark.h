// What a translator's refusal does not say: its codes name one element for several faults.
#ifndef HOST_LOAD_REFUSAL_REMARK_H_
#define HOST_LOAD_REFUSAL_REMARK_H_

#include <string>

#include "host/model/ss_exception.h"
#include "host/xml/document.h"

namespace svmscore {

// What of the document is at fault, as the rest of a sentence; empty where the error says it.
// [any thread] Owns: the caller. Lives: arguments for the call. Fails: std::bad_alloc.
std::string RemarkOnRefusal(const MCZandor_850::SSException& error, const PmmlDocument& document);

}  // namespace svmscore

#endif  // HOST_LOAD_REFUSAL_REMARK_H_
