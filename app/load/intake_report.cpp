#include "app/load/intake_report.h"

#include <fmt/format.h>

#include "app/base/messages.h"
#include "host/text/printable.h"
#include "host/xml/elements.h"

namespace svmscore::app {

void TellIntake(const std::string& path, const LoadedModel& loaded) {
  for (const Finding& finding : FirstOfEachKind(loaded.findings)) {
    if (!finding.kind->IsRefusedWhenStrict()) continue;
    Tell(fmt::format("{}: {}{}", path, finding.IsError() ? "error: " : "", SentenceOf(finding)));
  }
  if (loaded.output == nullptr) return;
  for (const output::Note& note : loaded.output->Notes()) {
    const long line = loaded.document.LineOf(note.element);
    const std::string place = line > 0 ? fmt::format("line {}, ", line) : "";
    Tell(fmt::format("{}: {}{}: {}", path, place, Shortened(NameOf(note.element), kLongestInsert),
                     note.text));
  }
}

}  // namespace svmscore::app
