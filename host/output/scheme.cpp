#include "host/output/scheme.h"

#include <optional>
#include <string>

#include "host/number_text.h"
#include "host/pmml/elements.h"
#include "host/tags.h"

namespace svmscore::output {
namespace {

namespace tags = MCZandor_850::PMMLModelTags;
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
  const DOMElement* extension = FindChild(machine, tags::XML_ELE_EXTENSION);
  const bool own =
      Text(extension, tags::XML_ATT_EXTENSION_EXTENDER) == tags::XML_VAL_EXTENSION_EXTENDER;
  return own ? extension : nullptr;
}

bool IsCompleteExtension(const DOMElement* extension, bool classification) {
  if (!classification) {
    return FindChild(extension, tags::XML_ELE_SVM_STANDARDDEVIATION) != nullptr;
  }
  const DOMElement* pair = FindChild(extension, tags::XML_ELE_SVM_RESPONSECATEGORY);
  const DOMElement* sigmoid = FindChild(extension, tags::XML_ELE_SVM_PROBABILITYPARAM);
  return !Text(pair, tags::XML_ATT_SVM_RESPONSE).empty() &&
         !Text(pair, tags::XML_ATT_SVM_NONRESPONSE).empty() &&
         HasNumber(sigmoid, tags::XML_ATT_SVM_PARAMA) &&
         HasNumber(sigmoid, tags::XML_ATT_SVM_PARAMB);
}

Scheme SchemeOf(const DOMElement* model, std::size_t categories) {
  Scheme scheme;
  const bool classification =
      Text(model, tags::XML_ATT_MINING_FUNCTIONNAME) == tags::XML_VAL_SVM_CLASSIFICATION;
  // The last machine decides for the model whether the extension counts.
  const DOMElement* last = nullptr;
  for (const DOMElement* machine : Children(model, tags::XML_ELE_SVM_SVM)) last = machine;
  const bool extended =
      last != nullptr && IsCompleteExtension(MachineExtension(last), classification);
  if (!classification) {
    scheme.interval = extended;
    return scheme;
  }
  const bool one_against_one =
      Text(model, tags::XML_ATT_SVM_CLASSMETHOLD) == tags::XML_ATT_SVM_ONEAGAINSTONE;
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
