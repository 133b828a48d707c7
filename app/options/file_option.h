// The options that name files.
#ifndef APP_OPTIONS_FILE_OPTION_H_
#define APP_OPTIONS_FILE_OPTION_H_

#include <string>

#include <CLI/CLI.hpp>

namespace svmscore::app {

inline constexpr const char* kModelHelp = "PMML file of a support vector machine model";
inline constexpr const char* kPluginHelp = "use this plug-in instead of the installed one";

// Adds an option, or an argument, that sets `path`; this must outlive the parsing. An empty name,
// as from a script whose variable is not set, is refused; it does not count as absent.
CLI::Option* AddFileOption(CLI::App& command, const std::string& name, std::string& path,
                           const std::string& help);

// Fails: Failure(kUsageError) if both files of cases are standard input.
void RefuseSharedInput(const std::string& input, const std::string& other,
                       const char* other_option = "--expected");

}  // namespace svmscore::app

#endif  // APP_OPTIONS_FILE_OPTION_H_
