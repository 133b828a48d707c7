// The option that says how far a number may be from the expected one.
#ifndef APP_OPTIONS_TOLERANCE_OPTION_H_
#define APP_OPTIONS_TOLERANCE_OPTION_H_

#include <CLI/CLI.hpp>

namespace svmscore::app {

// Adds --tolerance, which sets `tolerance`, a share of the expected number. `tolerance` must
// outlive the parsing.
void AddToleranceOption(CLI::App& app, double& tolerance);

}  // namespace svmscore::app

#endif  // APP_OPTIONS_TOLERANCE_OPTION_H_
