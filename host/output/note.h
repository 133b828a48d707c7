// Remarks on what a document declares for its results.
#ifndef HOST_OUTPUT_NOTE_H_
#define HOST_OUTPUT_NOTE_H_

#include <string>
#include <vector>

#include <xercesc/dom/DOM.hpp>

#include "host/findings/finding.h"
#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"

namespace svmscore::output {

// Something that a document asks for and does not get, or gets in a way worth mentioning.
struct Note {
  const xercesc::DOMElement* element;  // the document's
  std::string text;                    // what, and what it means for the results
  KindOfFinding kind = "results";
  std::string meant = {};  // "did you mean "NAME"?" for a name that is not known; may be empty
};

// What to do about declarations of results that cannot be read.
enum class Faults {
  kRefuse,       // refuse them by an SSException
  kRefuseNames,  // refuse references to fields that do not exist, leave out the others with a note
  kTell,         // leave them out with a note
};

// Calls `step`. Where it fails and `faults` does not refuse that, returns false and adds a note:
// what that means and why.
template <typename Step>
bool Attempt(Faults faults, const xercesc::DOMElement* element, const std::string& what,
             std::vector<Note>& notes, const Step& step) {
  try {
    step();
    return true;
  } catch (const MCZandor_850::SSException& reason) {
    const bool names = reason.GetErrorCode() == code::kUnknownField;
    if (faults == Faults::kRefuse || (faults == Faults::kRefuseNames && names)) throw;
    notes.push_back({element, what + ": " + reason.what(), "results"});
    return false;
  }
}

}  // namespace svmscore::output

#endif  // HOST_OUTPUT_NOTE_H_
