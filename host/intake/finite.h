// Numbers that are none to compute with.
#ifndef HOST_INTAKE_FINITE_H_
#define HOST_INTAKE_FINITE_H_

#include "host/intake/intake.h"
#include "host/xml/edit.h"

namespace svmscore::intake {

// Remarks on the first word of the element's text that is INF, -INF, NaN or a number beyond the
// range.
void CheckFiniteWords(Intake& intake, const DOMElement* element, WideView text);

}  // namespace svmscore::intake

#endif  // HOST_INTAKE_FINITE_H_
