#include "tools/findings/intake_text.h"

#include <fmt/format.h>

#include "host/text/printable.h"

namespace svmscore::tools {

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

}  // namespace svmscore::tools
