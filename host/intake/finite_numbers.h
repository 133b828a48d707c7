// Numbers that cannot be computed with: infinite, NaN or too large.
#ifndef HOST_INTAKE_FINITE_NUMBERS_H_
#define HOST_INTAKE_FINITE_NUMBERS_H_

#include "host/intake/intake.h"
#include "host/xml/edit.h"

namespace svmscore::intake {

// Remarks on an attribute (of an element that may be null) that begins with such a number.
void CheckFiniteAttribute(Intake& intake, const DOMElement* element, const char* name);
// The same for an attribute whose text is known.
void CheckFiniteAttribute(Intake& intake, const DOMElement* element, const char* name,
                          WideView text);

// Remarks on the first word of the element's text that is INF, -INF, NaN or a number beyond the
// range.
void CheckFiniteWords(Intake& intake, const DOMElement* element, WideView text);

}  // namespace svmscore::intake

#endif  // HOST_INTAKE_FINITE_NUMBERS_H_
