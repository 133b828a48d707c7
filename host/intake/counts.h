// Counts that elements state of what they hold.
#ifndef HOST_INTAKE_COUNTS_H_
#define HOST_INTAKE_COUNTS_H_

#include "host/intake/intake.h"

namespace svmscore::intake {

// Tells where the element (may be null) states a count that is not `actual`; `what` names what was
// counted, in the plural. Long lists are counted by those who walk through them anyway.
void CheckStatedCount(Intake& intake, const DOMElement* element, const char* attribute,
                      const char* what, std::size_t actual);

}  // namespace svmscore::intake

#endif  // HOST_INTAKE_COUNTS_H_
