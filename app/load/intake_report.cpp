#include "app/load/intake_report.h"

#include <fmt/format.h>

#include "app/base/messages.h"

namespace svmscore::app {

void TellIntake(const std::string& path, const LoadedModel& loaded) {
  bool wrong = false;
  for (const Finding& finding : FirstOfEachKind(loaded.findings)) {
    if (!finding.kind->IsRefusedWhenStrict()) continue;
    if (finding.IsError()) {
      wrong = true;
      Tell(fmt::format("{}: error: {}; {}", path, SentenceOf(finding), finding.kind->consequence));
    } else {
      Tell(fmt::format("{}: {}", path, SentenceOf(finding)));
    }
  }
  if (!wrong) return;
  Tell(path +
       ": scores may be wrong: svmscore doctor says what to do, and --strict-document "
       "refuses such a model");
}

}  // namespace svmscore::app
