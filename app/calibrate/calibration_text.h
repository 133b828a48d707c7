// What a calibration found, for people.
#ifndef APP_CALIBRATE_CALIBRATION_TEXT_H_
#define APP_CALIBRATE_CALIBRATION_TEXT_H_

#include <string>

#include "tools/calibrate/calibration.h"

namespace svmscore::app {

// Lines, printable. `output` is the file that the document goes to; empty for none. [any thread]
// Owns: the caller. Fails: std::bad_alloc.
std::string CalibrationText(const tools::CalibrationResult& result, const std::string& output);

}  // namespace svmscore::app

#endif  // APP_CALIBRATE_CALIBRATION_TEXT_H_
