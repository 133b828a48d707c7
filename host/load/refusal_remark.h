// What a refusal does not say: a translator's codes name one element for several faults.
#ifndef HOST_LOAD_REFUSAL_REMARK_H_
#define HOST_LOAD_REFUSAL_REMARK_H_

#include "host/model/ss_exception.h"
#include "host/xml/document.h"

namespace svmscore {

// Says what of the document is at fault, where, and what to do, if the error does not; its code and
// parts stay. The error must be located.
// [any thread] Owns: the caller. Lives: arguments for the call. Fails: std::bad_alloc.
void ExplainRefusal(MCZandor_850::SSException& error, const PmmlDocument& document);

// What may be meant by the name of a field that the document lacks, such as "did you mean "NAME"?",
// or nothing.
// [one thread] for each document. Owns: the caller. Fails: std::bad_alloc.
std::string MeantField(const std::string& name, const PmmlDocument& document);

}  // namespace svmscore

#endif  // HOST_LOAD_REFUSAL_REMARK_H_
