#include "host/load/vector_limits.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include "host/xml/limits.h"
#include "host/text/number_text.h"
#include "host/xml/elements.h"
#include "host/xml/wide_text.h"
#include "host/xml/tags.h"
#include "host/xml/transcoder.h"
#include "host/translate/translator.h"

namespace svmscore {
namespace {

namespace tags = MCZandor_850::PMMLModelTags;
using intake::WideView;
using MCZandor_850::BaseTranslator;
using xercesc::DOMElement;
using xercesc::DOMNode;

// What a sparse array is made of; null for what it lacks.
struct SparseArray {
  explicit SparseArray(const DOMElement* instance) {
    element = Child(instance, u"REAL-SparseArray");
    indices = Child(element, u"Indices");
    entries = Child(element, u"REAL-Entries");
    if (entries == nullptr) entries = Child(element, u"Entries");
  }
  static DOMElement* Child(const DOMElement* parent, WideView name) {
    DOMElement* at = BaseTranslator::GetFirstChildElt(const_cast<DOMElement*>(parent));
    while (at != nullptr && WideView(at->getNodeName()) != name) {
      at = BaseTranslator::GetNextSiblingElt(at);
    }
    return at;
  }

  DOMElement* element = nullptr;
  DOMElement* indices = nullptr;
  DOMElement* entries = nullptr;
};

std::uint64_t LengthOf(const DOMElement* array) {
  const auto number = ParseNumber(FindAttribute(array, tags::XML_ATT_SVM_N).value_or(""));
  return number ? static_cast<std::uint64_t>(std::max(TruncateToInt(*number), 0)) : 0;
}

std::uint64_t TextLength(const DOMElement* element) {
  std::uint64_t length = 0;
  for (const DOMNode* child = element->getFirstChild(); child != nullptr;
       child = child->getNextSibling()) {
    const auto type = child->getNodeType();
    if (type == DOMNode::TEXT_NODE || type == DOMNode::CDATA_SECTION_NODE) {
      length += static_cast<const xercesc::DOMText*>(child)->getLength();
    } else if (type != DOMNode::COMMENT_NODE) {
      return ElementText(element).size();
    }
  }
  return length;
}

std::uint64_t CountWords(const DOMElement* element) {
  const std::u16string text = ToUtf16(ElementText(element));
  WideView rest = text;
  std::uint64_t count = 0;
  while (!intake::NextWord(rest).empty()) ++count;
  return count;
}

}  // namespace

void CheckEntries(const xercesc::DOMDocument* document) {
  DOMElement* dictionary = FindChild(FindModelElement(document), tags::XML_ELE_SVM_VECTORDICTION);
  if (dictionary == nullptr) return;
  const xercesc::DOMNodeList* instances =
      BaseTranslator::GetElementsByTagName(dictionary, tags::XML_ELE_SVM_VECTORINSTANCE);
  const auto instance_at = [instances](XMLSize_t i) {
    return static_cast<const DOMElement*>(instances->item(i));
  };
  std::uint64_t implied = 0;
  std::uint64_t most = 0;  // an entry and what parts it from the next take two characters
  for (XMLSize_t i = 0; const DOMElement* instance = instance_at(i); ++i) {
    const SparseArray array(instance);
    if (array.element == nullptr) continue;
    if (array.indices == nullptr) {
      implied += LengthOf(array.element);
      CheckLimit(array.element, &Limits::implied_entries, implied);
    } else if (array.entries != nullptr) {
      most += (TextLength(array.entries) + 1) / 2;
    }
  }
  if (most + implied <= LimitsOf(document).entries) return;
  std::uint64_t count = 0;
  for (XMLSize_t i = 0; const DOMElement* instance = instance_at(i); ++i) {
    const SparseArray array(instance);
    if (array.element == nullptr) continue;
    if (array.indices == nullptr) {
      count += LengthOf(array.element);
    } else if (array.entries != nullptr) {
      count += CountWords(array.entries);
    }
    CheckLimit(instance, &Limits::entries, count);
  }
}

}  // namespace svmscore
