// Making documents readable that other producers wrote.
#ifndef HOST_INTAKE_MAKE_READABLE_H_
#define HOST_INTAKE_MAKE_READABLE_H_

#include <optional>
#include <vector>

#include "host/findings/finding.h"
#include "host/text/api.h"
#include "host/xml/document.h"

namespace svmscore {

enum class IntakeMode {
  kTolerate,  // makes the changes; what is refused stays as it is
  kStrict,    // throws what is refused, and the first finding that guesses, loses or is an error
};

// Edits the document so that a translator, which reads exactly what its own rules read, understands
// it as its author meant it. A document that needs no change is left as it is, and what a
// translator itself refuses is left to it. Returns what was done and found, in order. The first
// error that the author cannot have meant is put into `refused` (unless that is null): whoever
// scores refuses the document with it, unless a translator refuses the document first. [one thread]
// for each document. Owns: the caller. Fails: SSException with the element at fault, after which
// the document is half changed and of no further use; std::bad_alloc.
SVMSCORE_HOST_API std::vector<Finding> MakeReadable(
    PmmlDocument& document, IntakeMode mode,
    std::optional<MCZandor_850::SSException>* refused = nullptr);

}  // namespace svmscore

#endif  // HOST_INTAKE_MAKE_READABLE_H_
