// Remarks on what a document declares for its results.
#ifndef HOST_OUTPUT_NOTE_H_
#define HOST_OUTPUT_NOTE_H_

#include <string>

#include <xercesc/dom/DOM.hpp>

namespace svmscore::output {

// Something that a document asks for and does not get, or gets in a way worth telling.
struct Note {
  const xercesc::DOMElement* element;  // the document's
  std::string text;                    // what, and what it means for the results
};

}  // namespace svmscore::output

#endif  // HOST_OUTPUT_NOTE_H_
