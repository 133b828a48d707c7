// What a model computes besides its prediction, judged from the document alone.
#ifndef HOST_OUTPUT_SCHEME_H_
#define HOST_OUTPUT_SCHEME_H_

#include <cstddef>

#include <xercesc/dom/DOM.hpp>

#include "host/text/api.h"

namespace svmscore::output {

// How a model decides. "The extension" below is this system's own: the first Extension of a
// machine, if its extender is "svmscore".
enum class Method {
  kRegression,
  kBinary,         // two categories, one machine
  kOneAgainstOne,  // a machine for each pair of categories
  kOneAgainstAll,  // a machine for each category
};

// What the percentages of a classification mean. Results hold percentages of zero where a model
// computes none.
enum class Percentages {
  kNone,
  kVoteShares,     // the share of the machines that vote for a category
  kProbabilities,  // calibrated by the extension of the machines
};

struct Scheme {
  Method method = Method::kRegression;
  Percentages percentages = Percentages::kNone;
  bool interval = false;  // a regression with a standard deviation and an interval
};

// `model` is the model element of a document that has been translated; `categories` is the number
// of categories of its target. [one thread] for each document, as for the functions below. Fails:
// std::bad_alloc.
SVMSCORE_HOST_API Scheme SchemeOf(const xercesc::DOMElement* model, std::size_t categories);

// The extension of a machine: its first Extension child if that has the extender "svmscore", else
// null. Lives: as long as the document. Fails: std::bad_alloc.
SVMSCORE_HOST_API const xercesc::DOMElement* MachineExtension(const xercesc::DOMElement* machine);
// Whether the extension has everything that a machine of its kind needs. Fails: std::bad_alloc.
SVMSCORE_HOST_API bool IsCompleteExtension(const xercesc::DOMElement* extension,
                                           bool classification);

}  // namespace svmscore::output

#endif  // HOST_OUTPUT_SCHEME_H_
