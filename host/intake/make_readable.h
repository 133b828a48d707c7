// Making documents readable that other producers wrote.
#ifndef HOST_INTAKE_MAKE_READABLE_H_
#define HOST_INTAKE_MAKE_READABLE_H_

#include <cstddef>
#include <string>
#include <vector>

#include "host/text/api.h"
#include "host/xml/document.h"

namespace svmscore {

// One kind of change that a document needed before a translator could read it, or of remark: what a
// translator takes in a way of its own, without a word, that the author may not have meant.
struct SVMSCORE_HOST_API IntakeStep {
  std::string name;         // stable, in small letters with hyphens
  std::string consequence;  // one sentence
  std::string detail;       // of a remark: what the strict mode throws at the first place, or empty
  std::string element;      // the name of the first element concerned
  long line = 0;            // of that element; 0 where the file does not hold it
  std::size_t count = 0;    // how many places
  bool changes = true;      // false for a remark: the document was read as it stands
};

enum class IntakeMode {
  kRefuse,    // makes the changes and remarks; what is not supported is thrown
  kTolerate,  // makes the changes and remarks; what is not supported stays as it is, for a program
              // that tells of it
  kStrict,    // as kRefuse, and thrown is also the first change that would be needed (260307), and
              // the first remark on something that is lost or read as something else
};

// Edits the document so that a translator, which reads exactly what its own rules read, understands
// it as its author meant it. A document that needs no change is left as it is, and what a
// translator itself refuses is left to it. Returns what was done, in order, each kind of step once.
// Throws SSException with the element at fault (a version that is not known, in every mode); the
// document is then half changed and of no further use. One thread a document.
SVMSCORE_HOST_API std::vector<IntakeStep> MakeReadable(PmmlDocument& document, IntakeMode mode);

}  // namespace svmscore

#endif  // HOST_INTAKE_MAKE_READABLE_H_
