#include "host/load/vector_limits.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include "host/text/number_text.h"
#include "host/translate/translator.h"
#include "host/xml/array_numbers.h"
#include "host/xml/attributes.h"
#include "host/xml/limits.h"
#include "host/xml/tags.h"
#include "host/xml/transcoder.h"
#include "host/xml/wide_text.h"

namespace svmscore {
namespace {

namespace tags = MCZandor_850::PMMLModelTags;
using MCZandor_850::BaseTranslator;
using xercesc::DOMNode;

// The parts of a sparse array; null for a part that it lacks.
struct SparseArray {
  explicit SparseArray(const Element* instance) {
    element = FindChild(instance, tags::XML_ELE_SVM_REALSPARSEARRAY);
    indices = FindChild(element, tags::XML_ELE_SVM_INDICES);
    entries = FindChild(element, tags::XML_ELE_SVM_REAL_ENTRIES);
    if (entries == nullptr) entries = FindChild(element, tags::XML_ELE_SVM_ENTRIES);
  }

  Element* element = nullptr;
  Element* indices = nullptr;
  Element* entries = nullptr;
};

std::uint64_t LengthOf(const Element* array) {
  const auto number = ParseNumber(FindAttribute(array, tags::XML_ATT_SVM_N).value_or(""));
  return number ? static_cast<std::uint64_t>(std::max(TruncateToInt(*number), 0)) : 0;
}

// The characters of the text; at least two for each number that is kept in its place.
std::uint64_t TextLength(const Element* element, const ArrayNumbers* numbers) {
  const NumberList* list = numbers == nullptr ? nullptr : numbers->Find(element);
  std::uint64_t length = list == nullptr ? 0 : 2 * list->size;
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

std::uint64_t CountWords(const Element* element, const ArrayNumbers* numbers) {
  if (const NumberList* list = numbers == nullptr ? nullptr : numbers->Find(element)) {
    return list->size;
  }
  const std::u16string text = ToUtf16(ElementText(element));
  WideView rest = text;
  std::uint64_t count = 0;
  while (!NextWord(rest).empty()) ++count;
  return count;
}

}  // namespace

void CheckEntries(const xercesc::DOMDocument* document) {
  Element* dictionary = FindChild(FindModelElement(document), tags::XML_ELE_SVM_VECTORDICTION);
  if (dictionary == nullptr) return;
  const xercesc::DOMNodeList* instances =
      BaseTranslator::GetElementsByTagName(dictionary, tags::XML_ELE_SVM_VECTORINSTANCE);
  const auto instance_at = [instances](XMLSize_t i) {
    return static_cast<const Element*>(instances->item(i));
  };
  const ArrayNumbers* numbers = ArrayNumbers::Of(dictionary);
  std::uint64_t implied = 0;
  std::uint64_t most = 0;  // an entry and the blank after it take two characters
  for (XMLSize_t i = 0; const Element* instance = instance_at(i); ++i) {
    const SparseArray array(instance);
    if (array.element == nullptr) continue;
    if (const NumberList* list = numbers == nullptr ? nullptr : numbers->Find(array.element)) {
      most += list->size;
    } else if (array.indices == nullptr) {
      implied += LengthOf(array.element);
      CheckLimit(array.element, &Limits::implied_entries, implied);
    } else if (array.entries != nullptr) {
      most += (TextLength(array.entries, numbers) + 1) / 2;
    }
  }
  if (most + implied <= LimitsOf(document).entries) return;
  std::uint64_t count = 0;
  for (XMLSize_t i = 0; const Element* instance = instance_at(i); ++i) {
    const SparseArray array(instance);
    if (array.element == nullptr) continue;
    if (const NumberList* list = numbers == nullptr ? nullptr : numbers->Find(array.element)) {
      count += list->size;
    } else if (array.indices == nullptr) {
      count += LengthOf(array.element);
    } else if (array.entries != nullptr) {
      count += CountWords(array.entries, numbers);
    }
    CheckLimit(instance, &Limits::entries, count);
  }
}

}  // namespace svmscore
