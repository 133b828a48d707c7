#include "app/options/tolerance_option.h"

#include <cmath>
#include <optional>
#include <string>

#include "host/text/number_text.h"

namespace svmscore::app {

void AddToleranceOption(CLI::App& app, double& tolerance) {
  // The option library's own numbers are read by the process's locale.
  const auto set = [&tolerance](const std::string& text) {
    const std::optional<double> number = ParseNumber(text);
    if (!number || !std::isfinite(*number) || *number < 0.0) {
      throw CLI::ValidationError("--tolerance", text + " is not a finite number of at least 0");
    }
    tolerance = *number;
  };
  app.add_option_function<std::string>(
         "--tolerance", set,
         "with --expected: how far a number may be from the expected one, as a share of it")
      ->type_name("FLOAT:NONNEGATIVE")
      ->default_str(FormatNumber(tolerance));
}

}  // namespace svmscore::app
