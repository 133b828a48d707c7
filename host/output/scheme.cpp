#include "host/output/scheme.h"

#include <optional>
#include <string>

#include "host/text/number_text.h"
#include "host/xml/attributes.h"

namespace svmscore::output {
namespace {

using xercesc::DOMElement;

std::string Text(const DOMElement* element, const std::string& attribute) {
  return FindAttribute(element, attribute).value_or("");
}

bool HasNumber(const DOMElement* element, const std::string& attribute) {
  const std::optional<std::string> text = FindAttribute(element, attribute);
  return text && ParseNumber(*text);
}

}  // namespace

const DOMElement* MachineExtension(const DOMElement* machine) {
  const DOMElement* extension = FindChild(machine, "Extension");
  const bool own = Text(extension, "extender") == "svmscore";
  return own ? extension : nullptr;
}

bool IsCompleteExtension(const DOMElement* extension, bool classification) {
  if (!classification) {
    return FindChild(extension, "StandardDeviation") != nullptr;
  }
  const DOMElement* pair = FindChild(extension, "ResponseCategory");
  const DOMElement* sigmoid = FindChild(extension, "ProbabilityParameters");
  return !Text(pair, "response").empty() && !Text(pair, "nonResponse").empty() &&
         HasNumber(sigmoid, "A") && HasNumber(sigmoid, "B");
}

Scheme SchemeOf(const DOMElement* model, std::size_t categories) {
  Scheme scheme;
  const bool classification = Text(model, "functionName") == "classification";
  // The last machine decides for the model whether the extension counts.
  const DOMElement* last = nullptr;
  for (const DOMElement* machine : Children(model, "SupportVectorMachine")) last = machine;
  const bool extended =
      last != nullptr && IsCompleteExtension(MachineExtension(last), classification);
  if (!classification) {
    scheme.interval = extended;
    return scheme;
  }
  const bool one_against_one = Text(model, "classificationMethod") == "OneAgainstOne";
  if (extended) {
    scheme.percentages = Percentages::kProbabilities;
    scheme.method = categories == 2 ? Method::kBinary : Method::kOneAgainstOne;
  } else if (categories == 2) {
    scheme.method = Method::kBinary;
  } else if (one_against_one) {
    scheme.method = Method::kOneAgainstOne;
    scheme.percentages = Percentages::kVoteShares;
  } else {
    scheme.method = Method::kOneAgainstAll;
  }
  return scheme;
}

}  // namespace svmscore::output
