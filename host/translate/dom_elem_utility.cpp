#include "host/translate/dom_elem_utility.h"

#include <limits>

#include <xercesc/util/XMLString.hpp>

#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"
#include "host/text/number_text.h"
#include "host/xml/transcoder.h"
#include "host/xml/wide_text.h"

namespace MCZandor_850 {

namespace code = svmscore::code;
using svmscore::ThrowAt;
using xercesc::DOMElement;

namespace {

std::string NameOf(const DOMElement* element) {
  return element == nullptr ? std::string() : svmscore::ToUtf8(element->getNodeName());
}

}  // namespace

DOMElemUtility::DOMElemUtility(PMMLTranslator* translator, ZandorTranscoder* transcoder)
    : translator_(translator), transcoder_(transcoder) {}

const XMLCh* DOMElemUtility::Find(DOMElement* element, const std::string& name, bool required) {
  if (translator_ != nullptr && element != nullptr) translator_->NoteElement(element);
  const XMLCh* value = svmscore::AttributeView(element, name).data();
  if (value != nullptr) return value;
  if (required) ThrowAt(element, code::kAttributeMissing, name, NameOf(element));
  return nullptr;
}

std::string DOMElemUtility::GetAttributeToString(DOMElement* element, const std::string& name,
                                                 bool required) {
  const XMLCh* text = Find(element, name, required);
  return transcoder_ != nullptr ? transcoder_->transcodeTo(text) : svmscore::ToUtf8(text);
}

double DOMElemUtility::GetAttributeToDouble(DOMElement* element, const std::string& name,
                                            bool required) {
  const XMLCh* text = Find(element, name, required);
  if (text == nullptr) return -1.0;
  const std::string narrow = svmscore::ToUtf8(text);
  const std::optional<double> number = svmscore::ParseNumber(narrow);
  if (!number) ThrowAt(element, code::kBadValue, narrow, name, NameOf(element));
  return *number;
}

int DOMElemUtility::GetAttributeToInt(DOMElement* element, const std::string& name, bool required) {
  const XMLCh* text = Find(element, name, required);
  if (text == nullptr) return -1;
  const std::string narrow = svmscore::ToUtf8(text);
  const std::optional<double> number = svmscore::ParseNumber(narrow);
  if (!number) ThrowAt(element, code::kBadValue, narrow, name, NameOf(element));
  return svmscore::TruncateToInt(*number);
}

DOMElement* DOMElemUtility::GetChildElemByName(DOMElement* element, const std::string& name,
                                               bool required) {
  if (translator_ != nullptr && element != nullptr) translator_->NoteElement(element);
  for (DOMElement* child = BaseTranslator::GetFirstChildElt(element); child != nullptr;
       child = BaseTranslator::GetNextSiblingElt(child)) {
    if (BaseTranslator::IsEqual(child->getNodeName(), name)) return child;
  }
  if (required) ThrowAt(element, code::kChildMissing, name, NameOf(element));
  return nullptr;
}

unsigned long DOMElemUtility::GetNodeListLength(DOMElement* element, const std::string& name,
                                                bool required) {
  if (translator_ != nullptr && element != nullptr) translator_->NoteElement(element);
  unsigned long count = 0;
  for (DOMElement* child = BaseTranslator::GetFirstChildElt(element); child != nullptr;
       child = BaseTranslator::GetNextSiblingElt(child)) {
    if (BaseTranslator::IsEqual(child->getNodeName(), name)) ++count;
  }
  if (count == 0 && required) ThrowAt(element, code::kChildMissing, name, NameOf(element));
  return count;
}

DOMElement* DOMElemUtility::GetElemFromNodeList(DOMElement* element, const std::string& name,
                                                unsigned long index, bool required) {
  if (translator_ != nullptr && element != nullptr) translator_->NoteElement(element);
  const xercesc::DOMNodeList* list = BaseTranslator::GetElementsByTagName(element, name);
  auto* found = list == nullptr
                    ? nullptr
                    : static_cast<DOMElement*>(list->item(static_cast<XMLSize_t>(index)));
  if (found == nullptr && required) ThrowAt(element, code::kChildMissing, name, NameOf(element));
  return found;
}

}  // namespace MCZandor_850
