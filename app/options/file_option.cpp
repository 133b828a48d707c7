#include "app/options/file_option.h"

#include <fmt/format.h>

#include "app/base/failure.h"

namespace svmscore::app {

CLI::Option* AddFileOption(CLI::App& command, const std::string& name, std::string& path,
                           const std::string& help) {
  const auto check = [](const std::string& text) {
    return std::string(text.empty() ? "the name of a file is empty" : "");
  };
  return command.add_option(name, path, help)->check(check);
}

void RefuseSharedInput(const std::string& input, const std::string& other,
                       const char* other_option) {
  if (input == "-" && other == "-") {
    throw Failure(kUsageError,
                  fmt::format("only one of --input and {} can be standard input", other_option));
  }
}

}  // namespace svmscore::app
