// The options that say how a model's document is read.
#ifndef APP_OPTIONS_READING_OPTION_H_
#define APP_OPTIONS_READING_OPTION_H_

#include <string>

#include <CLI/CLI.hpp>

#include "host/load/loader.h"

namespace svmscore::app {

struct ReadingOptions {
  bool strict = false;
  bool as_is = false;
};

// Adds --strict-document, with that help, and --as-is. `options` must outlive the parsing.
void AddReadingOptions(CLI::App& command, ReadingOptions& options, const std::string& strict_help);

// Fails: Failure(kUsageError) if both are given.
LoadChecks ChecksOf(const ReadingOptions& options);

}  // namespace svmscore::app

#endif  // APP_OPTIONS_READING_OPTION_H_
