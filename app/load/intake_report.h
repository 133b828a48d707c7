// Reports how a model's document is read.
#ifndef APP_LOAD_INTAKE_REPORT_H_
#define APP_LOAD_INTAKE_REPORT_H_

#include <string>

#include "host/load/loader.h"

namespace svmscore::app {

// Writes a line to standard error for each kind of finding that is guessed, lost or wrong, with its
// first place. `path` is what the lines call the document. [one thread] of the process. Lives:
// arguments for the call. Fails: std::bad_alloc.
void TellIntake(const std::string& path, const LoadedModel& loaded);

}  // namespace svmscore::app

#endif  // APP_LOAD_INTAKE_REPORT_H_
