// Reading attributes and children of elements, required or optional.
#ifndef HOST_TRANSLATE_DOM_ELEM_UTILITY_H_
#define HOST_TRANSLATE_DOM_ELEM_UTILITY_H_

#include <string>

#include <xercesc/dom/DOM.hpp>

#include "host/text/api.h"
#include "host/translate/translator.h"

namespace MCZandor_850 {

// In every operation `required` decides what happens where something is missing: an SSException
// (260120 attribute, element; 260115 child, parent), or a result of an empty text, null, 0
// children, -1.0 or -1. An attribute that is not the number it should be is an SSException in both
// cases (260153 text, attribute, element). Each call notes its element with the translator as the
// place of a failure. A null element has no attributes and no children. [one thread] for each
// document. Owns: the caller texts, the document elements. Lives: elements, as long as the
// document; translator and transcoder, longer than this object. Fails: as above; std::bad_alloc.
class SVMSCORE_HOST_API DOMElemUtility {
 public:
  // Both may be null.
  DOMElemUtility(PMMLTranslator* translator, ZandorTranscoder* transcoder);

  std::string GetAttributeToString(xercesc::DOMElement* element, const std::string& name,
                                   bool required);
  double GetAttributeToDouble(xercesc::DOMElement* element, const std::string& name, bool required);
  // A number, truncated to a whole one; it saturates outside the range of int.
  int GetAttributeToInt(xercesc::DOMElement* element, const std::string& name, bool required);
  // The first child element of that name.
  xercesc::DOMElement* GetChildElemByName(xercesc::DOMElement* element, const std::string& name,
                                          bool required);
  // The number of child elements of that name.
  unsigned long GetNodeListLength(xercesc::DOMElement* element, const std::string& name,
                                  bool required);
  // The descendant of that name at position `index` (from 0), in document order.
  xercesc::DOMElement* GetElemFromNodeList(xercesc::DOMElement* element, const std::string& name,
                                           unsigned long index, bool required);

 private:
  // The attribute's value, or null where the element has none.
  const XMLCh* Find(xercesc::DOMElement* element, const std::string& name, bool required);

  PMMLTranslator* translator_;
  ZandorTranscoder* transcoder_;
};

}  // namespace MCZandor_850

#endif  // HOST_TRANSLATE_DOM_ELEM_UTILITY_H_
