// Making documents readable that other producers wrote.
#ifndef HOST_INTAKE_MAKE_READABLE_H_
#define HOST_INTAKE_MAKE_READABLE_H_

#include <vector>

#include "host/findings/finding.h"
#include "host/text/api.h"
#include "host/xml/document.h"

namespace svmscore {

enum class IntakeMode {
  kRefuse,    // makes the changes; what is not supported is thrown
  kTolerate,  // makes the changes; what is not supported stays as it is, for a program that tells
              // of it
  kStrict,    // as kRefuse, and thrown is also the first finding that guesses, loses or is an error
};

// Edits the document so that a translator, which reads exactly what its own rules read, understands
// it as its author meant it. A document that needs no change is left as it is, and what a
// translator itself refuses is left to it. Returns what was done and found, in order.
// Throws SSException with the element at fault (a version that is not known, in every mode); the
// document is then half changed and of no further use. One thread a document.
SVMSCORE_HOST_API std::vector<Finding> MakeReadable(PmmlDocument& document, IntakeMode mode);

}  // namespace svmscore

#endif  // HOST_INTAKE_MAKE_READABLE_H_
