// Telling how a model's document is read.
#ifndef APP_INTAKE_REPORT_H_
#define APP_INTAKE_REPORT_H_

#include <string>

#include "host/pmml/loader.h"

namespace svmscore::app {

// What a step means, what it was first about, and how often it was taken.
std::string ConsequenceOf(const IntakeStep& step);

// The same after the place where it was first taken.
std::string SentenceOf(const IntakeStep& step);

// Writes a line to standard error for each kind of step, and for each target or output field that
// does not give what its declaration asks for. `path` names the document.
void TellIntake(const std::string& path, const LoadedModel& loaded);

}  // namespace svmscore::app

#endif  // APP_INTAKE_REPORT_H_
