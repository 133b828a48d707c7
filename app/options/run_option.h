// The options of commands that work on any number of cases.
#ifndef APP_OPTIONS_RUN_OPTION_H_
#define APP_OPTIONS_RUN_OPTION_H_

#include <string>

#include <CLI/CLI.hpp>

#include "host/model/score_model.h"

namespace svmscore::app {

// Each sets its last argument, which must outlive the parsing.

// --format csv|jsonl
void AddFormatOption(CLI::App& command, std::string& format);
// --threads; 0 stays where it is not given.
void AddThreadsOption(CLI::App& command, int& threads);
// --missing-policy; empty where it is not given.
void AddPolicyOption(CLI::App& command, std::string& policy);
// Sets the policy of that option. [set-up] Fails: std::bad_alloc.
void UsePolicy(MCZandor_850::ScoreModel& model, const std::string& policy);

}  // namespace svmscore::app

#endif  // APP_OPTIONS_RUN_OPTION_H_
