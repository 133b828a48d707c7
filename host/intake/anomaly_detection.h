// One-class models inside an AnomalyDetectionModel.
#ifndef HOST_INTAKE_ANOMALY_DETECTION_H_
#define HOST_INTAKE_ANOMALY_DETECTION_H_

#include "host/intake/intake.h"

namespace svmscore::intake {

// Puts `inner` in the place of `outer`, with what `outer` says of fields, derived fields and
// output. False where that cannot be done without changing the meaning; where findings are refused,
// throws.
bool LiftModel(Intake& intake, DOMElement* outer, DOMElement* inner);

}  // namespace svmscore::intake

#endif  // HOST_INTAKE_ANOMALY_DETECTION_H_
