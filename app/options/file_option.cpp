#include "app/options/file_option.h"

#include "app/base/failure.h"

namespace svmscore::app {

CLI::Option* AddFileOption(CLI::App& command, const std::string& name, std::string& path,
                           const std::string& help) {
  const auto check = [](const std::string& text) {
    return std::string(text.empty() ? "the name of a file is empty" : "");
  };
  return command.add_option(name, path, help)->check(check);
}

void RefuseSharedInput(const std::string& input, const std::string& expected) {
  if (input == "-" && expected == "-") {
    throw Failure(kUsageError, "only one of --input and --expected can be standard input");
  }
}

}  // namespace svmscore::app
