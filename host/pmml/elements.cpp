#include "host/pmml/elements.h"

#include "host/message_codes.h"
#include "host/number_text.h"
#include "host/ss_exception.h"
#include "host/tags.h"
#include "host/transcoder.h"
#include "host/translator.h"

namespace svmscore {

namespace tags = MCZandor_850::PMMLModelTags;
using MCZandor_850::BaseTranslator;
using xercesc::DOMElement;

namespace {

DOMElement* FirstNamed(DOMElement* at, const std::string& name) {
  while (at != nullptr && !BaseTranslator::IsEqual(at->getNodeName(), name)) {
    at = BaseTranslator::GetNextSiblingElt(at);
  }
  return at;
}

}  // namespace

DOMElement* FindChild(const DOMElement* parent, const std::string& name) {
  return FirstNamed(BaseTranslator::GetFirstChildElt(const_cast<DOMElement*>(parent)), name);
}

DOMElement* FindNext(const DOMElement* sibling, const std::string& name) {
  return FirstNamed(BaseTranslator::GetNextSiblingElt(const_cast<DOMElement*>(sibling)), name);
}

std::string NameOf(const DOMElement* element) {
  return element == nullptr ? std::string() : ToUtf8(element->getNodeName());
}

std::optional<std::string> FindAttribute(const DOMElement* element, const std::string& name) {
  if (element == nullptr) return std::nullopt;
  const xercesc::DOMAttr* attribute = element->getAttributeNode(ToUtf16(name).c_str());
  if (attribute == nullptr) return std::nullopt;
  return ToUtf8(attribute->getValue());
}

std::string RequireAttribute(const DOMElement* element, const std::string& name) {
  std::optional<std::string> text = FindAttribute(element, name);
  if (!text) ThrowAt(element, code::kAttributeMissing, name, NameOf(element));
  return *std::move(text);
}

std::optional<double> FindNumber(const DOMElement* element, const std::string& name) {
  const std::optional<std::string> text = FindAttribute(element, name);
  if (!text) return std::nullopt;
  const std::optional<double> number = ParseNumber(*text);
  if (!number) RefuseValue(element, name, *text);
  return number;
}

DOMElement* FindModelElement(const xercesc::DOMDocument* document) {
  return document == nullptr ? nullptr
                             : FindChild(document->getDocumentElement(), tags::XML_ELE_SVMMODEL);
}

void RefuseValue(const DOMElement* element, const std::string& attribute,
                 const std::string& value) {
  ThrowAt(element, code::kBadValue, value, attribute, NameOf(element));
}

}  // namespace svmscore
