// Telling how a model's document is read.
#ifndef APP_LOAD_INTAKE_REPORT_H_
#define APP_LOAD_INTAKE_REPORT_H_

#include <string>

#include "host/load/loader.h"

namespace svmscore::app {

// Writes a line to standard error for each kind of step, and for each target or output field that
// does not give what its declaration asks for. `path` names the document.
void TellIntake(const std::string& path, const LoadedModel& loaded);

}  // namespace svmscore::app

#endif  // APP_LOAD_INTAKE_REPORT_H_
