#include "app/load/intake_report.h"

#include <fmt/format.h>

#include "app/base/messages.h"

namespace svmscore::app {

void TellIntake(const std::string& path, const LoadedModel& loaded) {
  for (const Finding& finding : FirstOfEachKind(loaded.findings)) {
    if (!finding.kind->IsRefusedWhenStrict()) continue;
    Tell(fmt::format("{}: {}{}", path, finding.IsError() ? "error: " : "", SentenceOf(finding)));
  }
}

}  // namespace svmscore::app
