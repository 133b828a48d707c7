#include "app/intake_report.h"

#include <cstdio>

#include <fmt/format.h>

namespace svmscore::app {

std::string SentenceOf(const IntakeStep& step) {
  const std::string place = step.line > 0 ? fmt::format("line {}, ", step.line) : "";
  const std::string more = step.count > 1 ? fmt::format(" ({} places)", step.count) : "";
  return fmt::format("{}{}: {}{}", place, step.element, step.consequence, more);
}

void TellIntake(const std::string& path, const LoadedModel& loaded) {
  for (const IntakeStep& step : loaded.intake) {
    fmt::print(stderr, "svmscore: {}: {}\n", path, SentenceOf(step));
  }
}

}  // namespace svmscore::app
