// The date that a calibrated document gets.
#ifndef TOOLS_CALIBRATE_CALIBRATION_DATE_H_
#define TOOLS_CALIBRATE_CALIBRATION_DATE_H_

#include <string>

namespace svmscore::tools {

// Now, or the time that a reproducible build asks for by the environment variable
// SOURCE_DATE_EPOCH: as 2026-01-31T12:00:00Z. [any thread] Fails: std::invalid_argument, with a
// sentence, where the variable holds no time of the years 1970 to 9999.
std::string DateOfCalibration();

}  // namespace svmscore::tools

#endif  // TOOLS_CALIBRATE_CALIBRATION_DATE_H_
