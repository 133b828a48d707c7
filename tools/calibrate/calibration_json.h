// What a calibration found, as JSON.
#ifndef TOOLS_CALIBRATE_CALIBRATION_JSON_H_
#define TOOLS_CALIBRATE_CALIBRATION_JSON_H_

#include <string>

#include "tools/calibrate/calibration.h"

namespace svmscore::tools {

// One object, indented, with a line end: "kind" (classification or regression); "rows", numbers of
// them: "read", "unlabelled", "unknownLabels", "unscored", "used"; of a classification
// "categories", each with its "cases"; "pairs" with "response", "nonResponse", their numbers of
// cases, "A", "B" and the "machine"; "moved", "changed"; of a regression "confidence", "rank",
// "halfWidth", "outputField" where labels are on the scale of one, "standardDeviation"; "before"
// and "after" with the figures of figures.h, null where there are none; "folds", the parts of the
// cross-validation that "after" is from; "verificationRecords" (none, kept, rewritten or dropped);
// and "remarks". [any thread] Owns: the caller. Fails: std::bad_alloc.
std::string JsonOf(const CalibrationResult& result);

// none, kept, rewritten or dropped. [any thread] Fails: never.
const char* FateName(RecordsFate fate);

}  // namespace svmscore::tools

#endif  // TOOLS_CALIBRATE_CALIBRATION_JSON_H_
