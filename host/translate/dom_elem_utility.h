// Reading attributes and children of elements, required or optional.
#ifndef HOST_TRANSLATE_DOM_ELEM_UTILITY_H_
#define HOST_TRANSLATE_DOM_ELEM_UTILITY_H_

#include <string>

#include <xercesc/dom/DOM.hpp>

#include "host/text/api.h"
#include "host/translate/translator.h"

namespace MCZandor_850 {

// In every operation `required` decides what a missing item does: it is thrown as an SSException
// (260120 attribute, element; 260115 child, parent), or it yields an empty text, null, 0 children,
// -1.0 or -1. A present attribute that is not the number it should be is thrown in both cases
// (260153 text, attribute, element). Each call notes its element with the translator as the place
// of a failure. A null element counts as one that has nothing.
class SVMSCORE_HOST_API DOMElemUtility {
 public:
  // Both are borrowed and may be null.
  DOMElemUtility(PMMLTranslator* translator, ZandorTranscoder* transcoder);

  std::string GetAttributeToString(xercesc::DOMElement* element, const std::string& name,
                                   bool required);
  double GetAttributeToDouble(xercesc::DOMElement* element, const std::string& name, bool required);
  // A whole number; outside the range of int it saturates.
  int GetAttributeToInt(xercesc::DOMElement* element, const std::string& name, bool required);
  // The first child element of that name.
  xercesc::DOMElement* GetChildElemByName(xercesc::DOMElement* element, const std::string& name,
                                          bool required);
  // The number of child elements of that name.
  unsigned long GetNodeListLength(xercesc::DOMElement* element, const std::string& name,
                                  bool required);
  // The n-th (from 0) among all descendants of that name, in document order.
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
