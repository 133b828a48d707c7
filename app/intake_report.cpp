#include "app/intake_report.h"

#include <fmt/format.h>

#include "app/messages.h"
#include "host/pmml/elements.h"
#include "host/printable.h"

namespace svmscore::app {

std::string ConsequenceOf(const IntakeStep& step) {
  const bool details = !step.detail.empty();
  std::string text = step.consequence;
  if (details) text += ": " + step.detail;
  if (step.count > 1) {
    text += fmt::format(" ({}{} places)", details ? "the first of " : "", step.count);
  }
  return text;
}

std::string SentenceOf(const IntakeStep& step) {
  const std::string place = step.line > 0 ? fmt::format("line {}, ", step.line) : "";
  return fmt::format("{}{}: {}", place, Shortened(step.element, kLongestInsert),
                     ConsequenceOf(step));
}

void TellIntake(const std::string& path, const LoadedModel& loaded) {
  for (const IntakeStep& step : loaded.intake) {
    Tell(fmt::format("{}: {}", path, SentenceOf(step)));
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
